#pragma once

#include <QString>
#include <QStringList>
#include <optional>

#include <LumoraSDK/lumorasdk_export.h>

namespace LumoraSDK {

/// The back-end environment the SDK talks to; the raw value is the case name.
enum class Environment { Dev, Staging, Production };

/// "Dev", "Staging" or "Production".
LUMORASDK_EXPORT QString rawValue(Environment environment);

/// Accepts exactly the three raw values, case-sensitively; anything else is no environment.
LUMORASDK_EXPORT std::optional<Environment> environmentFromRawValue(const QString& raw);

/// The three raw values in declaration order.
LUMORASDK_EXPORT QStringList allEnvironmentRawValues();

}  // namespace LumoraSDK
