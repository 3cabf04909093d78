#pragma once

#include <QList>
#include <QString>

#include "lumorasdk_export.h"

namespace LumoraSDK {

/// The item operations recorded by one batch of a CollectionView, and their translation into
/// model steps.
///
/// All operations of a batch happen at once: deletes and move sources name positions in the list
/// before the batch, inserts and move destinations positions in the list after it. Items that are
/// neither deleted nor moved keep their relative order and fill the positions left over.
class LUMORASDK_EXPORT CollectionViewBatchUpdate {
public:
    /// One model notification: rows first..last removed, moved before `destination` (a row of
    /// the list as it stands before the move), or inserted at first..last.
    struct Step {
        enum class Kind { remove, move, insert };
        Kind kind;
        int first;
        int last;
        int destination = -1;
        friend bool operator==(const Step&, const Step&) = default;
    };

    /// The steps that carry a list of `oldCount` rows to one of `newCount` rows, in order:
    /// removals (descending), moves, insertions (ascending). `newIndexOfOld` maps every old row
    /// to its row after the batch (-1 when deleted). A batch whose operations do not add up has
    /// no steps and names its fault in `error`.
    struct Plan {
        QList<Step> steps;
        QList<int> newIndexOfOld;
        QString error;
        bool isValid() const { return error.isEmpty(); }
    };

    void deleteItem(int oldIndex) { m_deletes.append(oldIndex); }
    void insertItem(int newIndex) { m_inserts.append(newIndex); }
    void moveItem(int oldIndex, int newIndex) { m_moves.append({oldIndex, newIndex}); }
    /// Items to configure again after the batch, by their position before it.
    void reloadItem(int oldIndex) { m_reloads.append(oldIndex); }
    /// Configure every item again after the batch.
    void reloadAll() { m_reloadAll = true; }

    const QList<int>& reloads() const { return m_reloads; }
    bool reloadsAll() const { return m_reloadAll; }
    bool hasItemOperations() const {
        return !m_deletes.isEmpty() || !m_inserts.isEmpty() || !m_moves.isEmpty();
    }

    Plan plan(int oldCount, int newCount) const;

private:
    struct MoveRecord {
        int from;
        int to;
    };
    QString validate(int oldCount, int newCount) const;

    QList<int> m_deletes;
    QList<int> m_inserts;
    QList<MoveRecord> m_moves;
    QList<int> m_reloads;
    bool m_reloadAll = false;
};

}  // namespace LumoraSDK
