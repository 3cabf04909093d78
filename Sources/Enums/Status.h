#pragma once

#include <QString>
#include <optional>

#include <LumoraSDK/lumorasdk_export.h>

namespace LumoraSDK {

/// Whether the viewer has finished a channel or page; the raw value is the API's "status" text.
enum class Status { Read, Unread };

/// "read" or "unread".
LUMORASDK_EXPORT QString rawValue(Status status);

/// Accepts exactly "read" and "unread"; "READ" or "Read" is no status.
LUMORASDK_EXPORT std::optional<Status> statusFromRawValue(const QString& raw);

}  // namespace LumoraSDK
