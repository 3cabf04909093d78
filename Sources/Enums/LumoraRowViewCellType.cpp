#include "LumoraRowViewCellType.h"

namespace LumoraSDK {

QString rawValue(LumoraRowViewCellType type) {
    switch (type) {
        case LumoraRowViewCellType::Square:
            return QStringLiteral("square");
        case LumoraRowViewCellType::Round:
            break;
    }
    return QStringLiteral("round");
}

std::optional<LumoraRowViewCellType> lumoraRowViewCellTypeFromRawValue(const QString& raw) {
    if (raw == QLatin1String("square")) {
        return LumoraRowViewCellType::Square;
    }
    if (raw == QLatin1String("round")) {
        return LumoraRowViewCellType::Round;
    }
    return std::nullopt;
}

}  // namespace LumoraSDK
