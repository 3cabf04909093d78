#include "Views/ChannelProgressCollectionViewCell.h"

#include <QtMath>
#include <algorithm>
#include <cmath>

#include "Extensions/ViewExtensions.h"
#include "Platform/CollectionView/CollectionView.h"
#include "Platform/Layers/ShapeLayer.h"

namespace LumoraSDK {

namespace {
qreal drawableWidth(qreal width) {
    // 0 × ∞ (an empty segment with an infinite fraction) is no width at all.
    if (std::isnan(width)) {
        return 0;
    }
    return std::clamp(width, qreal(0), ChannelProgressCollectionViewCell::kMaximumFillWidth);
}

/// A layer of one colour looks the same from any texture size; the item's own size would round
/// a fill under half a point (the first ticks of a long page) to an empty texture, which the
/// painter refuses with warnings.
void fitTexture(ShapeLayer* layer) {
    layer->setTextureSize(
        QSize(std::max(1, qCeil(layer->width())), std::max(1, qCeil(layer->height()))));
}
}  // namespace

ChannelProgressCollectionViewCell::ChannelProgressCollectionViewCell(QQuickItem* parent)
    : CollectionViewCell(parent) {}

ChannelProgressCollectionViewCell::~ChannelProgressCollectionViewCell() = default;

QString ChannelProgressCollectionViewCell::identifier() {
    return QStringLiteral("ChannelProgressCollectionViewCell");
}

QUrl ChannelProgressCollectionViewCell::interfaceUrl() {
    return QUrl(QStringLiteral("qrc:/LumoraSDK/LumoraSDK.bundle/%1.qml").arg(identifier()));
}

void ChannelProgressCollectionViewCell::registerIn(CollectionView& view) {
    view.registerCell(identifier(), interfaceUrl());
}

void ChannelProgressCollectionViewCell::componentComplete() {
    CollectionViewCell::componentComplete();
    initProgressLayers(0.0);
}

void ChannelProgressCollectionViewCell::geometryChange(const QRectF& newGeometry,
                                                       const QRectF& oldGeometry) {
    CollectionViewCell::geometryChange(newGeometry, oldGeometry);
    // A cell not laid out yet has drawn nothing worth stretching.
    if (oldGeometry.width() <= 0 || newGeometry.size() == oldGeometry.size()) {
        return;
    }
    const qreal factor = newGeometry.width() / oldGeometry.width();
    for (QQuickItem* child : contentView()->childItems()) {
        if (auto* layer = qobject_cast<ShapeLayer*>(child)) {
            layer->setX(layer->x() * factor);
            layer->setWidth(drawableWidth(layer->width() * factor));
            layer->setHeight(newGeometry.height());
            fitTexture(layer);
        }
    }
}

void ChannelProgressCollectionViewCell::initProgressLayers(qreal progress) {
    QQuickItem* content = contentView();
    const QSizeF bounds = content->size();

    auto* background = new ShapeLayer();
    background->setPosition(QPointF(0, 0));
    background->setSize(bounds);
    background->setBackgroundColor(Qt::white);
    background->setOpacity(kTrackOpacity);
    fitTexture(background);
    background->insertInto(content, 0);

    auto* foreground = new ShapeLayer();
    foreground->setPosition(QPointF(0, 0));
    foreground->setSize(bounds);
    foreground->setWidth(drawableWidth(bounds.width() * progress));
    foreground->setBackgroundColor(Qt::white);
    fitTexture(foreground);
    foreground->insertInto(content, 1);
    foregroundProgressLayer = foreground;
}

void ChannelProgressCollectionViewCell::prepareForReuse() {
    CollectionViewCell::prepareForReuse();
    progressPercent = 0.0;
    removeAllSublayers(contentView());
    initProgressLayers(0.0);
    initProgressLayers(0.0);
}

}  // namespace LumoraSDK
