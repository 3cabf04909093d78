#include "CollectionView/CollectionViewSlot.h"

#include "CollectionView/CollectionView.h"

namespace LumoraSDK {

CollectionViewSlot::CollectionViewSlot(QQuickItem* parent) : QQuickItem(parent) {}

CollectionViewSlot::~CollectionViewSlot() {
    if (m_view) {
        m_view->slotDestroyed(this);
    }
}

void CollectionViewSlot::setRow(int row) {
    if (m_row == row) {
        return;
    }
    m_row = row;
    Q_EMIT rowChanged();
    if (m_attached && m_view && !m_pooled) {
        m_view->slotRowChanged(this);
    }
}

void CollectionViewSlot::setListView(QQuickItem* listView) {
    if (m_listView == listView) {
        return;
    }
    m_listView = listView;
    Q_EMIT listViewChanged();
    attachIfReady();
}

void CollectionViewSlot::componentComplete() {
    QQuickItem::componentComplete();
    attachIfReady();
}

void CollectionViewSlot::attachIfReady() {
    if (m_attached || !isComponentComplete() || !m_listView) {
        return;
    }
    m_view = qobject_cast<CollectionView*>(m_listView->parentItem());
    if (m_view) {
        m_attached = true;
        m_view->slotCreated(this);
    }
}

void CollectionViewSlot::pooled() {
    m_pooled = true;
    if (m_view) {
        m_view->slotPooled(this);
    }
}

void CollectionViewSlot::reused() {
    m_pooled = false;
    if (m_view) {
        m_view->slotReused(this);
    }
}

}  // namespace LumoraSDK
