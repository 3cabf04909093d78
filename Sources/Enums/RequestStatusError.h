#pragma once

#include <QString>
#include <optional>
#include <variant>

#include <LumoraSDK/lumorasdk_export.h>

namespace LumoraSDK {

/// The HTTP failures the SDK tells apart.
enum class RequestStatusError {
    BadRequest,
    Unauthorized,
    Forbidden,
    NotFound,
    Locked,
    InternalServerError,
    Unknown
};

/// A response that arrived with an acceptable status but could not become the expected entity.
struct CustomRequestError {
    std::optional<QString> customMessage;  ///< What went wrong, when known.
};

/// The only error values that reach a request's error callback.
using RequestError = std::variant<RequestStatusError, CustomRequestError>;

/// The status table: 400, 401, 403, 404, 423 and 500 have their own case; everything else
/// (other 4xx and 5xx, unaccepted 2xx, 3xx, no status) is Unknown.
LUMORASDK_EXPORT RequestStatusError requestStatusError(std::optional<int> statusCode);

/// The error's text, translated through Qt's translation mechanism (context
/// "HTTP Response Error"), so a host that installs no translation gets the key itself.
LUMORASDK_EXPORT QString errorDescription(RequestStatusError error);
LUMORASDK_EXPORT std::optional<QString> errorDescription(const CustomRequestError& error);
LUMORASDK_EXPORT std::optional<QString> errorDescription(const RequestError& error);

/// The error as a log line prints it.
LUMORASDK_EXPORT QString describe(const RequestError& error);

}  // namespace LumoraSDK
