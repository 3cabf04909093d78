#pragma once

#include <QLoggingCategory>

namespace LumoraSDK {

/// The stand-ins' own diagnostics ("lumora.platform"): what the platform underneath would report
/// itself, not lines of the SDK's logger, so a host can silence them by category.
Q_DECLARE_LOGGING_CATEGORY(lcPlatform)

}  // namespace LumoraSDK
