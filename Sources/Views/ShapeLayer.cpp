#include "ShapeLayer.h"

#include <QPainter>

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
        painter->strokePath(m_path, strokePen(m_strokeColor, m_lineWidth, m_lineDashPattern));
    }
}

}  // namespace LumoraSDK
