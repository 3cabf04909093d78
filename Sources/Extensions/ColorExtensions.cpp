#include "ColorExtensions.h"

#include <QRgba64>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace LumoraSDK {

namespace {
int hexDigit(QChar c) {
    const char16_t u = c.unicode();
    if (u >= u'0' && u <= u'9') {
        return u - u'0';
    }
    if (u >= u'a' && u <= u'f') {
        return u - u'a' + 10;
    }
    if (u >= u'A' && u <= u'F') {
        return u - u'A' + 10;
    }
    return -1;
}

// Reads one unsigned hexadecimal integer the way a text scanner does: leading "#" skipped, an
// optional "0x"/"0X" prefix, digits up to the first non-digit, saturating on overflow.
std::uint64_t scanHexInteger(const QString& text) {
    qsizetype i = 0;
    while (i < text.size() && text.at(i) == u'#') {
        ++i;
    }
    if (i + 2 < text.size() && text.at(i) == u'0' &&
        (text.at(i + 1) == u'x' || text.at(i + 1) == u'X') && hexDigit(text.at(i + 2)) >= 0) {
        i += 2;
    }
    std::uint64_t value = 0;
    bool overflowed = false;
    for (; i < text.size(); ++i) {
        const int digit = hexDigit(text.at(i));
        if (digit < 0) {
            break;
        }
        if (value > (std::numeric_limits<std::uint64_t>::max() >> 4)) {
            overflowed = true;
        }
        value = (value << 4) | static_cast<std::uint64_t>(digit);
    }
    return overflowed ? std::numeric_limits<std::uint64_t>::max() : value;
}

// One component as fraction * 255, truncated toward zero. Components beyond [0, 1] exist
// only in extended-range colours.
int truncatedComponent(float fraction) {
    const double scaled = static_cast<double>(fraction) * 255.0;
    if (!std::isfinite(scaled) || std::abs(scaled) > std::numeric_limits<int>::max()) {
        qFatal("toHexString(const QColor&) - colour component %f cannot be converted",
               static_cast<double>(fraction));
    }
    return static_cast<int>(scaled);
}
}  // namespace

QColor colorFromHexString(const QString& hexString, double alpha) {
    const std::uint64_t value = scanHexInteger(hexString);
    QColor color(static_cast<int>((value >> 16) & 0xff), static_cast<int>((value >> 8) & 0xff),
                 static_cast<int>(value & 0xff));
    // QColor rejects an alpha outside [0, 1]; a platform colour clamps it instead.
    color.setAlphaF(std::isnan(alpha) ? 0.0f : static_cast<float>(std::clamp(alpha, 0.0, 1.0)));
    return color;
}

QString toHexString(const QColor& color) {
    int red = 0;
    int green = 0;
    int blue = 0;
    if (color.spec() == QColor::ExtendedRgb) {
        red = truncatedComponent(color.redF());
        green = truncatedComponent(color.greenF());
        blue = truncatedComponent(color.blueF());
    } else {
        // QColor keeps 16 bits per component: fraction = c / 65535, so the truncated
        // fraction * 255 is exactly c / 257 in integers, free of float rounding.
        const QRgba64 rgba = color.rgba64();
        red = rgba.red() / 257;
        green = rgba.green() / 257;
        blue = rgba.blue() / 257;
    }
    const unsigned packed = (static_cast<unsigned>(red) << 16) |
                            (static_cast<unsigned>(green) << 8) | static_cast<unsigned>(blue);
    return QStringLiteral("#%1").arg(packed, 6, 16, QLatin1Char('0'));
}

}  // namespace LumoraSDK
