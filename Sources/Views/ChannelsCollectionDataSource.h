#pragma once

#include <QList>
#include <QPointF>
#include <QPointer>
#include <QSizeF>
#include <functional>
#include <optional>

#include "Platform/CollectionView/CollectionViewDataSource.h"
#include "Platform/CollectionView/CollectionViewDelegate.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

class ChannelViewController;

/// Which way the pager moved: towards later channels or back.
enum class NavigationDirection { forward = 0, reverse = 1 };

/// The player's pager: one full-screen ChannelsCollectionViewCell per page player, side by side
/// on a horizontally paging CollectionView. Turns the list's scroll events into callbacks that
/// carry a direction, reports drags past either end and feeds the cube transition.
///
/// Directions are taken against the offset where the pager last came to rest, not the previous
/// scroll step, so a whole swipe reports one direction throughout.
class LUMORASDK_EXPORT ChannelsCollectionDataSource : public CollectionViewDataSource,
                                                      public CollectionViewDelegate {
public:
    /// Overscroll, in points, beyond which a drag counts as past the end.
    static constexpr qreal dragDistanceTriggerLimit = 25.0;

    explicit ChannelsCollectionDataSource(
        std::optional<QList<ChannelViewController*>> data = std::nullopt);

    QList<ChannelViewController*> channelsViewControllers;

    std::function<void()> onChannelDataChanged = [] {};
    std::function<void()> onScrollViewDidEndDragging = [] {};
    /// Called right after onScrollViewDidEndDragging; the host installs what a drag past an end
    /// means.
    std::function<void()> onScrollViewDidEndDraggingPastLimit = [] {};
    std::function<void(NavigationDirection)> onScrollViewDidEndScrollingAnimation =
        [](NavigationDirection) {};
    std::function<void(NavigationDirection)> onScrollViewDidEndDecelerating =
        [](NavigationDirection) {};
    std::function<void()> onScrollViewWillBeginDragging = [] {};
    /// Every scroll step: the fraction of the way from one item to the next, and the direction.
    std::function<void(qreal, NavigationDirection)> onScrollViewDidScroll =
        [](qreal, NavigationDirection) {};
    std::function<void()> onCellControllerDismissed = [] {};
    std::function<void(NavigationDirection)> onDragLimitExceeded = [](NavigationDirection) {};

    /// Width of one item, recomputed on every scroll step.
    qreal singleContentWidth = 0;
    /// Horizontal offset where the pager last came to rest.
    qreal lastContentOffsetX = 0;

    // The scroll logic on plain values; the delegate methods below read them from the view.
    void didScroll(const QPointF& contentOffset, const QSizeF& contentSize);
    void didEndScrollingAnimation(qreal contentOffsetX);
    void didEndDecelerating(qreal contentOffsetX);

    int numberOfItems(CollectionView& view, int section) override;
    QString reuseIdentifier(CollectionView& view, const IndexPath& indexPath) override;
    /// Puts the page player's view, filling the cell, behind anything else in the content view.
    /// A page player whose view comes on screen for the first time goes through its appearance.
    void configureCell(CollectionView& view, CollectionViewCell& cell,
                       const IndexPath& indexPath) override;
    /// Each item is exactly one screen.
    QSizeF sizeForItem(CollectionView& view, const IndexPath& indexPath) override;

    void scrollViewDidScroll(CollectionView& view) override;
    void scrollViewWillBeginDragging(CollectionView& view) override;
    void scrollViewDidEndDragging(CollectionView& view, bool willDecelerate) override;
    void scrollViewDidEndDecelerating(CollectionView& view) override;
    void scrollViewDidEndScrollingAnimation(CollectionView& view) override;

    /// Makes `view` create ChannelsCollectionViewCells.
    static void registerIn(CollectionView& view);

private:
    NavigationDirection directionTo(qreal contentOffsetX) const;
};

}  // namespace LumoraSDK
