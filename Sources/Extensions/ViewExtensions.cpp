#include "ViewExtensions.h"

#include <QFont>
#include <QMatrix4x4>
#include <QQuickItem>
#include <QTextLayout>
#include <QtMath>
#include <cmath>

#include "Platform/ImageView.h"
#include "Platform/Layers/GradientLayer.h"
#include "Platform/Layers/ShapeLayer.h"

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
    // The view's mask covers its layers too: the outer half of the line is cut away.
    layer->setClipPath(path);
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
        // Straight onto the item: a list reference to its "transform" property needs the QML
        // types registered, and silently appends nothing in a scene built without QML.
        transform->appendToItem(view);
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

void setFontSize(QQuickItem* label, qreal size) {
    QFont font = label->property("font").value<QFont>();
    if (font.pointSizeF() > 0) {
        font.setPointSizeF(size);
    } else {
        font.setPixelSize(qMax(1, qRound(size)));
    }
    label->setProperty("font", font);
}

int calculatedLineCount(const QQuickItem* label) {
    // Laid out as the Text item lays itself out: its font, its wrap mode, the width inside its
    // padding, design metrics unless it renders natively, "\n" as a line separator. Measuring a
    // bounding box and dividing by the line spacing instead overcounts whenever the box is not a
    // whole number of line spacings tall.
    QString text = label->property("text").toString();
    text.replace(QLatin1Char('\n'), QChar::LineSeparator);
    const QVariant wrapMode = label->property("wrapMode");
    QTextOption option;
    option.setWrapMode(wrapMode.isValid() ? QTextOption::WrapMode(wrapMode.toInt())
                                          : QTextOption::WordWrap);
    constexpr int kNativeRendering = 1;  // Text.NativeRendering
    option.setUseDesignMetrics(label->property("renderType").toInt() != kNativeRendering);
    const qreal width = label->width() - label->property("leftPadding").toReal() -
                        label->property("rightPadding").toReal();

    QTextLayout layout(text, label->property("font").value<QFont>());
    layout.setTextOption(option);
    layout.setCacheEnabled(true);
    int lines = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(std::max<qreal>(1, width));
        ++lines;
    }
    layout.endLayout();
    return lines;
}

}  // namespace LumoraSDK
