#include "CollectionView/CollectionView.h"

#include <QCoreApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <algorithm>
#include <mutex>

#include "CollectionView/CollectionViewBatchUpdate.h"
#include "CollectionView/CollectionViewCell.h"
#include "CollectionView/CollectionViewDataSource.h"
#include "CollectionView/CollectionViewDelegate.h"
#include "CollectionView/CollectionViewModel.h"
#include "CollectionView/CollectionViewScroller.h"
#include "CollectionView/CollectionViewSlot.h"
#include "PlatformLog.h"
#include "Scheduler.h"

namespace LumoraSDK {

namespace {

const QUrl kListUrl(QStringLiteral("qrc:/LumoraSDK/Platform/CollectionViewList.qml"));
constexpr char kQmlUri[] = "LumoraSDK.CollectionView";

// ListView's enumerations, as its QML interface defines them.
constexpr int kOrientationHorizontal = 1;
constexpr int kOrientationVertical = 2;
constexpr int kHorizontalFlick = 1;
constexpr int kVerticalFlick = 2;
constexpr int kNoSnap = 0;
constexpr int kSnapOneItem = 2;
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

/// Engine for views made from C++ rather than QML, which have no engine of their own.
QQmlEngine* sharedEngine() {
    static QPointer<QQmlEngine> engine;
    if (!engine) {
        engine = new QQmlEngine(QCoreApplication::instance());
    }
    return engine;
}

QString describe(const CollectionView* view) {
    QString text;
    QDebug(&text).nospace() << view;
    return text;
}

}  // namespace

/// What is collected while a batch's updates run.
struct CollectionView::Batch {
    CollectionViewBatchUpdate update;
    QList<std::function<void(bool)>> completions;
};

CollectionView::CollectionView(QQuickItem* parent)
    : QQuickItem(parent), m_model(new CollectionViewModel(this)) {
    setFlag(ItemIsFocusScope);
}

CollectionView::~CollectionView() {
    delete m_scroller;
    // The list and its delegates go before the view's members; slots must not call back.
    for (CollectionViewSlot* slot : std::as_const(m_slots)) {
        slot->detach();
    }
    m_slots.clear();
    delete m_list;
}

void CollectionView::registerQmlTypes() {
    static std::once_flag once;
    std::call_once(once, [] {
        qmlRegisterType<CollectionViewCell>(kQmlUri, 1, 0, "CollectionViewCell");
        qmlRegisterType<CollectionViewSlot>(kQmlUri, 1, 0, "CollectionViewSlot");
    });
}

// ---------------------------------------------------------------------------------------------
// Set-up

void CollectionView::componentComplete() {
    QQuickItem::componentComplete();
    if (ensureList() && m_dataSource) {
        reloadData();
    }
}

bool CollectionView::ensureList() {
    if (m_list) {
        return true;
    }
    // A view declared in QML waits for its engine, which it has once complete.
    if (!isComponentComplete()) {
        return false;
    }
    registerQmlTypes();
    m_engine = qmlEngine(this) ? qmlEngine(this) : sharedEngine();
    QQmlComponent component(m_engine, kListUrl, QQmlComponent::PreferSynchronous);
    QObject* object = component.beginCreate(m_engine->rootContext());
    m_list = qobject_cast<QQuickItem*>(object);
    if (!m_list) {
        qFatal("CollectionView - cannot load %s: %s", qPrintable(kListUrl.toString()),
               qPrintable(component.errorString()));
    }
    QQmlEngine::setObjectOwnership(m_list, QQmlEngine::CppOwnership);
    m_list->setParent(this);
    m_list->setParentItem(this);
    m_list->setProperty("model", QVariant::fromValue<QObject*>(m_model));
    component.completeCreate();
    m_list->setSize(size());
    applyListSettings();

    m_scroller = new CollectionViewScroller(*this, *m_list);
    return true;
}

void CollectionView::applyListSettings() {
    if (!m_list) {
        return;
    }
    const bool horizontal = m_scrollDirection == ScrollDirection::horizontal;
    m_list->setProperty("orientation", horizontal ? kOrientationHorizontal : kOrientationVertical);
    m_list->setProperty("flickableDirection", horizontal ? kHorizontalFlick : kVerticalFlick);
    m_list->setProperty("snapMode", m_pagingEnabled ? kSnapOneItem : kNoSnap);
    m_list->setProperty("interactive", m_scrollEnabled);
    m_list->setProperty("updateDuration", qRound(m_updateAnimationDuration * 1000));
}

void CollectionView::applyLayoutParameters() {
    if (!m_list || !m_dataSource) {
        return;
    }
    m_lineSpacing = m_dataSource->minimumLineSpacing(*this, 0);
    m_sectionInsets = m_dataSource->insetForSection(*this, 0);
    const bool horizontal = m_scrollDirection == ScrollDirection::horizontal;
    m_list->setProperty("spacing", m_lineSpacing);
    m_list->setProperty("leftMargin", horizontal ? m_sectionInsets.left() : 0.0);
    m_list->setProperty("rightMargin", horizontal ? m_sectionInsets.right() : 0.0);
    m_list->setProperty("topMargin", horizontal ? 0.0 : m_sectionInsets.top());
    m_list->setProperty("bottomMargin", horizontal ? 0.0 : m_sectionInsets.bottom());
}

void CollectionView::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (m_list && newGeometry.size() != oldGeometry.size()) {
        m_list->setSize(newGeometry.size());
        invalidateLayout();
    }
}

