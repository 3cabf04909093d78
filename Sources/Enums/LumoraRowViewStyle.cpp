#include "LumoraRowViewStyle.h"

namespace LumoraSDK {

QString rawValue(LumoraRowViewStyle style) {
    switch (style) {
        case LumoraRowViewStyle::Light:
            return QStringLiteral("light");
        case LumoraRowViewStyle::Dark:
            return QStringLiteral("dark");
        case LumoraRowViewStyle::Auto:
            break;
    }
    return QStringLiteral("auto");
}

std::optional<LumoraRowViewStyle> lumoraRowViewStyleFromRawValue(const QString& raw) {
    if (raw == QLatin1String("auto")) {
        return LumoraRowViewStyle::Auto;
    }
    if (raw == QLatin1String("light")) {
        return LumoraRowViewStyle::Light;
    }
    if (raw == QLatin1String("dark")) {
        return LumoraRowViewStyle::Dark;
    }
    return std::nullopt;
}

}  // namespace LumoraSDK
