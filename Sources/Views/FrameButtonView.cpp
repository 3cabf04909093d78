#include "FrameButtonView.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include "Extensions/ViewExtensions.h"
#include "Platform/Layers/ShapeLayer.h"

namespace LumoraSDK {

const QColor FrameButtonView::kFocusColor(0x3b, 0x82, 0xf6);

FrameButtonView::FrameButtonView(QQuickItem* parent) : ImageView(parent) {
    setAcceptedMouseButtons(Qt::LeftButton);
    setAcceptTouchEvents(true);
}

void FrameButtonView::setBorderWidth(qreal width) {
    m_borderWidth = width;
    frameDidChange();
}

void FrameButtonView::setCornerRadius(qreal radius) {
    m_cornerRadius = radius;
    frameDidChange();
}

void FrameButtonView::setBorderColor(const QColor& color) {
    m_borderColor = color;
    frameDidChange();
}

void FrameButtonView::setLeftRounding(bool on) {
    m_leftRounding = on;
    frameDidChange();
}

void FrameButtonView::setRightRounding(bool on) {
    m_rightRounding = on;
    frameDidChange();
}

void FrameButtonView::setLineDash(const std::optional<QList<qreal>>& dash) {
    m_lineDash = dash;
    frameDidChange();
}

void FrameButtonView::setBackgroundColor(const QColor& color) {
    m_backgroundColor = color;
    update();
    emit frameChanged();
}

void FrameButtonView::frameDidChange() {
    if (isComponentComplete()) {
        applyCornersAndBorder();
    }
    emit frameChanged();
}

int FrameButtonView::corners() const {
    // Qualified: inside a QQuickItem the bare names are its TransformOrigin values.
    return (m_leftRounding ? LumoraSDK::TopLeft | LumoraSDK::BottomLeft : 0) |
           (m_rightRounding ? LumoraSDK::TopRight | LumoraSDK::BottomRight : 0);
}

void FrameButtonView::setHighlighted(bool highlighted) {
    setOpacity(highlighted ? 0.5 : 1.0);
    if (m_highlighted != highlighted) {
        m_highlighted = highlighted;
        emit highlightedChanged();
    }
}

void FrameButtonView::setBackgroundImage(const QImage& image) {
    m_backgroundImage = image;
    update();
}

void FrameButtonView::applyCornersAndBorder() {
    clearShapeLayers(this);
    ShapeLayer* border = createBorder(this, m_borderWidth, m_borderColor, Qt::transparent,
                                      m_cornerRadius, corners(), m_lineDash);
    border->insertInto(this, 0);
}

void FrameButtonView::paint(QPainter* painter) {
    const QRectF bounds(0, 0, width(), height());
    if (m_backgroundColor.alpha() > 0) {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        if (maskPath()) {
            painter->setClipPath(*maskPath());
        }
        painter->fillRect(bounds, m_backgroundColor);
        painter->restore();
    }
    drawImage(painter, m_backgroundImage, bounds);
    drawImage(painter, image(), bounds);
    if (hasActiveFocus()) {
        // Inside the outline, so that the frame's clipping keeps all of it.
        const qreal inset = kFocusLineWidth / 2;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(QPen(kFocusColor, kFocusLineWidth));
        painter->drawPath(roundedRectPath(bounds.adjusted(inset, inset, -inset, -inset), corners(),
                                          m_cornerRadius));
        painter->restore();
    }
}

void FrameButtonView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    ImageView::geometryChange(newGeometry, oldGeometry);
    if (isComponentComplete() && newGeometry.size() != oldGeometry.size()) {
        applyCornersAndBorder();
    }
}

void FrameButtonView::componentComplete() {
    ImageView::componentComplete();
    applyCornersAndBorder();
}

void FrameButtonView::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            if (!event->isAutoRepeat()) {
                emit clicked();
            }
            event->accept();
            return;
        default:
            ImageView::keyPressEvent(event);
    }
}

void FrameButtonView::focusInEvent(QFocusEvent* event) {
    ImageView::focusInEvent(event);
    update();
}

void FrameButtonView::focusOutEvent(QFocusEvent* event) {
    ImageView::focusOutEvent(event);
    update();
}

void FrameButtonView::mousePressEvent(QMouseEvent* event) {
    setHighlighted(true);
    event->accept();
}

void FrameButtonView::mouseReleaseEvent(QMouseEvent* event) {
    setHighlighted(false);
    if (contains(event->position())) {
        emit clicked();
    }
}

void FrameButtonView::mouseUngrabEvent() {
    setHighlighted(false);
}

// A list that takes a touch over (to scroll) ungrabs the touch point, not the mouse.
void FrameButtonView::touchUngrabEvent() {
    setHighlighted(false);
}

void FrameButtonView::touchEvent(QTouchEvent* event) {
    if (event->points().isEmpty()) {
        return;
    }
    const QEventPoint& point = event->points().first();
    switch (point.state()) {
        case QEventPoint::Pressed:
            setHighlighted(true);
            break;
        case QEventPoint::Released:
            setHighlighted(false);
            if (contains(point.position())) {
                emit clicked();
            }
            break;
        default:
            break;
    }
    event->accept();
}

}  // namespace LumoraSDK
