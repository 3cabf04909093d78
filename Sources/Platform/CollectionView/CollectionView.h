#pragma once

#include <QAbstractItemModel>
#include <QHash>
#include <QList>
#include <QMarginsF>
#include <QPointer>
#include <QQuickItem>
#include <QSet>
#include <QUrl>
#include <functional>

#include "CollectionView/CollectionViewSlot.h"
#include "CollectionView/IndexPath.h"
#include "lumorasdk_export.h"

class QQmlComponent;
class QQmlEngine;

namespace LumoraSDK {

class CollectionViewBatchUpdate;
class CollectionViewCell;
class CollectionViewDataSource;
class CollectionViewDelegate;
class CollectionViewModel;
class CollectionViewScroller;

/// A scrolling strip of cells: a QML ListView that this item owns and drives through a list model.
///
/// Items come from a data source (count, cell kind, cell content, sizes, spacing, insets); cells
/// are created from registered QML components or factories and reused as the list scrolls.
/// Changes to the items are announced in batches: inside performBatchUpdates the data source
/// switches to the new items and the view is told which old items went, which new items came and
/// which moved, all at once. The view turns that into model notifications that the list animates,
/// keeping the cells of items that stay or move.
///
/// Offsets follow the usual scroll-view convention: (0, 0) is the start of the content, section
/// insets included, whatever the list's internal origin.
class LUMORASDK_EXPORT CollectionView : public QQuickItem, public CollectionViewSlotHost {
    Q_OBJECT

public:
    enum class ScrollDirection { horizontal, vertical };
    /// Where scrollToItem places the item: at the start, the end or the middle of the viewport.
    enum class ScrollPosition {
        left,
        right,
        centeredHorizontally,
        top,
        bottom,
        centeredVertically
    };
    using CellFactory = std::function<CollectionViewCell*()>;

    static constexpr double kDefaultScrollAnimationDuration = 0.3;
    static constexpr double kDefaultUpdateAnimationDuration = 0.3;

    explicit CollectionView(QQuickItem* parent = nullptr);
    ~CollectionView() override;

    /// Makes CollectionViewCell available to QML as `import LumoraSDK.CollectionView`. Runs by
    /// itself before the first list is made; call it earlier to compile cell components sooner.
    static void registerQmlTypes();

    /// Not owned; must outlive the view or be unset. Setting it reloads the data.
    void setDataSource(CollectionViewDataSource* dataSource);
    CollectionViewDataSource* dataSource() const { return m_dataSource; }
    /// Not owned; must outlive the view or be unset.
    void setDelegate(CollectionViewDelegate* delegate) { m_delegate = delegate; }
    CollectionViewDelegate* delegate() const { return m_delegate; }

    /// Cells for `reuseIdentifier` come from a QML component whose root is a CollectionViewCell.
    void registerCell(const QString& reuseIdentifier, const QUrl& component);
    /// Cells for `reuseIdentifier` come from `factory`; the view owns what it returns.
    void registerCell(const QString& reuseIdentifier, CellFactory factory);

    // Items ---------------------------------------------------------------------------------

    /// The number of items shown; it follows the data source only through reloads and batches.
    int numberOfItems(int section) const;
    /// Starts over from the data source, without animation.
    void reloadData();
    /// Fills the cells of these items again (after prepareForReuse). Inside a batch the paths
    /// name positions before the batch.
    void reloadItems(const QList<IndexPath>& indexPaths);
    /// Fills every cell of the sections again; no cell is dropped unless the count changed.
    void reloadSections(const QList<int>& sections);
    /// Runs `updates`, in which the data source takes its new items and the view is told about
    /// them with deleteItems, insertItems and moveItem, then applies everything as one animated
    /// update. `completion` runs once afterwards, on a later turn of the main queue, with true.
    /// A batch whose operations do not match the data source's new count is logged and
    /// replaced by a full reload.
    void performBatchUpdates(std::function<void()> updates,
                             std::function<void(bool)> completion = {});
    /// Items at these positions before the batch are gone.
    void deleteItems(const QList<IndexPath>& indexPaths);
    /// Items at these positions after the batch are new.
    void insertItems(const QList<IndexPath>& indexPaths);
    /// The item at `from` before the batch stands at `to` after it.
    void moveItem(const IndexPath& from, const IndexPath& to);

    // Cells ---------------------------------------------------------------------------------

