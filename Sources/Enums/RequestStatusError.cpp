#include "RequestStatusError.h"

#include <QCoreApplication>

namespace LumoraSDK {

RequestStatusError requestStatusError(std::optional<int> statusCode) {
    switch (statusCode.value_or(0)) {
        case 400:
            return RequestStatusError::BadRequest;
        case 401:
            return RequestStatusError::Unauthorized;
        case 403:
            return RequestStatusError::Forbidden;
        case 404:
            return RequestStatusError::NotFound;
        case 423:
            return RequestStatusError::Locked;
        case 500:
            return RequestStatusError::InternalServerError;
        default:
            return RequestStatusError::Unknown;
    }
}

QString errorDescription(RequestStatusError error) {
    const char* key = "Unknown Error";
    switch (error) {
        case RequestStatusError::BadRequest:
            key = QT_TRANSLATE_NOOP("HTTP Response Error", "Bad Request");
            break;
        case RequestStatusError::Unauthorized:
            key = QT_TRANSLATE_NOOP("HTTP Response Error", "Unauthorized");
            break;
        case RequestStatusError::Forbidden:
            key = QT_TRANSLATE_NOOP("HTTP Response Error", "Forbidden");
            break;
        case RequestStatusError::NotFound:
            key = QT_TRANSLATE_NOOP("HTTP Response Error", "Not Found");
            break;
        case RequestStatusError::Locked:
            key = QT_TRANSLATE_NOOP("HTTP Response Error", "Locked");
            break;
        case RequestStatusError::InternalServerError:
            key = QT_TRANSLATE_NOOP("HTTP Response Error", "Internal Server Error");
            break;
        case RequestStatusError::Unknown:
            key = QT_TRANSLATE_NOOP("HTTP Response Error", "Unknown Error");
            break;
    }
    return QCoreApplication::translate("HTTP Response Error", key);
}

std::optional<QString> errorDescription(const CustomRequestError& error) {
    return error.customMessage;
}

std::optional<QString> errorDescription(const RequestError& error) {
    return std::visit([](const auto& e) -> std::optional<QString> { return errorDescription(e); },
                      error);
}

QString describe(const RequestError& error) {
    if (const auto* status = std::get_if<RequestStatusError>(&error)) {
        static const char* const names[] = {"BadRequest", "Unauthorized", "Forbidden",
                                            "NotFound",   "Locked",       "InternalServerError",
                                            "Unknown"};
        return QStringLiteral("RequestStatusError.") +
               QLatin1String(names[static_cast<int>(*status)]);
    }
    const auto& custom = std::get<CustomRequestError>(error);
    return QStringLiteral("CustomRequestError(customMessage: %1)")
        .arg(custom.customMessage ? QStringLiteral("Optional(\"%1\")").arg(*custom.customMessage)
                                  : QStringLiteral("nil"));
}

}  // namespace LumoraSDK
