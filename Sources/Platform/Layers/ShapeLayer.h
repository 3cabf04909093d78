#pragma once

#include <QList>
#include <optional>

#include "Layers/Layer.h"

namespace LumoraSDK {

/// A filled and stroked path: frames, rounded backgrounds, progress fills.
class LUMORASDK_EXPORT ShapeLayer : public Layer {
    Q_OBJECT

public:
    explicit ShapeLayer(QQuickItem* parent = nullptr);

    QPainterPath path() const { return m_path; }
    void setPath(const QPainterPath& path);
    qreal lineWidth() const { return m_lineWidth; }
    void setLineWidth(qreal width);
    QColor strokeColor() const { return m_strokeColor; }
    void setStrokeColor(const QColor& color);
    QColor fillColor() const { return m_fillColor; }
    void setFillColor(const QColor& color);
    /// Lengths of painted and unpainted segments in points, repeating; none draws a solid line.
    std::optional<QList<qreal>> lineDashPattern() const { return m_lineDashPattern; }
    void setLineDashPattern(const std::optional<QList<qreal>>& pattern);
    /// Nothing outside this path is drawn (the mask of the view a frame belongs to); none draws
    /// the whole stroke, half of which lies outside the path.
    std::optional<QPainterPath> clipPath() const { return m_clipPath; }
    void setClipPath(const std::optional<QPainterPath>& path);

    void paint(QPainter* painter) override;

private:
    QPainterPath m_path;
    qreal m_lineWidth = 1;
    QColor m_strokeColor = Qt::transparent;
    QColor m_fillColor = Qt::transparent;
    std::optional<QList<qreal>> m_lineDashPattern;
    std::optional<QPainterPath> m_clipPath;
};

/// A pen for a stroke of `width` points with a dash pattern given in points.
LUMORASDK_EXPORT QPen strokePen(const QBrush& brush, qreal width,
                                const std::optional<QList<qreal>>& dashPattern);

}  // namespace LumoraSDK