void CollectionView::setDataSource(CollectionViewDataSource* dataSource) {
    m_dataSource = dataSource;
    if (ensureList()) {
        reloadData();
    }
}

void CollectionView::registerCell(const QString& reuseIdentifier, const QUrl& component) {
    Registration& registration = m_registrations[reuseIdentifier];
    delete registration.component;
    registration = Registration{component, {}, nullptr};
}

void CollectionView::registerCell(const QString& reuseIdentifier, CellFactory factory) {
    Registration& registration = m_registrations[reuseIdentifier];
    delete registration.component;
    registration = Registration{{}, std::move(factory), nullptr};
}

QAbstractItemModel* CollectionView::model() const {
    return m_model;
}

// ---------------------------------------------------------------------------------------------
// Items

int CollectionView::numberOfItems(int section) const {
    return section == 0 ? m_model->rowCount() : 0;
}

void CollectionView::reloadData() {
    if (!ensureList()) {
        return;
    }
    const int count = m_dataSource ? m_dataSource->numberOfItems(*this, 0) : 0;
    applyLayoutParameters();
    m_model->reset(count);
}

void CollectionView::reloadItems(const QList<IndexPath>& indexPaths) {
    if (m_batch) {
        for (const IndexPath& path : indexPaths) {
            m_batch->update.reloadItem(path.item);
        }
        return;
    }
    for (const IndexPath& path : indexPaths) {
        if (path.section != 0 || path.item < 0 || path.item >= m_model->rowCount()) {
            continue;
        }
        m_model->notifyChanged(path.item, path.item);
        if (CollectionViewSlot* slot = liveSlot(path.item)) {
            bindSlot(slot, true);
        }
    }
}

void CollectionView::reloadSections(const QList<int>& sections) {
    if (!sections.contains(0)) {
        return;
    }
    if (m_batch) {
        m_batch->update.reloadAll();
        return;
    }
    reloadSectionItems();
}

void CollectionView::reloadSectionItems() {
    if (!ensureList()) {
        return;
    }
    const int oldCount = m_model->rowCount();
    const int newCount = m_dataSource ? m_dataSource->numberOfItems(*this, 0) : 0;
    applyLayoutParameters();
    if (newCount != oldCount) {
        // The section is replaced as a whole: every item goes and the new ones come.
        CollectionViewBatchUpdate update;
        for (int row = 0; row < oldCount; ++row) {
            update.deleteItem(row);
        }
        for (int row = 0; row < newCount; ++row) {
            update.insertItem(row);
        }
        m_model->apply(update.plan(oldCount, newCount).steps);
        return;
    }
    m_model->notifyChanged(0, newCount - 1);
    for (CollectionViewSlot* slot : std::as_const(m_slots)) {
        if (isLive(slot)) {
            bindSlot(slot, true);
        }
    }
}

void CollectionView::performBatchUpdates(std::function<void()> updates,
                                         std::function<void(bool)> completion) {
    if (m_batch) {
        // A batch inside a batch joins it.
        if (updates) {
            updates();
        }
        if (completion) {
            m_batch->completions.append(std::move(completion));
        }
        return;
    }
    Batch batch;
    const int oldCount = m_model->rowCount();
    m_batch = &batch;
    if (updates) {
        updates();
    }
    m_batch = nullptr;
    applyBatch(batch.update, oldCount);
    if (completion) {
        batch.completions.append(std::move(completion));
    }
    for (auto& done : batch.completions) {
        MainQueue::async([done = std::move(done)] { done(true); });
    }
}

void CollectionView::deleteItems(const QList<IndexPath>& indexPaths) {
    if (!m_batch) {
        performBatchUpdates([&] { deleteItems(indexPaths); });
        return;
    }
    for (const IndexPath& path : indexPaths) {
        m_batch->update.deleteItem(path.item);
    }
}

void CollectionView::insertItems(const QList<IndexPath>& indexPaths) {
    if (!m_batch) {
        performBatchUpdates([&] { insertItems(indexPaths); });
        return;
    }
    for (const IndexPath& path : indexPaths) {
        m_batch->update.insertItem(path.item);
    }
}

