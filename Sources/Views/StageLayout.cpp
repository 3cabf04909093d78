#include "Views/StageLayout.h"

#include <QInputDevice>
#include <algorithm>
#include <cmath>

namespace LumoraSDK {

StageLayout::StageLayout(QSizeF window, qreal devicePixelRatio, bool hasPointer)
    : m_devicePixelRatio(devicePixelRatio > 0 ? devicePixelRatio : 1) {
    const qreal width = window.width();
    const qreal height = window.height();
    card = QRectF(QPointF(0, 0), window);
    // Room for an arrow on each side, with a gap on both of its sides.
    const qreal sideRoom = 2 * kButtonGap + kButtonSize;
    const qreal cardHeight =
        std::min(height - 2 * kCardMargin, (width - 2 * sideRoom) / kCardAspect);
    isFullWindow = height <= 0 || width / height <= kFullWindowMaxAspect || cardHeight <= 0;
    if (!isFullWindow) {
        const QSizeF size(cardHeight * kCardAspect, cardHeight);
        card = snapped(
            QRectF(QPointF((width - size.width()) / 2, (height - size.height()) / 2), size));

        // Each neighbour stands between the window's edge and its arrow, centred on the card.
        const qreal room = card.left() - sideRoom - kButtonGap;
        const qreal neighbourWidth = std::min(card.width() * kNeighbourScale, room);
        if (neighbourWidth >= card.width() * kNeighbourMinimumScale) {
            const QSizeF neighbour(neighbourWidth, neighbourWidth / kCardAspect);
            const qreal top = card.center().y() - neighbour.height() / 2;
            previousNeighbour = snapped(
                QRectF(QPointF(card.left() - sideRoom - neighbour.width(), top), neighbour));
            nextNeighbour = snapped(QRectF(QPointF(card.right() + sideRoom, top), neighbour));
        }
        if (hasPointer) {
            const QSizeF button(kButtonSize, kButtonSize);
            const qreal middle = card.center().y() - kButtonSize / 2;
            previousArrow =
                snapped(QRectF(QPointF(card.left() - kButtonGap - kButtonSize, middle), button));
            nextArrow = snapped(QRectF(QPointF(card.right() + kButtonGap, middle), button));
            closeButton =
                snapped(QRectF(QPointF(width - kButtonGap - kButtonSize, kButtonGap), button));
        }
    }
    if (hasPointer) {
        const QSizeF button(kCardButtonSize, kCardButtonSize);
        const qreal left = card.width() - kCardButtonInset - kCardButtonSize;
        playPauseButton = snapped(QRectF(QPointF(left, kCardButtonsTop), button));
        soundButton = snapped(
            QRectF(QPointF(left, kCardButtonsTop + kCardButtonSize + kCardButtonSpacing), button));
    }
}

QRectF StageLayout::snapped(const QRectF& rect) const {
    const auto snap = [this](qreal value) {
        return std::round(value * m_devicePixelRatio) / m_devicePixelRatio;
    };
    const QPointF topLeft(snap(rect.left()), snap(rect.top()));
    return QRectF(topLeft, QPointF(snap(rect.right()), snap(rect.bottom())));
}

bool StageLayout::hasPointerInput() {
    bool touchScreen = false;
    for (const QInputDevice* device : QInputDevice::devices()) {
        switch (device->type()) {
            case QInputDevice::DeviceType::TouchScreen:
                touchScreen = true;
                break;
            case QInputDevice::DeviceType::Keyboard:
            case QInputDevice::DeviceType::Unknown:
                break;
            default:
                return true;  // a mouse, touchpad or pen
        }
    }
    return !touchScreen;
}

}  // namespace LumoraSDK
