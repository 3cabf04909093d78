#include "Views/LumoraRowCollectionView.h"

#include <QPointer>
#include <utility>

#include "Views/LumoraRowViewDataSource.h"

namespace LumoraSDK {

LumoraRowCollectionView::LumoraRowCollectionView(QQuickItem* parent) : CollectionView(parent) {}

void LumoraRowCollectionView::scrollToItem(const IndexPath& indexPath, ScrollPosition position,
                                           bool animated, std::function<void()> completion) {
    auto* source = dynamic_cast<LumoraRowViewDataSource*>(dataSource());
    const bool inRange = indexPath.section == 0 && indexPath.item >= 0 &&
                         indexPath.item < numberOfItems(indexPath.section);
    if (!animated || !source || !inRange) {
        scrollToItem(indexPath, position, animated);
        if (completion) {
            completion();
        }
        return;
    }
    cancelAutoScroll();
    m_autoScrolling = true;
    setUserInteractionEnabled(false);
    // The data source hears of the scroll's end; it runs this once and forgets the flag, so
    // the user's own scrolls afterwards report nothing.
    source->isAutoScrolling = true;
    source->onAutoScrollComplete = [self = QPointer<LumoraRowCollectionView>(this),
                                    completion = std::move(completion)] {
        if (completion) {
            completion();
        }
        if (self) {
            self->m_autoScrolling = false;
            self->setUserInteractionEnabled(true);
        }
    };
    CollectionView::scrollToItem(indexPath, position, true);
}

void LumoraRowCollectionView::scrollToItem(const IndexPath& indexPath, ScrollPosition position,
                                           bool animated) {
    cancelAutoScroll();
    CollectionView::scrollToItem(indexPath, position, animated);
}

void LumoraRowCollectionView::cancelAutoScroll() {
    // A programmatic scroll cut short never reports its end.
    if (!std::exchange(m_autoScrolling, false)) {
        return;
    }
    if (auto* source = dynamic_cast<LumoraRowViewDataSource*>(dataSource())) {
        source->isAutoScrolling = false;
        source->onAutoScrollComplete = [] {};
    }
    setUserInteractionEnabled(true);
}

}  // namespace LumoraSDK
