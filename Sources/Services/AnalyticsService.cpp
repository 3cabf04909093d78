#include "AnalyticsService.h"

#include "Lumora.h"
#include "Services/Logger.h"

namespace LumoraSDK {

AnalyticsService& AnalyticsService::sharedInstance() {
    static AnalyticsService instance;
    return instance;
}

void AnalyticsService::trackActivity(ActivityType type, const std::optional<QString>& channelId,
                                     const std::optional<QString>& pageId) {
    const QString prefix = description() +
                           QStringLiteral(" - trackActivity - requestRecordActivity ") +
                           rawValue(type);
    Lumora::sharedInstance().requestRecordActivity(
        type, pageId.value_or(QString()), channelId.value_or(QString()),
        [prefix] { logger().log(prefix + QStringLiteral(" OK"), LogLevel::debug); },
        [prefix](const RequestError& error) {
            logger().log(prefix + QLatin1Char(' ') + describe(error), LogLevel::error);
        });
}

}  // namespace LumoraSDK
