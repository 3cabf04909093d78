#include "Views/ChannelsCollectionDataSource.h"

#include <QtMath>

#include "Platform/CollectionView/CollectionView.h"
#include "ViewControllers/ChannelViewController.h"
#include "Views/ChannelsCollectionViewCell.h"

namespace LumoraSDK {

ChannelsCollectionDataSource::ChannelsCollectionDataSource(
    std::optional<QList<ChannelViewController*>> data)
    : channelsViewControllers(data.value_or(QList<ChannelViewController*>())) {}

void ChannelsCollectionDataSource::registerIn(CollectionView& view) {
    view.registerCell(ChannelsCollectionViewCell::identifier(),
                      [] { return new ChannelsCollectionViewCell(); });
}

NavigationDirection ChannelsCollectionDataSource::directionTo(qreal contentOffsetX) const {
    // Coming to rest where it started counts as going back.
    return contentOffsetX - lastContentOffsetX > 0 ? NavigationDirection::forward
                                                   : NavigationDirection::reverse;
}

void ChannelsCollectionDataSource::didScroll(const QPointF& contentOffset,
                                             const QSizeF& contentSize) {
    const int count = qMax(1, int(channelsViewControllers.size()));
    singleContentWidth = contentSize.width() / count;
    const qreal progress =
        singleContentWidth > 0 ? std::fmod(contentOffset.x() / singleContentWidth, 1.0) : 0.0;
    onScrollViewDidScroll(progress, directionTo(contentOffset.x()));

    if (contentOffset.x() > contentSize.width() - singleContentWidth + dragDistanceTriggerLimit) {
        onDragLimitExceeded(NavigationDirection::forward);
    } else if (contentOffset.x() < -dragDistanceTriggerLimit) {
        onDragLimitExceeded(NavigationDirection::reverse);
    }
}

void ChannelsCollectionDataSource::didEndScrollingAnimation(qreal contentOffsetX) {
    const NavigationDirection direction = directionTo(contentOffsetX);
    onScrollViewDidEndScrollingAnimation(direction);
    lastContentOffsetX = contentOffsetX;
}

void ChannelsCollectionDataSource::didEndDecelerating(qreal contentOffsetX) {
    const NavigationDirection direction = directionTo(contentOffsetX);
    onScrollViewDidEndDecelerating(direction);
    lastContentOffsetX = contentOffsetX;
}

int ChannelsCollectionDataSource::numberOfItems(CollectionView&, int) {
    return int(channelsViewControllers.size());
}

QString ChannelsCollectionDataSource::reuseIdentifier(CollectionView&, const IndexPath&) {
    return ChannelsCollectionViewCell::identifier();
}

void ChannelsCollectionDataSource::configureCell(CollectionView& view, CollectionViewCell& cell,
                                                 const IndexPath& indexPath) {
    auto* channelCell = qobject_cast<ChannelsCollectionViewCell*>(&cell);
    if (!channelCell || indexPath.item < 0 || indexPath.item >= channelsViewControllers.size()) {
        return;
    }
    channelCell->channelIndex = indexPath.item;
    ChannelViewController* controller = channelsViewControllers[indexPath.item];
    if (!controller) {
        return;
    }
    QQuickItem* content = cell.contentView();
    QQuickItem* playerView = controller->view();
    playerView->setParentItem(content);
    playerView->setPosition(QPointF(0, 0));
    playerView->setSize(view.size());
    const QList<QQuickItem*> children = content->childItems();
    if (!children.isEmpty() && children.first() != playerView) {
        playerView->stackBefore(children.first());
    }
    cell.setY(0);
    controller->appearInPagerIfNeeded();
}

QSizeF ChannelsCollectionDataSource::sizeForItem(CollectionView& view, const IndexPath&) {
    return view.size();
}

void ChannelsCollectionDataSource::scrollViewDidScroll(CollectionView& view) {
    didScroll(view.contentOffset(), view.contentSize());
}

void ChannelsCollectionDataSource::scrollViewWillBeginDragging(CollectionView&) {
    onScrollViewWillBeginDragging();
}

void ChannelsCollectionDataSource::scrollViewDidEndDragging(CollectionView&, bool) {
    onScrollViewDidEndDragging();
    onScrollViewDidEndDraggingPastLimit();
}

void ChannelsCollectionDataSource::scrollViewDidEndDecelerating(CollectionView& view) {
    didEndDecelerating(view.contentOffset().x());
}

void ChannelsCollectionDataSource::scrollViewDidEndScrollingAnimation(CollectionView& view) {
    didEndScrollingAnimation(view.contentOffset().x());
}

}  // namespace LumoraSDK
