#include "CollectionView/CollectionView.h"

#include <QCoreApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <algorithm>
#include <mutex>

#include "CollectionView/CollectionViewCell.h"
#include "CollectionView/CollectionViewDataSource.h"
#include "CollectionView/CollectionViewDelegate.h"
#include "CollectionView/CollectionViewModel.h"
#include "CollectionView/CollectionViewScroller.h"
#include "CollectionView/CollectionViewSlot.h"

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

/// Engine for views made from C++ rather than QML, which have no engine of their own.
QQmlEngine* sharedEngine() {
    static QPointer<QQmlEngine> engine;
    if (!engine) {
        engine = new QQmlEngine(QCoreApplication::instance());
    }
    return engine;
}

}  // namespace

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

    m_scroller = new CollectionViewScroller(*m_list, this);
    connectScroller();
    applyListSettings();
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
    m_scroller->setHorizontal(horizontal);
    m_scroller->setAnimationDuration(m_scrollAnimationDuration);
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
    if (!m_list || newGeometry.size() == oldGeometry.size()) {
        return;
    }
    // A paging list's pages are as long as the view: it keeps showing the same page, and the
    // same share of the way to the next while it moves, once the list has laid the resized
    // items out.
    const bool horizontal = m_scrollDirection == ScrollDirection::horizontal;
    const qreal from = horizontal ? oldGeometry.width() : oldGeometry.height();
    const qreal to = horizontal ? newGeometry.width() : newGeometry.height();
    const CollectionViewScroller::Placement placement = m_scroller->placement();
    m_list->setSize(newGeometry.size());
    invalidateLayout();
    if (m_pagingEnabled && from > 0 && to != from) {
        layoutIfNeeded();
        m_scroller->restorePlacement(placement, to / from);
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

bool CollectionView::isOnScreen(const CollectionViewSlot* slot) const {
    // Hiding the whole view (a player hides its pages while a video stalls) keeps its cells
    // visible to the code: only a slot hidden on its own is off screen.
    return (slot->isVisible() || !isVisible()) && intersectsViewport(slot);
}

bool CollectionView::intersectsViewport(const CollectionViewSlot* slot) const {
    const QRectF viewport(m_scroller->listPosition(), size());
    return viewport.intersects(QRectF(slot->position(), slot->size()));
}

QList<CollectionViewCell*> CollectionView::visibleCells() const {
    QList<const CollectionViewSlot*> visible;
    for (const CollectionViewSlot* slot : m_slots) {
        if (isLive(slot) && isOnScreen(slot)) {
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
    return slot && isOnScreen(slot) ? slot->cell() : nullptr;
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

void CollectionView::setUpdateAnimationDuration(double seconds) {
    m_updateAnimationDuration = seconds;
    applyListSettings();
}

}  // namespace LumoraSDK
