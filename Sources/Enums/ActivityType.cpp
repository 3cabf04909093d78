#include "ActivityType.h"

#include <array>

namespace LumoraSDK {

namespace {
constexpr std::array<const char*, 9> kWireValues = {
    "openedChannel",   "dismissedChannel", "skipPage",          "skipChannel", "completePage",
    "completeChannel", "swipeUpOnPage",    "shareButtonTapped", "previousPage"};
}

QString rawValue(ActivityType type) {
    return QLatin1String(kWireValues[static_cast<std::size_t>(type)]);
}

std::optional<ActivityType> activityTypeFromRawValue(const QString& raw) {
    for (std::size_t i = 0; i < kWireValues.size(); ++i) {
        if (raw == QLatin1String(kWireValues[i])) {
            return static_cast<ActivityType>(i);
        }
    }
    return std::nullopt;
}

}  // namespace LumoraSDK
