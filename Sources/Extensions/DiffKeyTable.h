#pragma once

#include <QHashFunctions>
#include <QtGlobal>
#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>
#include <vector>

namespace LumoraSDK {

/// A key that lives elsewhere, compared and hashed as the key itself.
template <typename Key>
struct DiffKeyReference {
    const Key* key;
    friend bool operator==(const DiffKeyReference& a, const DiffKeyReference& b) {
        return *a.key == *b.key;
    }
    friend size_t qHash(const DiffKeyReference& reference, size_t seed = 0) {
        return qHash(*reference.key, seed);
    }
};

/// Insert-only open-addressing table from diff keys to values. It is sized once for the number of
/// keys a diff can meet (the two list lengths), so it never rehashes mid-pass; slots hold a hash
/// tag and a node number, and the nodes sit densely in insertion order.
template <typename Key, typename Value>
class DiffKeyTable {
public:
    /// Slots for `expectedKeys` at a load of at most one half, and node room for `maxKeys`, so
    /// that neither is reallocated while the keys stay within those counts.
    explicit DiffKeyTable(qsizetype expectedKeys, qsizetype maxKeys = 0) {
        m_nodes.reserve(static_cast<size_t>(std::max(expectedKeys, maxKeys)));
        allocateSlots(capacityFor(expectedKeys));
    }

    /// The value stored under `key`; when absent, `make()` supplies it and the key is stored.
    template <typename K, typename Make>
    Value& findOrInsert(K&& key, Make&& make) {
        const quint64 hash = hashOf(key);
        const quint64 tag = hash & kTagMask;
        size_t pos = static_cast<size_t>(hash) & m_mask;
        while (const quint64 slot = m_slots[pos]) {
            if ((slot & kTagMask) == tag) {
                Node& node = m_nodes[static_cast<size_t>(slot & kIndexMask) - 1];
                if (node.key == key) {
                    return node.value;
                }
            }
            pos = (pos + 1) & m_mask;
        }
        if ((m_nodes.size() + 1) * 2 > m_slots.size()) {
            grow();
            return findOrInsert(std::forward<K>(key), std::forward<Make>(make));
        }
        m_nodes.push_back(Node{Key(std::forward<K>(key)), make()});
        m_slots[pos] = tag | m_nodes.size();
        return m_nodes.back().value;
    }

    /// The value stored under `key`, or nullptr.
    const Value* find(const Key& key) const {
        const quint64 hash = hashOf(key);
        const quint64 tag = hash & kTagMask;
        size_t pos = static_cast<size_t>(hash) & m_mask;
        while (const quint64 slot = m_slots[pos]) {
            if ((slot & kTagMask) == tag) {
                const Node& node = m_nodes[static_cast<size_t>(slot & kIndexMask) - 1];
                if (node.key == key) {
                    return &node.value;
                }
            }
            pos = (pos + 1) & m_mask;
        }
        return nullptr;
    }

    qsizetype size() const { return static_cast<qsizetype>(m_nodes.size()); }

private:
    struct Node {
        Key key;
        Value value;
    };

    // The upper half of the mixed hash tags a slot; the lower half holds node number + 1, so an
    // empty slot is 0 and a probe rarely touches a node whose key differs.
    static constexpr quint64 kTagMask = 0xffffffff00000000ull;
    static constexpr quint64 kIndexMask = 0x00000000ffffffffull;

    static quint64 hashOf(const Key& key) {
        // qHash of integers is nearly the identity; the finaliser spreads it over both halves.
        quint64 h = static_cast<quint64>(qHash(key, size_t(0)));
        h ^= h >> 33;
        h *= 0xff51afd7ed558ccdull;
        h ^= h >> 33;
        return h;
    }

    static size_t capacityFor(qsizetype keys) {
        return std::bit_ceil(std::max<size_t>(16, static_cast<size_t>(keys) * 2));
    }

    void allocateSlots(size_t capacity) {
        m_slots.assign(capacity, 0);
        m_mask = capacity - 1;
    }

    void grow() {
        allocateSlots(m_slots.size() * 2);
        for (size_t i = 0; i < m_nodes.size(); ++i) {
            const quint64 hash = hashOf(m_nodes[i].key);
            size_t pos = static_cast<size_t>(hash) & m_mask;
            while (m_slots[pos]) {
                pos = (pos + 1) & m_mask;
            }
            m_slots[pos] = (hash & kTagMask) | (i + 1);
        }
    }

    std::vector<quint64> m_slots;
    std::vector<Node> m_nodes;
    size_t m_mask = 0;
};

}  // namespace LumoraSDK
