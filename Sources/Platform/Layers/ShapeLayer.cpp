#include "ShapeLayer.h"

#include <QPainter>
#include <QPainterPathStroker>

namespace LumoraSDK {

QPen strokePen(const QBrush& brush, qreal width, const std::optional<QList<qreal>>& dashPattern) {
    QPen pen(brush, width, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
    if (dashPattern && !dashPattern->isEmpty() && width > 0) {
        // Qt measures dashes in pen widths; the layer's pattern is in points.
        QList<qreal> scaled;
        for (qreal length : *dashPattern) {
            scaled.append(length / width);
        }
        if (scaled.size() % 2 == 1) {
            scaled += scaled;
        }
        pen.setDashPattern(scaled);
    }
    return pen;
}

ShapeLayer::ShapeLayer(QQuickItem* parent) : Layer(parent) {}

void ShapeLayer::setPath(const QPainterPath& path) {
    m_path = path;
    update();
}

void ShapeLayer::setLineWidth(qreal width) {
    m_lineWidth = width;
    update();
}

void ShapeLayer::setStrokeColor(const QColor& color) {
    m_strokeColor = color;
    update();
}

void ShapeLayer::setFillColor(const QColor& color) {
    m_fillColor = color;
    update();
}

void ShapeLayer::setLineDashPattern(const std::optional<QList<qreal>>& pattern) {
    m_lineDashPattern = pattern;
    update();
}

void ShapeLayer::setClipPath(const std::optional<QPainterPath>& path) {
    m_clipPath = path;
    update();
}

void ShapeLayer::paint(QPainter* painter) {
    paintBackground(painter);
    if (m_path.isEmpty()) {
        return;
    }
    painter->setRenderHint(QPainter::Antialiasing);
    if (m_fillColor.alpha() > 0) {
        painter->fillPath(m_path, m_fillColor);
    }
    if (m_strokeColor.alpha() > 0 && m_lineWidth > 0) {
        const QPen pen = strokePen(m_strokeColor, m_lineWidth, m_lineDashPattern);
        if (m_clipPath) {
            // The stroke's outline cut by the clip and filled, rather than a painter clip, which
            // the raster engine does not antialias: rounded corners stay smooth.
            painter->fillPath(
                QPainterPathStroker(pen).createStroke(m_path).intersected(*m_clipPath),
                m_strokeColor);
        } else {
            painter->strokePath(m_path, pen);
        }
    }
}

}  // namespace LumoraSDK
