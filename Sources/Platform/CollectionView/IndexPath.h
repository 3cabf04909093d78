#pragma once

#include <QDebug>
#include <QHashFunctions>
#include <compare>

namespace LumoraSDK {

/// The position of an item in a list view: its index within its section.
struct IndexPath {
    int item = 0;
    int section = 0;

    /// The item index under the name row-based lists use.
    int row() const { return item; }

    friend bool operator==(const IndexPath&, const IndexPath&) = default;
    /// Section first, then item, as the items are laid out.
    friend std::strong_ordering operator<=>(const IndexPath& a, const IndexPath& b) {
        if (const auto bySection = a.section <=> b.section; bySection != 0) {
            return bySection;
        }
        return a.item <=> b.item;
    }
};

inline size_t qHash(const IndexPath& path, size_t seed = 0) {
    return qHashMulti(seed, path.section, path.item);
}

inline QDebug operator<<(QDebug debug, const IndexPath& path) {
    QDebugStateSaver saver(debug);
    debug.nospace() << "IndexPath(" << path.item << ", " << path.section << ')';
    return debug;
}

}  // namespace LumoraSDK
