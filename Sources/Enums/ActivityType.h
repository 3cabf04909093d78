#pragma once

#include <QString>
#include <optional>

#include <LumoraSDK/lumorasdk_export.h>

namespace LumoraSDK {

/// What the viewer did, as reported to the content API. Case names and wire values differ in
/// tense and wording on purpose (SkippedPage sends "skipPage").
enum class ActivityType {
    OpenedChannel,
    DismissedChannel,
    SkippedPage,
    SkippedChannel,
    CompletedPage,
    CompletedChannel,
    SwipedUp,
    ShareButtonTapped,
    PreviousPage
};

/// The wire value.
LUMORASDK_EXPORT QString rawValue(ActivityType type);
/// Accepts exactly the nine wire values.
LUMORASDK_EXPORT std::optional<ActivityType> activityTypeFromRawValue(const QString& raw);

}  // namespace LumoraSDK
