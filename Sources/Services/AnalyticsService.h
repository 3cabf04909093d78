#pragma once

#include <QString>
#include <optional>

#include "Enums/ActivityType.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// Reports what the viewer does, one fire-and-forget request per event. A failed report is
/// logged and dropped: nothing is retried or queued.
class LUMORASDK_EXPORT AnalyticsService {
public:
    static AnalyticsService& sharedInstance();

    /// Returns at once; absent ids are sent as empty strings.
    void trackActivity(ActivityType type, const std::optional<QString>& channelId,
                       const std::optional<QString>& pageId);

    static QString description() { return QStringLiteral("LumoraSDK.AnalyticsService"); }
};

}  // namespace LumoraSDK
