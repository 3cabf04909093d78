#include "CollectionView/CollectionViewBatchUpdate.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace LumoraSDK {

namespace {

constexpr int kOpen = -2;      // a position after the batch not claimed yet
constexpr int kInserted = -1;  // a position after the batch taken by an insert

/// Splits sorted indexes into runs of consecutive values and reports each as first..last.
template <typename Report>
void forEachRun(const std::vector<int>& sorted, int direction, Report report) {
    size_t start = 0;
    for (size_t i = 1; i <= sorted.size(); ++i) {
        if (i == sorted.size() || sorted[i] != sorted[i - 1] + direction) {
            report(std::min(sorted[start], sorted[i - 1]), std::max(sorted[start], sorted[i - 1]));
            start = i;
        }
    }
}

}  // namespace

QString CollectionViewBatchUpdate::validate(int oldCount, int newCount) const {
    std::vector<char> deleted(static_cast<size_t>(oldCount), 0);
    std::vector<char> moved(static_cast<size_t>(oldCount), 0);
    std::vector<char> claimed(static_cast<size_t>(std::max(newCount, 0)), 0);
    for (int index : m_deletes) {
        if (index < 0 || index >= oldCount) {
            return QStringLiteral("delete of item %1 of %2").arg(index).arg(oldCount);
        }
        if (std::exchange(deleted[index], 1)) {
            return QStringLiteral("item %1 deleted twice").arg(index);
        }
    }
    for (int index : m_inserts) {
        if (index < 0 || index >= newCount) {
            return QStringLiteral("insert of item %1 of %2").arg(index).arg(newCount);
        }
        if (std::exchange(claimed[index], 1)) {
            return QStringLiteral("item %1 inserted twice").arg(index);
        }
    }
    for (const MoveRecord& move : m_moves) {
        if (move.from < 0 || move.from >= oldCount || move.to < 0 || move.to >= newCount) {
            return QStringLiteral("move of item %1 of %2 to %3 of %4")
                .arg(move.from)
                .arg(oldCount)
                .arg(move.to)
                .arg(newCount);
        }
        if (deleted[move.from]) {
            return QStringLiteral("item %1 both deleted and moved").arg(move.from);
        }
        if (std::exchange(moved[move.from], 1)) {
            return QStringLiteral("item %1 moved twice").arg(move.from);
        }
        if (std::exchange(claimed[move.to], 1)) {
            return QStringLiteral("two items inserted or moved to %1").arg(move.to);
        }
    }
    const qsizetype expected = oldCount - m_deletes.size() + m_inserts.size();
    if (newCount != expected) {
        return QStringLiteral(
                   "%1 items after the update, but %2 before, %3 deleted and %4 inserted")
            .arg(newCount)
            .arg(oldCount)
            .arg(m_deletes.size())
            .arg(m_inserts.size());
    }
    return {};
}

CollectionViewBatchUpdate::Plan CollectionViewBatchUpdate::plan(int oldCount, int newCount) const {
    Plan plan;
    plan.error = validate(oldCount, newCount);
    if (!plan.isValid()) {
        return plan;
    }

    // Where every row ends up: inserts and moves claim their positions, the untouched rows fill
    // the rest in their old order.
    std::vector<char> deleted(static_cast<size_t>(oldCount), 0);
    std::vector<char> moved(static_cast<size_t>(oldCount), 0);
    std::vector<int> finalRows(static_cast<size_t>(newCount), kOpen);
    for (int index : m_deletes) {
        deleted[index] = 1;
    }
    for (int index : m_inserts) {
        finalRows[index] = kInserted;
    }
    for (const MoveRecord& move : m_moves) {
        moved[move.from] = 1;
        finalRows[move.to] = move.from;
    }
    size_t open = 0;
    for (int old = 0; old < oldCount; ++old) {
        if (deleted[old] || moved[old]) {
            continue;
        }
        while (finalRows[open] != kOpen) {
            ++open;
        }
        finalRows[open++] = old;
    }
    plan.newIndexOfOld = QList<int>(oldCount, -1);
    for (int row = 0; row < newCount; ++row) {
        if (finalRows[row] >= 0) {
            plan.newIndexOfOld[finalRows[row]] = row;
        }
    }

    // Removals from the bottom up, so every range still names the rows it meant.
    std::vector<int> removals(m_deletes.cbegin(), m_deletes.cend());
    std::sort(removals.begin(), removals.end(), std::greater<>());
    forEachRun(removals, -1, [&](int first, int last) {
        plan.steps.append(Step{Step::Kind::remove, first, last});
    });

    // Moves. The kept rows must end in their final order; the untouched ones already are in it.
    // Each moved row (or run of moved rows that already stand together) is placed right after
    // its final predecessor; once every moved row has been placed, each row follows its
    // predecessor and the order is the final one.
    std::vector<int> current;  // old rows in their present order
    std::vector<int> position(static_cast<size_t>(oldCount), -1);
    current.reserve(static_cast<size_t>(oldCount));
    for (int old = 0; old < oldCount; ++old) {
        if (!deleted[old]) {
            position[old] = static_cast<int>(current.size());
            current.push_back(old);
        }
    }
    std::vector<int> kept;  // old rows in their final order
    kept.reserve(current.size());
    for (int row : finalRows) {
        if (row >= 0) {
            kept.push_back(row);
        }
    }
    const auto renumber = [&](int from, int to) {
        for (int p = from; p < to; ++p) {
            position[current[p]] = p;
        }
    };
    for (size_t t = 0; t < kept.size(); ++t) {
        if (!moved[kept[t]]) {
            continue;
        }
        const int source = position[kept[t]];
        int length = 1;
        while (t + length < kept.size() && moved[kept[t + length]] &&
               position[kept[t + length]] == source + length) {
            ++length;
        }
        const int destination = t == 0 ? 0 : position[kept[t - 1]] + 1;
        if (source > destination) {
            std::rotate(current.begin() + destination, current.begin() + source,
                        current.begin() + source + length);
            renumber(destination, source + length);
        } else if (source < destination) {
            std::rotate(current.begin() + source, current.begin() + source + length,
                        current.begin() + destination);
            renumber(source, destination);
        }
        if (source != destination) {
            plan.steps.append(Step{Step::Kind::move, source, source + length - 1, destination});
        }
        t += length - 1;
    }

    // Insertions from the top down: every row before an inserted range is already final.
    std::vector<int> insertions(m_inserts.cbegin(), m_inserts.cend());
    std::sort(insertions.begin(), insertions.end());
    forEachRun(insertions, 1, [&](int first, int last) {
        plan.steps.append(Step{Step::Kind::insert, first, last});
    });
    return plan;
}

}  // namespace LumoraSDK
