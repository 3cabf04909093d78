// The CollectionView's items and the batches that change them.
#include <QDebug>

#include "CollectionView/CollectionView.h"
#include "CollectionView/CollectionViewBatchUpdate.h"
#include "CollectionView/CollectionViewDataSource.h"
#include "CollectionView/CollectionViewModel.h"
#include "PlatformLog.h"
#include "Scheduler.h"

namespace LumoraSDK {

namespace {

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

}  // namespace LumoraSDK
