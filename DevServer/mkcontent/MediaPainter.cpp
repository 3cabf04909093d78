#include "MediaPainter.h"

#include <QFontDatabase>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>
#include <QtMath>

namespace LumoraSDK::DevServer {

namespace {

QFont font(const QString& family, int pixelSize, QFont::Weight weight) {
    QFont result(family);
    result.setPixelSize(pixelSize);
    result.setWeight(weight);
    return result;
}

}  // namespace

QString MediaPainter::fontFamily() {
    // The SDK's own typeface when it is installed, so the demo looks like the product.
    const QStringList families = QFontDatabase::families();
    for (const char* preferred : {"Inter", "DejaVu Sans"}) {
        if (families.contains(QLatin1String(preferred))) {
            return QLatin1String(preferred);
        }
    }
    return QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
}

QImage MediaPainter::avatar(const QString& initials, const QColor& color) {
    QImage image(kAvatarSize, kAvatarSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF disc(0, 0, kAvatarSize, kAvatarSize);
    QRadialGradient shade(disc.center() - QPointF(kAvatarSize / 5.0, kAvatarSize / 5.0),
                          kAvatarSize * 0.8);
    shade.setColorAt(0, color.lighter(135));
    shade.setColorAt(1, color.darker(125));
    painter.setPen(Qt::NoPen);
    painter.setBrush(shade);
    painter.drawEllipse(disc);
    painter.setPen(Qt::white);
    const int size = initials.size() > 2 ? kAvatarSize / 4 : kAvatarSize * 2 / 5;
    painter.setFont(font(fontFamily(), size, QFont::Bold));
    painter.drawText(disc, Qt::AlignCenter, initials);
    return image;
}

QImage MediaPainter::page(int channelNumber, int pageNumber, int pageCount, const QString& title,
                          const QColor& from, const QColor& to) {
    QImage image(kPageWidth, kPageHeight, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);

    // Each page turns the gradient a little further, so neighbouring pages look different.
    const double angle = qDegreesToRadians(35.0 * pageNumber);
    const QPointF centre(kPageWidth / 2.0, kPageHeight / 2.0);
    const QPointF reach(std::cos(angle) * kPageHeight / 2.0, std::sin(angle) * kPageHeight / 2.0);
    QLinearGradient gradient(centre - reach, centre + reach);
    gradient.setColorAt(0, pageNumber % 2 ? from : to);
    gradient.setColorAt(1, pageNumber % 2 ? to.darker(140) : from.darker(140));
    painter.fillRect(image.rect(), gradient);

    painter.setPen(Qt::NoPen);
    for (int i = 0; i < 5; ++i) {
        QColor bubble = Qt::white;
        bubble.setAlphaF(0.06 + 0.03 * i);
        painter.setBrush(bubble);
        const double radius = 60.0 + 45.0 * ((pageNumber * 7 + i * 3) % 6);
        const QPointF at((pageNumber * 131 + i * 211) % kPageWidth,
                         (pageNumber * 277 + i * 389) % kPageHeight);
        painter.drawEllipse(at, radius, radius);
    }

    const QString family = fontFamily();
    const QRect textArea(60, 380, kPageWidth - 120, 520);
    painter.setPen(QColor(0, 0, 0, 90));
    painter.setFont(font(family, 92, QFont::Black));
    const QString headline =
        QStringLiteral("Channel %1 \u2014 page %2").arg(channelNumber).arg(pageNumber);
    painter.drawText(textArea.translated(4, 5), Qt::AlignCenter | Qt::TextWordWrap, headline);
    painter.setPen(Qt::white);
    painter.drawText(textArea, Qt::AlignCenter | Qt::TextWordWrap, headline);

    painter.setFont(font(family, 38, QFont::DemiBold));
    painter.drawText(QRect(60, 920, kPageWidth - 120, 200), Qt::AlignHCenter | Qt::TextWordWrap,
                     title);
    painter.setFont(font(family, 30, QFont::Medium));
    painter.drawText(QRect(0, kPageHeight - 140, kPageWidth, 60), Qt::AlignCenter,
                     QStringLiteral("%1 / %2").arg(pageNumber).arg(pageCount));
    return image;
}

QImage MediaPainter::videoCaption(const QString& caption, const QString& title, int width,
                                  int height) {
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRect band(0, height * 2 / 3, width, height / 5);
    painter.fillRect(band, QColor(0, 0, 0, 150));
    const QString family = fontFamily();
    painter.setPen(Qt::white);
    painter.setFont(font(family, width / 12, QFont::Bold));
    painter.drawText(band.adjusted(12, 8, -12, -band.height() / 2), Qt::AlignCenter, caption);
    painter.setFont(font(family, width / 24, QFont::Medium));
    painter.drawText(band.adjusted(12, band.height() / 2, -12, -8),
                     Qt::AlignCenter | Qt::TextWordWrap, title);
    return image;
}

}  // namespace LumoraSDK::DevServer
