#include "Views/ChannelsCollectionViewCell.h"

#include "Extensions/ViewExtensions.h"

namespace LumoraSDK {

ChannelsCollectionViewCell::ChannelsCollectionViewCell(QQuickItem* parent)
    : CollectionViewCell(parent) {}

void ChannelsCollectionViewCell::prepareForReuse() {
    CollectionViewCell::prepareForReuse();
    removeAllSubViews(contentView());
}

}  // namespace LumoraSDK
