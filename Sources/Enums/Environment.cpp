#include "Environment.h"

namespace LumoraSDK {

QString rawValue(Environment environment) {
    switch (environment) {
        case Environment::Dev:
            return QStringLiteral("Dev");
        case Environment::Staging:
            return QStringLiteral("Staging");
        case Environment::Production:
            break;
    }
    return QStringLiteral("Production");
}

std::optional<Environment> environmentFromRawValue(const QString& raw) {
    for (auto candidate : {Environment::Dev, Environment::Staging, Environment::Production}) {
        if (raw == rawValue(candidate)) {
            return candidate;
        }
    }
    return std::nullopt;
}

QStringList allEnvironmentRawValues() {
    return {rawValue(Environment::Dev), rawValue(Environment::Staging),
            rawValue(Environment::Production)};
}

}  // namespace LumoraSDK
