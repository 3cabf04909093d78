// The CollectionView's offsets, programmatic scrolls and what the user's drags report.
#include "CollectionView/CollectionView.h"
#include "CollectionView/CollectionViewDataSource.h"
#include "CollectionView/CollectionViewDelegate.h"
#include "CollectionView/CollectionViewModel.h"
#include "CollectionView/CollectionViewScroller.h"

namespace LumoraSDK {

namespace {

// ListView's positionViewAtIndex modes.
constexpr int kPositionBeginning = 0;
constexpr int kPositionCenter = 1;
constexpr int kPositionEnd = 2;

int positionMode(CollectionView::ScrollPosition position) {
    switch (position) {
        case CollectionView::ScrollPosition::left:
        case CollectionView::ScrollPosition::top:
            return kPositionBeginning;
        case CollectionView::ScrollPosition::right:
        case CollectionView::ScrollPosition::bottom:
            return kPositionEnd;
        case CollectionView::ScrollPosition::centeredHorizontally:
        case CollectionView::ScrollPosition::centeredVertically:
            return kPositionCenter;
    }
    return kPositionBeginning;
}

}  // namespace

void CollectionView::connectScroller() {
    // The delegate is looked up at each report: it may be set or changed at any time.
    connect(m_scroller, &CollectionViewScroller::didScroll, this, [this] {
        if (m_delegate) {
            m_delegate->scrollViewDidScroll(*this);
        }
    });
    connect(m_scroller, &CollectionViewScroller::willBeginDragging, this, [this] {
        if (m_delegate) {
            m_delegate->scrollViewWillBeginDragging(*this);
        }
    });
    connect(m_scroller, &CollectionViewScroller::didEndDragging, this, [this](bool decelerate) {
        if (m_delegate) {
            m_delegate->scrollViewDidEndDragging(*this, decelerate);
        }
    });
    connect(m_scroller, &CollectionViewScroller::didEndDecelerating, this, [this] {
        if (m_delegate) {
            m_delegate->scrollViewDidEndDecelerating(*this);
        }
    });
    connect(m_scroller, &CollectionViewScroller::didEndScrollingAnimation, this, [this] {
        if (m_delegate) {
            m_delegate->scrollViewDidEndScrollingAnimation(*this);
        }
    });
}

QPointF CollectionView::contentOffset() const {
    return m_scroller ? m_scroller->contentOffset() : QPointF();
}

void CollectionView::setContentOffset(const QPointF& offset, bool animated) {
    if (ensureList()) {
        m_scroller->setContentOffset(offset, animated);
    }
}

QSizeF CollectionView::contentSize() const {
    const int count = m_model->rowCount();
    qreal length = 0;
    if (m_dataSource) {
        auto* self = const_cast<CollectionView*>(this);
        for (int row = 0; row < count; ++row) {
            const QSizeF itemSize = m_dataSource->sizeForItem(*self, IndexPath{row, 0});
            length += m_scrollDirection == ScrollDirection::horizontal ? itemSize.width()
                                                                       : itemSize.height();
        }
    }
    if (count > 1) {
        length += m_lineSpacing * (count - 1);
    }
    if (m_scrollDirection == ScrollDirection::horizontal) {
        return QSizeF(m_sectionInsets.left() + length + m_sectionInsets.right(), height());
    }
    return QSizeF(width(), m_sectionInsets.top() + length + m_sectionInsets.bottom());
}

void CollectionView::scrollToItem(const IndexPath& indexPath, ScrollPosition position,
                                  bool animated) {
    if (ensureList() && indexPath.section == 0 && indexPath.item >= 0 &&
        indexPath.item < m_model->rowCount()) {
        m_scroller->scrollToItem(indexPath.item, positionMode(position), animated);
    }
}

bool CollectionView::isDragging() const {
    return m_scroller && m_scroller->isDragging();
}

bool CollectionView::isDecelerating() const {
    return m_scroller && m_scroller->isDecelerating();
}

void CollectionView::setScrollAnimationDuration(double seconds) {
    m_scrollAnimationDuration = seconds;
    if (m_scroller) {
        m_scroller->setAnimationDuration(seconds);
    }
}

}  // namespace LumoraSDK
