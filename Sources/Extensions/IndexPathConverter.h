#pragma once

#include <QList>
#include <utility>

#include "Extensions/DiffExtensions.h"
#include "Platform/CollectionView/IndexPath.h"

namespace LumoraSDK {

/// A move between two item positions of a list view.
struct IndexPathMove {
    IndexPath from;
    IndexPath to;
    friend bool operator==(const IndexPathMove&, const IndexPathMove&) = default;
};

/// A change list in the terms of a list view: one index path per change, each list in the order
/// its changes stand in the change list.
class ChangeWithIndexPath {
public:
    ChangeWithIndexPath(QList<IndexPath> inserts, QList<IndexPath> deletes,
                        QList<IndexPath> replaces, QList<IndexPathMove> moves)
        : m_inserts(std::move(inserts))
        , m_deletes(std::move(deletes))
        , m_replaces(std::move(replaces))
        , m_moves(std::move(moves)) {}

    /// New-list positions of inserted items.
    const QList<IndexPath>& inserts() const { return m_inserts; }
    /// Old-list positions of deleted items.
    const QList<IndexPath>& deletes() const { return m_deletes; }
    /// New-list positions of replaced items.
    const QList<IndexPath>& replaces() const { return m_replaces; }
    /// Old to new positions of moved items.
    const QList<IndexPathMove>& moves() const { return m_moves; }

private:
    QList<IndexPath> m_inserts;
    QList<IndexPath> m_deletes;
    QList<IndexPath> m_replaces;
    QList<IndexPathMove> m_moves;
};

/// Turns a change list into index paths of one section. Holds no state.
class IndexPathConverter {
public:
    template <DiffAware T>
    ChangeWithIndexPath convert(const QList<Change<T>>& changes, int section) const {
        QList<IndexPath> inserts;
        QList<IndexPath> deletes;
        QList<IndexPath> replaces;
        QList<IndexPathMove> moves;
        for (const Change<T>& change : changes) {
            if (const auto* insert = change.insert()) {
                inserts.append(IndexPath{insert->index(), section});
            }
            if (const auto* deletion = change.delete_()) {
                deletes.append(IndexPath{deletion->index(), section});
            }
            if (const auto* replace = change.replace()) {
                replaces.append(IndexPath{replace->index(), section});
            }
            if (const auto* move = change.move()) {
                moves.append(IndexPathMove{IndexPath{move->fromIndex(), section},
                                           IndexPath{move->toIndex(), section}});
            }
        }
        return ChangeWithIndexPath(std::move(inserts), std::move(deletes), std::move(replaces),
                                   std::move(moves));
    }
};

}  // namespace LumoraSDK
