#include "GradientLayer.h"

#include <QLinearGradient>
#include <QPainter>

#include "Layers/ShapeLayer.h"

namespace LumoraSDK {

GradientLayer::GradientLayer(QQuickItem* parent) : Layer(parent) {}

void GradientLayer::setColors(const QList<QColor>& colors) {
    m_colors = colors;
    update();
}

void GradientLayer::setMask(const QPainterPath& path, qreal lineWidth,
                            const std::optional<QList<qreal>>& dashPattern) {
    m_maskPath = path;
    m_maskLineWidth = lineWidth;
    m_maskDashPattern = dashPattern;
    update();
}

void GradientLayer::paint(QPainter* painter) {
    paintBackground(painter);
    if (m_colors.isEmpty() || m_maskPath.isEmpty() || m_maskLineWidth <= 0) {
        return;
    }
    QLinearGradient gradient(0, 0, 0, height());
    for (int i = 0; i < m_colors.size(); ++i) {
        gradient.setColorAt(m_colors.size() == 1 ? 0 : qreal(i) / (m_colors.size() - 1),
                            m_colors.at(i));
    }
    painter->setRenderHint(QPainter::Antialiasing);
    painter->strokePath(m_maskPath, strokePen(gradient, m_maskLineWidth, m_maskDashPattern));
}

}  // namespace LumoraSDK
