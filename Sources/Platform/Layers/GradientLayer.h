#pragma once

#include <QList>
#include <optional>

#include "Layers/Layer.h"

namespace LumoraSDK {

/// A top-to-bottom gradient seen only through a stroked path: the rings around row cells.
class LUMORASDK_EXPORT GradientLayer : public Layer {
    Q_OBJECT

public:
    explicit GradientLayer(QQuickItem* parent = nullptr);

    QList<QColor> colors() const { return m_colors; }
    void setColors(const QList<QColor>& colors);
    /// The stroked outline through which the gradient shows.
    void setMask(const QPainterPath& path, qreal lineWidth,
                 const std::optional<QList<qreal>>& dashPattern);
    QPainterPath maskPath() const { return m_maskPath; }
    qreal maskLineWidth() const { return m_maskLineWidth; }

    void paint(QPainter* painter) override;

private:
    QList<QColor> m_colors;
    QPainterPath m_maskPath;
    qreal m_maskLineWidth = 0;
    std::optional<QList<qreal>> m_maskDashPattern;
};

}  // namespace LumoraSDK
