#pragma once

#include <QColor>
#include <QList>
#include <QPointF>
#include <QStringList>
#include <optional>

#include "lumorasdk_export.h"

class QQuickItem;

namespace LumoraSDK {

class ShapeLayer;
class GradientLayer;

/// The rounded outline of `view`'s bounds as a frame layer (not yet inserted), and the view's
/// content clipped to that outline when the view draws its own content. The frame is clipped to
/// it too, so only the inner half of its line shows.
LUMORASDK_EXPORT ShapeLayer* createBorder(QQuickItem* view, qreal width, const QColor& borderColor,
                                          const QColor& fillColor, qreal radius, int corners,
                                          const std::optional<QList<qreal>>& lineDashPattern);

/// A gradient of `fillColors` (top to bottom) seen through the stroked rounded outline of the
/// view's bounds (not yet inserted).
LUMORASDK_EXPORT GradientLayer* createGradientBorder(
    QQuickItem* view, qreal width, const QList<QColor>& fillColors, qreal radius, int corners,
    const std::optional<QList<qreal>>& lineDashPattern);

/// Removes the frame layers a view drew before.
LUMORASDK_EXPORT void clearShapeLayers(QQuickItem* view);
/// Removes every drawn layer (frames, gradients, fills) of a view.
LUMORASDK_EXPORT void removeAllSublayers(QQuickItem* view);
/// Removes the child items whose "restorationIdentifier" property (absent: empty) is not listed.
LUMORASDK_EXPORT void removeAllSubViews(QQuickItem* view, const QStringList& except = {});
/// Hides or shows the child items whose "restorationIdentifier" is not listed.
LUMORASDK_EXPORT void toggleAllSubviews(QQuickItem* view, bool hidden,
                                        const QStringList& except = {});

/// Turns `view` about a vertical hinge at `pivotX` (0 = left edge, 1 = right edge) by
/// multiplier × 90°, in perspective: the face of a cube turning to a neighbour. Replaces any
/// earlier turn; a multiplier of 0 shows the view flat.
LUMORASDK_EXPORT void applyPerspectiveTransform(QQuickItem* view, qreal multiplier, qreal pivotX);
/// The multiplier of the turn currently applied (0 without one).
LUMORASDK_EXPORT qreal perspectiveMultiplier(QQuickItem* view);

/// Lines the label's text takes at the label's width with its font (a QML Text item).
LUMORASDK_EXPORT int calculatedLineCount(const QQuickItem* label);
/// The label's font size in points.
LUMORASDK_EXPORT qreal fontSize(const QQuickItem* label);
/// Sets the label's font size in the unit its font is given in (points, or whole pixels).
LUMORASDK_EXPORT void setFontSize(QQuickItem* label, qreal size);

}  // namespace LumoraSDK
