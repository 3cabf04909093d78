#pragma once

#include <functional>

#include "Extensions/ExecuteIfPresent.h"
#include "Extensions/IndexPathConverter.h"

namespace LumoraSDK {

/// Applies a change list to one section of a list view as one animated batch. `updateData`
/// switches the view's data source to the new list before any item operation is announced.
/// Replaced items are reloaded only after the batch has been applied: a batch does not accept
/// reloads of items that also move.
///
/// `View` is `CollectionView` or anything with its batch interface: performBatchUpdates,
/// deleteItems, insertItems, moveItem and reloadItems.
template <typename View, DiffAware T>
void reload(View& view, const QList<Change<T>>& changes, int section,
            std::function<void()> updateData, std::function<void(bool)> completion = {}) {
    const ChangeWithIndexPath changesWithIndexPath = IndexPathConverter().convert(changes, section);
    view.performBatchUpdates(
        [&] {
            updateData();
            executeIfPresent(changesWithIndexPath.deletes(),
                             [&](const QList<IndexPath>& deletes) { view.deleteItems(deletes); });
            executeIfPresent(changesWithIndexPath.inserts(),
                             [&](const QList<IndexPath>& inserts) { view.insertItems(inserts); });
            for (const IndexPathMove& move : changesWithIndexPath.moves()) {
                view.moveItem(move.from, move.to);
            }
        },
        [completion = std::move(completion)](bool finished) {
            if (completion) {
                completion(finished);
            }
        });
    executeIfPresent(changesWithIndexPath.replaces(),
                     [&](const QList<IndexPath>& replaces) { view.reloadItems(replaces); });
}

}  // namespace LumoraSDK
