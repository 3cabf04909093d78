#pragma once

#include <QString>
#include <optional>

#include <LumoraSDK/lumorasdk_export.h>

namespace LumoraSDK {

/// What a page shows; the raw value is the API's "type" text.
enum class PageType { Image, Video };

/// "image" or "video".
LUMORASDK_EXPORT QString rawValue(PageType type);

/// Accepts exactly "image" and "video"; any other text, including other casings, is no type.
LUMORASDK_EXPORT std::optional<PageType> pageTypeFromRawValue(const QString& raw);

}  // namespace LumoraSDK
