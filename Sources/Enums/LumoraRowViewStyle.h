#pragma once

#include <QString>
#include <optional>

#include <LumoraSDK/lumorasdk_export.h>

namespace LumoraSDK {

/// The colour scheme of the row's labels; `Auto` follows the platform where it reports one.
enum class LumoraRowViewStyle { Auto, Light, Dark };

/// "auto", "light" or "dark".
LUMORASDK_EXPORT QString rawValue(LumoraRowViewStyle style);

/// Accepts exactly the three raw values; the row lower-cases a host's text before asking.
LUMORASDK_EXPORT std::optional<LumoraRowViewStyle> lumoraRowViewStyleFromRawValue(
    const QString& raw);

}  // namespace LumoraSDK
