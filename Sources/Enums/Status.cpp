#include "Status.h"

namespace LumoraSDK {

QString rawValue(Status status) {
    switch (status) {
        case Status::Read:
            return QStringLiteral("read");
        case Status::Unread:
            break;
    }
    return QStringLiteral("unread");
}

std::optional<Status> statusFromRawValue(const QString& raw) {
    if (raw == QLatin1String("read")) {
        return Status::Read;
    }
    if (raw == QLatin1String("unread")) {
        return Status::Unread;
    }
    return std::nullopt;
}

}  // namespace LumoraSDK
