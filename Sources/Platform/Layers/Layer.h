#pragma once

#include <QColor>
#include <QPainterPath>
#include <QQuickPaintedItem>

#include "lumorasdk_export.h"

namespace LumoraSDK {

/// Which corners of a rectangle are rounded; the values combine as flags.
enum RectCorner : int {
    TopLeft = 1,
    TopRight = 2,
    BottomLeft = 4,
    BottomRight = 8,
    AllCorners = 15,
};

/// The rounded-rectangle outline of `rect` with the given corners rounded by `radius`
/// (clamped to half the shorter side, so a radius of the width makes a square a circle).
LUMORASDK_EXPORT QPainterPath roundedRectPath(const QRectF& rect, int corners, qreal radius);

/// A drawn layer of a view: a child item that paints one shape and stacks with the view's other
/// children. Views keep their decorations (frames, rings, progress fills) as layers so that they
/// can be cleared and rebuilt as a group.
class LUMORASDK_EXPORT Layer : public QQuickPaintedItem {
    Q_OBJECT

public:
    explicit Layer(QQuickItem* parent = nullptr);

    /// Fills the whole layer before anything else is drawn.
    QColor backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QColor& color);

    /// Places the layer into `view`'s children at `index` of the stacking order (0 = bottom-most,
    /// past the end = top-most). The view owns the layer from then on.
    void insertInto(QQuickItem* view, int index);

protected:
    void paintBackground(QPainter* painter);

private:
    QColor m_backgroundColor = Qt::transparent;
};

}  // namespace LumoraSDK