void CollectionView::moveItem(const IndexPath& from, const IndexPath& to) {
    if (!m_batch) {
        performBatchUpdates([&] { moveItem(from, to); });
        return;
    }
    m_batch->update.moveItem(from.item, to.item);
}

void CollectionView::applyBatch(const CollectionViewBatchUpdate& update, int oldCount) {
    if (!ensureList()) {
        return;
    }
    const int newCount = m_dataSource ? m_dataSource->numberOfItems(*this, 0) : 0;
    if (update.reloadsAll() && !update.hasItemOperations()) {
        reloadSectionItems();
        return;
    }
    const CollectionViewBatchUpdate::Plan plan = update.plan(oldCount, newCount);
    if (!plan.isValid()) {
        qCWarning(lcPlatform).noquote()
            << describe(this) + QStringLiteral(" - invalid batch update (") + plan.error +
                   QStringLiteral("), reloading all items");
        reloadData();
        return;
    }
    applyLayoutParameters();
    m_model->apply(plan.steps);
    // Sizes may change with the data; reloads name their items by the position before the batch.
    for (CollectionViewSlot* slot : std::as_const(m_slots)) {
        if (isLive(slot)) {
            layoutSlot(slot);
        }
    }
    if (update.reloadsAll()) {
        reloadSectionItems();
        return;
    }
    for (int oldRow : update.reloads()) {
        const int row = plan.newIndexOfOld.value(oldRow, -1);
        if (row >= 0) {
            m_model->notifyChanged(row, row);
            if (CollectionViewSlot* slot = liveSlot(row)) {
                bindSlot(slot, true);
            }
        }
    }
}

// ---------------------------------------------------------------------------------------------
// Cells

void CollectionView::slotCreated(CollectionViewSlot* slot) {
    m_slots.insert(slot);
    bindSlot(slot, false);
}

void CollectionView::slotRowChanged(CollectionViewSlot* slot) {
    // A row that moved keeps its cell and content; only the cell's index path follows.
    if (slot->row() < 0) {
        return;
    }
    if (CollectionViewCell* cell = slot->cell()) {
        cell->setIndexPath(IndexPath{slot->row(), 0});
    } else {
        bindSlot(slot, false);
    }
}

void CollectionView::slotPooled(CollectionViewSlot*) {}

void CollectionView::slotReused(CollectionViewSlot* slot) {
    // A remove transition may have faded the slot out before it was pooled.
    slot->setOpacity(1.0);
    bindSlot(slot, true);
}

void CollectionView::slotDestroyed(CollectionViewSlot* slot) {
    m_slots.remove(slot);
}

void CollectionView::bindSlot(CollectionViewSlot* slot, bool reusing) {
    const int row = slot->row();
    if (!m_dataSource || row < 0 || row >= m_model->rowCount()) {
        return;
    }
    const IndexPath path{row, 0};
    const QString reuseIdentifier = m_dataSource->reuseIdentifier(*this, path);
    CollectionViewCell* cell = slot->cell();
    if (cell && cell->reuseIdentifier() != reuseIdentifier) {
        recycleCell(cell);
        cell = nullptr;
    }
    if (!cell) {
        cell = dequeueCell(reuseIdentifier, slot);
        slot->setCell(cell);
    } else if (reusing) {
        cell->prepareForReuse();
    }
    cell->setIndexPath(path);
    layoutSlot(slot);
    m_dataSource->configureCell(*this, *cell, path);
}

void CollectionView::layoutSlot(CollectionViewSlot* slot) {
    CollectionViewCell* cell = slot->cell();
    if (!cell || !m_dataSource) {
        return;
    }
    const QSizeF size = m_dataSource->sizeForItem(*this, IndexPath{slot->row(), 0});
    // The slot spans the cross axis inside the insets; the cell is centred on it.
    if (m_scrollDirection == ScrollDirection::horizontal) {
        const qreal cross = height() - m_sectionInsets.top() - m_sectionInsets.bottom();
        slot->setY(m_sectionInsets.top());
        slot->setSize(QSizeF(size.width(), cross));
        cell->setPosition(QPointF(0, (cross - size.height()) / 2));
    } else {
        const qreal cross = width() - m_sectionInsets.left() - m_sectionInsets.right();
        slot->setX(m_sectionInsets.left());
        slot->setSize(QSizeF(cross, size.height()));
        cell->setPosition(QPointF((cross - size.width()) / 2, 0));
    }
    cell->setSize(size);
}

