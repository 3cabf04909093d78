#include "RequestType.h"

namespace LumoraSDK {

QString path(RequestType type) {
    switch (type) {
        case RequestType::channel:
            return QStringLiteral("api/app/channel");
        case RequestType::branding:
            return QStringLiteral("api/app/branding");
        case RequestType::auth:
            return QStringLiteral("api/auth");
        case RequestType::user:
            return QStringLiteral("api/app/user");
        case RequestType::app:
            return QStringLiteral("api/app/app");
        case RequestType::viewingHistory:
            return QStringLiteral("api/app/viewingHistory");
        case RequestType::activity:
            break;
    }
    return QStringLiteral("api/app/activity");
}

QString path(RequestAction action) {
    switch (action) {
        case RequestAction::default_:
            return QStringLiteral("default");
        case RequestAction::refresh:
            return QStringLiteral("refresh");
        case RequestAction::details:
            return QStringLiteral("details");
        case RequestAction::platformApps:
            return QStringLiteral("platformApps");
        case RequestAction::channelsForUser:
            return QStringLiteral("channelsForUser");
        case RequestAction::recordViewingHistory:
            return QStringLiteral("recordViewingHistory");
        case RequestAction::recordActivity:
            return QStringLiteral("recordActivity");
        case RequestAction::updateExternalId:
            break;
    }
    return QStringLiteral("updateExternalId");
}

}  // namespace LumoraSDK
