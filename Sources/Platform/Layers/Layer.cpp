#include "Layer.h"

#include <QPainter>
#include <algorithm>

namespace LumoraSDK {

QPainterPath roundedRectPath(const QRectF& rect, int corners, qreal radius) {
    const qreal r = std::clamp(radius, 0.0, std::min(rect.width(), rect.height()) / 2);
    QPainterPath path;
    if (r <= 0 || corners == 0) {
        path.addRect(rect);
        return path;
    }
    const auto rounded = [corners](int corner) { return (corners & corner) != 0; };
    const qreal d = 2 * r;
    path.moveTo(rect.left() + (rounded(TopLeft) ? r : 0), rect.top());
    if (rounded(TopRight)) {
        path.lineTo(rect.right() - r, rect.top());
        path.arcTo(rect.right() - d, rect.top(), d, d, 90, -90);
    } else {
        path.lineTo(rect.topRight());
    }
    if (rounded(BottomRight)) {
        path.lineTo(rect.right(), rect.bottom() - r);
        path.arcTo(rect.right() - d, rect.bottom() - d, d, d, 0, -90);
    } else {
        path.lineTo(rect.bottomRight());
    }
    if (rounded(BottomLeft)) {
        path.lineTo(rect.left() + r, rect.bottom());
        path.arcTo(rect.left(), rect.bottom() - d, d, d, 270, -90);
    } else {
        path.lineTo(rect.bottomLeft());
    }
    if (rounded(TopLeft)) {
        path.lineTo(rect.left(), rect.top() + r);
        path.arcTo(rect.left(), rect.top(), d, d, 180, -90);
    }
    path.closeSubpath();
    return path;
}

Layer::Layer(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    setAcceptedMouseButtons(Qt::NoButton);
}

void Layer::setBackgroundColor(const QColor& color) {
    if (m_backgroundColor != color) {
        m_backgroundColor = color;
        update();
    }
}

void Layer::insertInto(QQuickItem* view, int index) {
    // The view owns its layers: a parent item alone does not delete its children, so a layer
    // would outlive the view it decorates.
    setParent(view);
    setParentItem(view);
    // Counted among the other children, so that a layer already in the view moves to `index`
    // rather than to a place shifted by its own old position.
    QList<QQuickItem*> others = view->childItems();
    others.removeOne(this);
    if (others.isEmpty()) {
        return;
    }
    if (index < others.size()) {
        stackBefore(others.at(std::max(index, 0)));
    } else {
        stackAfter(others.last());
    }
}

void Layer::paintBackground(QPainter* painter) {
    if (m_backgroundColor.alpha() > 0) {
        painter->fillRect(QRectF(0, 0, width(), height()), m_backgroundColor);
    }
}

}  // namespace LumoraSDK