    /// The cells at least partly inside the viewport, in item order.
    QList<CollectionViewCell*> visibleCells() const;
    /// The cell of a visible item, or nullptr.
    CollectionViewCell* cellForItem(const IndexPath& indexPath) const;
    /// Lays the list out now instead of before the next frame.
    void layoutIfNeeded();
    /// Asks the data source again for sizes, spacing and insets.
    void invalidateLayout();

    // Scrolling -----------------------------------------------------------------------------

    /// Scrolls so that the item stands at `position`, within the content's bounds. An animated
    /// scroll reports scrollViewDidEndScrollingAnimation once when it ends; one cut short by
    /// another scroll or by the user is not reported.
    void scrollToItem(const IndexPath& indexPath, ScrollPosition position, bool animated);
    QPointF contentOffset() const;
    void setContentOffset(const QPointF& offset, bool animated = false);
    /// The size of everything that scrolls: items, spacing and section insets.
    QSizeF contentSize() const;
    /// The visible part of the content: the content offset and the view's size.
    QRectF bounds() const { return QRectF(contentOffset(), size()); }
    bool isDragging() const;
    bool isDecelerating() const;

    /// Paging settles on one item per swipe. A paging list keeps its page across a resize (its
    /// items are as long as the view).
    bool isPagingEnabled() const { return m_pagingEnabled; }
    void setPagingEnabled(bool enabled);
    bool isScrollEnabled() const { return m_scrollEnabled; }
    void setScrollEnabled(bool enabled);
    /// Off: neither the list nor its cells take touches or clicks.
    bool isUserInteractionEnabled() const { return m_userInteractionEnabled; }
    void setUserInteractionEnabled(bool enabled);
    ScrollDirection scrollDirection() const { return m_scrollDirection; }
    void setScrollDirection(ScrollDirection direction);
    /// Seconds an animated programmatic scroll takes; 0 jumps and still reports the end.
    double scrollAnimationDuration() const { return m_scrollAnimationDuration; }
    void setScrollAnimationDuration(double seconds);
    /// Seconds the insert, delete and move animations of a batch take.
    void setUpdateAnimationDuration(double seconds);

    /// The ListView itself, for its transitions and other presentation settings.
    QQuickItem* listView() const { return m_list; }
    /// The model the list shows.
    QAbstractItemModel* model() const;

protected:
    void componentComplete() override;
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;

private:
    struct Registration {
        QUrl url;
        CellFactory factory;
        QQmlComponent* component = nullptr;
    };
    struct Batch;

    bool ensureList();
    void applyListSettings();
    void applyLayoutParameters();
    void applyBatch(const CollectionViewBatchUpdate& update, int oldCount);
    void reloadSectionItems();
    void connectScroller();

    void slotCreated(CollectionViewSlot* slot) override;
    void slotRowChanged(CollectionViewSlot* slot) override;
    void slotPooled(CollectionViewSlot* slot) override;
    void slotReused(CollectionViewSlot* slot) override;
    void slotDestroyed(CollectionViewSlot* slot) override;

    void bindSlot(CollectionViewSlot* slot, bool reusing);
    void layoutSlot(CollectionViewSlot* slot);
    CollectionViewSlot* liveSlot(int row) const;
    bool isLive(const CollectionViewSlot* slot) const;
    bool intersectsViewport(const CollectionViewSlot* slot) const;
    bool isOnScreen(const CollectionViewSlot* slot) const;
    CollectionViewCell* dequeueCell(const QString& reuseIdentifier, QQuickItem* parent);
    void recycleCell(CollectionViewCell* cell);

    QQuickItem* m_list = nullptr;
    QQmlEngine* m_engine = nullptr;
    CollectionViewModel* m_model = nullptr;
    CollectionViewScroller* m_scroller = nullptr;
    CollectionViewDataSource* m_dataSource = nullptr;
    CollectionViewDelegate* m_delegate = nullptr;
    QHash<QString, Registration> m_registrations;
    QHash<QString, QList<CollectionViewCell*>> m_reusePool;
    QSet<CollectionViewSlot*> m_slots;
    Batch* m_batch = nullptr;
    QMarginsF m_sectionInsets;
    qreal m_lineSpacing = 0;

    ScrollDirection m_scrollDirection = ScrollDirection::horizontal;
    double m_scrollAnimationDuration = kDefaultScrollAnimationDuration;
    double m_updateAnimationDuration = kDefaultUpdateAnimationDuration;
    bool m_pagingEnabled = false;
    bool m_scrollEnabled = true;
    bool m_userInteractionEnabled = true;
};

}  // namespace LumoraSDK
