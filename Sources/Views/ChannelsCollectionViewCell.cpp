#include "Views/ChannelsCollectionViewCell.h"

#include "Extensions/ViewExtensions.h"

namespace LumoraSDK {

ChannelsCollectionViewCell::ChannelsCollectionViewCell(QQuickItem* parent)
    : CollectionViewCell(parent) {}

void ChannelsCollectionViewCell::geometryChange(const QRectF& newGeometry,
                                                const QRectF& oldGeometry) {
    CollectionViewCell::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size()) {
        for (QQuickItem* child : contentView()->childItems()) {
            child->setSize(newGeometry.size());
        }
    }
}

void ChannelsCollectionViewCell::prepareForReuse() {
    CollectionViewCell::prepareForReuse();
    removeAllSubViews(contentView());
}

}  // namespace LumoraSDK
