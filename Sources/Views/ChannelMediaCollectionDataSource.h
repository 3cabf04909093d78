#pragma once

#include <QList>
#include <QSizeF>
#include <functional>
#include <optional>

#include "Models/Page.h"
#include "Platform/CollectionView/CollectionViewDataSource.h"
#include "Platform/CollectionView/CollectionViewDelegate.h"
#include "Platform/CollectionView/IndexPath.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

class ChannelMediaCollectionViewCell;

/// A channel's pages as a horizontally paged list of full-size ChannelMediaCollectionViewCells,
/// with the index of the page now shown. Also the list's scroll delegate: the end of an animated
/// scroll is the page player's cue that a page has come on screen.
class LUMORASDK_EXPORT ChannelMediaCollectionDataSource : public CollectionViewDataSource,
                                                          public CollectionViewDelegate {
public:
    ChannelMediaCollectionDataSource();

    /// The channel's pages in play order.
    std::optional<QList<Page>> pages;
    /// The page now shown; only section 0 is used.
    IndexPath currentIndexPath{0, 0};
    /// Index of the last page (−1 with none); brought up to date whenever the item count or
    /// nextIndexPath() is read.
    int finalIndex = 0;
    /// The page player's page-change handler.
    std::function<void()> onScrollViewDidEndScrollingAnimation = [] {};

    /// The page after the current one, or row −1 when the current page is the last.
    IndexPath nextIndexPath();

    int numberOfItems(CollectionView& view, int section) override;
    QString reuseIdentifier(CollectionView& view, const IndexPath& indexPath) override;
    void configureCell(CollectionView& view, CollectionViewCell& cell,
                       const IndexPath& indexPath) override;
    /// Every page fills the list.
    QSizeF sizeForItem(CollectionView& view, const IndexPath& indexPath) override;
    void scrollViewDidEndScrollingAnimation(CollectionView& view) override;

    /// Brings page `to` to the list's left edge and makes it the current page. Does nothing
    /// without a data source holding at least one page, or when `to` is not below the list's
    /// item count; a negative `to` is the caller's to avoid.
    static void scrollMediaCollection(CollectionView* view,
                                      ChannelMediaCollectionDataSource* dataSource, int to,
                                      bool animated);
    /// The first visible page cell showing page `index`, or nullptr.
    static ChannelMediaCollectionViewCell* getVisibleMediaCell(CollectionView* view, int index);

private:
    int pageCount() const { return pages ? int(pages->size()) : 0; }
};

}  // namespace LumoraSDK
