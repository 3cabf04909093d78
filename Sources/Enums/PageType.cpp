#include "PageType.h"

namespace LumoraSDK {

QString rawValue(PageType type) {
    switch (type) {
        case PageType::Image:
            return QStringLiteral("image");
        case PageType::Video:
            break;
    }
    return QStringLiteral("video");
}

std::optional<PageType> pageTypeFromRawValue(const QString& raw) {
    if (raw == QLatin1String("image")) {
        return PageType::Image;
    }
    if (raw == QLatin1String("video")) {
        return PageType::Video;
    }
    return std::nullopt;
}

}  // namespace LumoraSDK
