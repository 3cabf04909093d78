#include "Views/ChannelMediaCollectionDataSource.h"

#include "Platform/CollectionView/CollectionView.h"
#include "Views/ChannelMediaCollectionViewCell.h"

namespace LumoraSDK {

ChannelMediaCollectionDataSource::ChannelMediaCollectionDataSource() = default;

IndexPath ChannelMediaCollectionDataSource::nextIndexPath() {
    finalIndex = pageCount() - 1;
    const int next = currentIndexPath.row() + 1;
    return IndexPath{next > finalIndex ? -1 : next, 0};
}

int ChannelMediaCollectionDataSource::numberOfItems(CollectionView&, int) {
    finalIndex = pageCount() - 1;
    return pageCount();
}

QString ChannelMediaCollectionDataSource::reuseIdentifier(CollectionView&, const IndexPath&) {
    return ChannelMediaCollectionViewCell::identifier();
}

void ChannelMediaCollectionDataSource::configureCell(CollectionView&, CollectionViewCell& cell,
                                                     const IndexPath& indexPath) {
    auto* page = qobject_cast<ChannelMediaCollectionViewCell*>(&cell);
    if (!page) {
        return;
    }
    const int row = indexPath.row();
    std::optional<Page> shown;
    if (pages && row >= 0 && row < pages->size()) {
        shown = pages->at(row);
    }
    page->setPage(shown, row);
}

QSizeF ChannelMediaCollectionDataSource::sizeForItem(CollectionView& view, const IndexPath&) {
    return view.size();
}

void ChannelMediaCollectionDataSource::scrollViewDidEndScrollingAnimation(CollectionView&) {
    // Copied: the handler may install another one.
    const auto handler = onScrollViewDidEndScrollingAnimation;
    handler();
}

void ChannelMediaCollectionDataSource::scrollMediaCollection(
    CollectionView* view, ChannelMediaCollectionDataSource* dataSource, int to, bool animated) {
    if (!view || !dataSource || dataSource->pageCount() == 0 || to >= view->numberOfItems(0)) {
        return;
    }
    view->scrollToItem(IndexPath{to, 0}, CollectionView::ScrollPosition::left, animated);
    dataSource->currentIndexPath = IndexPath{to, 0};
}

ChannelMediaCollectionViewCell* ChannelMediaCollectionDataSource::getVisibleMediaCell(
    CollectionView* view, int index) {
    if (!view) {
        return nullptr;
    }
    for (CollectionViewCell* visible : view->visibleCells()) {
        auto* cell = qobject_cast<ChannelMediaCollectionViewCell*>(visible);
        if (cell && cell->mediaIndex == index) {
            return cell;
        }
    }
    return nullptr;
}

}  // namespace LumoraSDK
