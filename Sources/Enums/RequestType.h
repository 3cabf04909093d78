#pragma once

#include <QString>

#include "lumorasdk_export.h"

namespace LumoraSDK {

/// The first path segments of a content API route.
enum class RequestType { channel, branding, auth, user, app, viewingHistory, activity };

/// The last path component of a content API route.
enum class RequestAction {
    default_,  // "default"
    refresh,
    details,
    platformApps,
    channelsForUser,
    recordViewingHistory,
    recordActivity,
    updateExternalId
};

/// "api/app/channel", "api/auth", ...
LUMORASDK_EXPORT QString path(RequestType type);
/// "channelsForUser", "recordActivity", ...
LUMORASDK_EXPORT QString path(RequestAction action);

}  // namespace LumoraSDK
