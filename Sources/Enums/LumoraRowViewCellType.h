#pragma once

#include <QString>
#include <optional>

#include <LumoraSDK/lumorasdk_export.h>

namespace LumoraSDK {

/// The shape of the row's cells; the raw value is the text a host writes into `cellType`.
enum class LumoraRowViewCellType { Square, Round };

/// "square" or "round".
LUMORASDK_EXPORT QString rawValue(LumoraRowViewCellType type);

/// Accepts exactly "square" and "round"; the row lower-cases a host's text before asking.
LUMORASDK_EXPORT std::optional<LumoraRowViewCellType> lumoraRowViewCellTypeFromRawValue(
    const QString& raw);

}  // namespace LumoraSDK
