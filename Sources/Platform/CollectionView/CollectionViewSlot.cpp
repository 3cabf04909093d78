#include "CollectionView/CollectionViewSlot.h"

namespace LumoraSDK {

CollectionViewSlot::CollectionViewSlot(QQuickItem* parent) : QQuickItem(parent) {}

CollectionViewSlot::~CollectionViewSlot() {
    if (m_host) {
        m_host->slotDestroyed(this);
    }
}

void CollectionViewSlot::setRow(int row) {
    if (m_row == row) {
        return;
    }
    m_row = row;
    Q_EMIT rowChanged();
    if (m_attached && m_host && !m_pooled) {
        m_host->slotRowChanged(this);
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
    m_host = dynamic_cast<CollectionViewSlotHost*>(m_listView->parentItem());
    if (m_host) {
        m_attached = true;
        m_host->slotCreated(this);
    }
}

void CollectionViewSlot::pooled() {
    m_pooled = true;
    if (m_host) {
        m_host->slotPooled(this);
    }
}

void CollectionViewSlot::reused() {
    m_pooled = false;
    if (m_host) {
        m_host->slotReused(this);
    }
}

}  // namespace LumoraSDK