CollectionViewCell* CollectionView::dequeueCell(const QString& reuseIdentifier,
                                                QQuickItem* parent) {
    QList<CollectionViewCell*>& pool = m_reusePool[reuseIdentifier];
    if (!pool.isEmpty()) {
        CollectionViewCell* cell = pool.takeLast();
        cell->setParentItem(parent);
        cell->setParent(parent);
        cell->prepareForReuse();
        return cell;
    }
    const auto found = m_registrations.find(reuseIdentifier);
    if (found == m_registrations.end()) {
        qFatal("CollectionView - no cell registered for reuse identifier %s",
               qPrintable(reuseIdentifier));
    }
    Registration& registration = *found;
    CollectionViewCell* cell = nullptr;
    if (registration.factory) {
        cell = registration.factory();
    } else {
        if (!registration.component) {
            registration.component = new QQmlComponent(m_engine, registration.url,
                                                       QQmlComponent::PreferSynchronous, this);
        }
        QObject* object = registration.component->beginCreate(m_engine->rootContext());
        cell = qobject_cast<CollectionViewCell*>(object);
        if (!cell) {
            qFatal("CollectionView - %s does not make a CollectionViewCell: %s",
                   qPrintable(registration.url.toString()),
                   qPrintable(registration.component->errorString()));
        }
        cell->setParentItem(parent);
        registration.component->completeCreate();
    }
    if (!cell) {
        qFatal("CollectionView - the factory for %s made no cell", qPrintable(reuseIdentifier));
    }
    QQmlEngine::setObjectOwnership(cell, QQmlEngine::CppOwnership);
    cell->m_reuseIdentifier = reuseIdentifier;
    cell->m_collectionView = this;
    cell->setParentItem(parent);
    cell->setParent(parent);
    return cell;
}

void CollectionView::recycleCell(CollectionViewCell* cell) {
    cell->setParentItem(nullptr);
    cell->setParent(this);
    m_reusePool[cell->reuseIdentifier()].append(cell);
}

bool CollectionView::isLive(const CollectionViewSlot* slot) const {
    return !slot->isPooled() && slot->cell() && slot->row() >= 0 &&
           slot->row() < m_model->rowCount();
}

CollectionViewSlot* CollectionView::liveSlot(int row) const {
    for (CollectionViewSlot* slot : m_slots) {
        if (slot->row() == row && isLive(slot)) {
            return slot;
        }
    }
    return nullptr;
}

bool CollectionView::intersectsViewport(const CollectionViewSlot* slot) const {
    const QRectF viewport(m_scroller->listPosition(), size());
    return viewport.intersects(QRectF(slot->position(), slot->size()));
}

QList<CollectionViewCell*> CollectionView::visibleCells() const {
    QList<const CollectionViewSlot*> visible;
    for (const CollectionViewSlot* slot : m_slots) {
        if (isLive(slot) && slot->isVisible() && intersectsViewport(slot)) {
            visible.append(slot);
        }
    }
    std::sort(visible.begin(), visible.end(),
              [](const auto* a, const auto* b) { return a->row() < b->row(); });
    QList<CollectionViewCell*> cells;
    cells.reserve(visible.size());
    for (const CollectionViewSlot* slot : visible) {
        cells.append(slot->cell());
    }
    return cells;
}

CollectionViewCell* CollectionView::cellForItem(const IndexPath& indexPath) const {
    if (indexPath.section != 0) {
        return nullptr;
    }
    const CollectionViewSlot* slot = liveSlot(indexPath.item);
    return slot && slot->isVisible() && intersectsViewport(slot) ? slot->cell() : nullptr;
}

void CollectionView::layoutIfNeeded() {
    if (ensureList()) {
        QMetaObject::invokeMethod(m_list, "forceLayout");
    }
}

void CollectionView::invalidateLayout() {
    if (!m_list) {
        return;
    }
    applyLayoutParameters();
    for (CollectionViewSlot* slot : std::as_const(m_slots)) {
        if (isLive(slot)) {
            layoutSlot(slot);
        }
    }
}

// ---------------------------------------------------------------------------------------------
// Scrolling

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

void CollectionView::setPagingEnabled(bool enabled) {
    m_pagingEnabled = enabled;
    applyListSettings();
}

void CollectionView::setScrollEnabled(bool enabled) {
    m_scrollEnabled = enabled;
    applyListSettings();
}

void CollectionView::setUserInteractionEnabled(bool enabled) {
    m_userInteractionEnabled = enabled;
    setEnabled(enabled);
}

void CollectionView::setScrollDirection(ScrollDirection direction) {
    m_scrollDirection = direction;
    applyListSettings();
    invalidateLayout();
}

void CollectionView::setScrollAnimationDuration(double seconds) {
    m_scrollAnimationDuration = seconds;
}

void CollectionView::setUpdateAnimationDuration(double seconds) {
    m_updateAnimationDuration = seconds;
    applyListSettings();
}

}  // namespace LumoraSDK
