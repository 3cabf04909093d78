#include "ViewExtensions.h"

#include <QFont>
#include <QFontMetricsF>
#include <QMatrix4x4>
#include <QQmlListReference>
#include <QQuickItem>
#include <QtMath>
#include <cmath>

#include "Views/GradientLayer.h"
#include "Views/ImageView.h"
#include "Views/ShapeLayer.h"

namespace LumoraSDK {

namespace {
// Distance of the eye from the screen, in widths of the turning face: far enough that the turn
// reads as a cube rather than a fish-eye.
constexpr qreal kPerspectiveDistance = 2.0;

class PerspectiveTransform : public QQuickTransform {
public:
    PerspectiveTransform(QQuickItem* item) : QQuickTransform(item), m_item(item) {}

    void set(qreal multiplier, qreal pivotX) {
        m_multiplier = multiplier;
        m_pivotX = pivotX;
        update();
    }
    qreal multiplier() const { return m_multiplier; }

    void applyTo(QMatrix4x4* matrix) const override {
        if (m_multiplier == 0) {
            return;
        }
        const qreal angle = qDegreesToRadians(m_multiplier * 90.0);
        const float c = float(std::cos(angle));
        const float s = float(std::sin(angle));
        const float distance = float(std::max<qreal>(1, m_item->width() * kPerspectiveDistance));
        const float pivotX = float(m_pivotX * m_item->width());
        const float pivotY = float(m_item->height() / 2);
        // Rotation about the vertical axis, flattened onto the screen with the depth folded into w
        // so that the far edge shrinks; z is dropped to keep the face inside the clip volume.
        const QMatrix4x4 turn(c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, s / distance, 0, 0, 1);
        QMatrix4x4 result;
        result.translate(pivotX, pivotY);
        result *= turn;
        result.translate(-pivotX, -pivotY);
        *matrix *= result;
    }

private:
    QQuickItem* m_item;
    qreal m_multiplier = 0;
    qreal m_pivotX = 0;
};

PerspectiveTransform* findPerspective(QQuickItem* view) {
    return view->findChild<PerspectiveTransform*>(QString(), Qt::FindDirectChildrenOnly);
}

void setMask(QQuickItem* view, const QPainterPath& path) {
    if (auto* image = qobject_cast<ImageView*>(view)) {
        image->setMaskPath(path);
    }
}

bool keeps(QQuickItem* child, const QStringList& except) {
    return except.contains(child->property("restorationIdentifier").toString());
}
}  // namespace

ShapeLayer* createBorder(QQuickItem* view, qreal width, const QColor& borderColor,
                         const QColor& fillColor, qreal radius, int corners,
                         const std::optional<QList<qreal>>& lineDashPattern) {
    const QRectF bounds(0, 0, view->width(), view->height());
    const QPainterPath path = roundedRectPath(bounds, corners, radius);
    setMask(view, path);
    auto* layer = new ShapeLayer();
    layer->setSize(bounds.size());
    layer->setPath(path);
    layer->setLineDashPattern(lineDashPattern);
    layer->setLineWidth(width);
    layer->setStrokeColor(borderColor);
    layer->setFillColor(fillColor);
    return layer;
}

GradientLayer* createGradientBorder(QQuickItem* view, qreal width, const QList<QColor>& fillColors,
                                    qreal radius, int corners,
                                    const std::optional<QList<qreal>>& lineDashPattern) {
    const QRectF bounds(0, 0, view->width(), view->height());
    auto* layer = new GradientLayer();
    layer->setPosition({0, 0});
    layer->setSize(bounds.size());
    layer->setColors(fillColors);
    layer->setMask(roundedRectPath(bounds, corners, radius), width, lineDashPattern);
    return layer;
}

void clearShapeLayers(QQuickItem* view) {
    for (QQuickItem* child : view->childItems()) {
        if (qobject_cast<ShapeLayer*>(child)) {
            child->setParentItem(nullptr);
            child->deleteLater();
        }
    }
}

void removeAllSublayers(QQuickItem* view) {
    for (QQuickItem* child : view->childItems()) {
        if (qobject_cast<Layer*>(child)) {
            child->setParentItem(nullptr);
            child->deleteLater();
        }
    }
}

void removeAllSubViews(QQuickItem* view, const QStringList& except) {
    for (QQuickItem* child : view->childItems()) {
        if (!qobject_cast<Layer*>(child) && !keeps(child, except)) {
            child->setParentItem(nullptr);
        }
    }
}

void toggleAllSubviews(QQuickItem* view, bool hidden, const QStringList& except) {
    for (QQuickItem* child : view->childItems()) {
        if (!qobject_cast<Layer*>(child) && !keeps(child, except)) {
            child->setVisible(!hidden);
        }
    }
}

void applyPerspectiveTransform(QQuickItem* view, qreal multiplier, qreal pivotX) {
    PerspectiveTransform* transform = findPerspective(view);
    if (!transform) {
        transform = new PerspectiveTransform(view);
        QQmlListReference(view, "transform").append(transform);
    }
    transform->set(multiplier, pivotX);
}

qreal perspectiveMultiplier(QQuickItem* view) {
    const PerspectiveTransform* transform = findPerspective(view);
    return transform ? transform->multiplier() : 0;
}

qreal fontSize(const QQuickItem* label) {
    const QFont font = label->property("font").value<QFont>();
    return font.pointSizeF() > 0 ? font.pointSizeF() : font.pixelSize();
}

int calculatedLineCount(const QQuickItem* label) {
    const QString text = label->property("text").toString();
    const QFontMetricsF metrics(label->property("font").value<QFont>());
    const qreal width = std::max<qreal>(1, label->width());
    const QRectF bounds = metrics.boundingRect(QRectF(0, 0, width, 1e6), Qt::TextWordWrap, text);
    return int(std::ceil(bounds.height() / metrics.lineSpacing()));
}

}  // namespace LumoraSDK
