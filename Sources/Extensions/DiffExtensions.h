#pragma once

#include <QChar>
#include <QHashFunctions>
#include <QList>
#include <QString>
#include <QUuid>
#include <algorithm>
#include <concepts>
#include <memory>
#include <ranges>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "Extensions/DiffKeyTable.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

// ---------------------------------------------------------------------------------------------
// DiffAware: what the diff needs from an element type.

/// Conformance of an element type to `DiffAware`: specialise it with
/// - `DiffId`: a hashable (qHash) and equality-comparable key type;
/// - `diffId(element)`: the element's key; elements with equal keys are one and the same element;
/// - `compareContent(a, b)`: whether two elements with equal keys have equal content (false
///   reports a replace).
template <typename T>
struct DiffTraits;

/// The conformance of a hashable value: it is its own key, and its content is the value itself.
template <typename T>
struct HashableDiffTraits {
    using DiffId = T;
    static const T& diffId(const T& value) { return value; }
    static bool compareContent(const T& a, const T& b) { return a == b; }
};

template <typename T>
concept DiffInteger = std::integral<T> && !std::same_as<T, bool>;

template <DiffInteger T>
struct DiffTraits<T> : HashableDiffTraits<T> {};
template <>
struct DiffTraits<QString> : HashableDiffTraits<QString> {};
template <>
struct DiffTraits<QChar> : HashableDiffTraits<QChar> {};
template <>
struct DiffTraits<QUuid> : HashableDiffTraits<QUuid> {};

template <typename T>
concept DiffAware = requires(const T& a, const T& b, const typename DiffTraits<T>::DiffId& id) {
    { DiffTraits<T>::diffId(a) } -> std::convertible_to<typename DiffTraits<T>::DiffId>;
    { DiffTraits<T>::compareContent(a, b) } -> std::same_as<bool>;
    { qHash(id, size_t(0)) } -> std::convertible_to<size_t>;
    { id == id } -> std::convertible_to<bool>;
};

/// A list of DiffAware elements with random access (QList, std::vector...).
template <typename List>
concept DiffAwareList =
    std::ranges::random_access_range<List> && DiffAware<std::ranges::range_value_t<List>>;

/// A DiffAwareList of T.
template <typename List, typename T>
concept ListOf = DiffAwareList<List> && std::same_as<std::ranges::range_value_t<List>, T>;

// ---------------------------------------------------------------------------------------------
// Changes: immutable records of one edit each.

/// An element of the new list that has no partner in the old one.
template <typename T>
class Insert {
public:
    Insert(T item, int index) : m_item(std::move(item)), m_index(index) {}
    /// The element of the new list.
    const T& item() const { return m_item; }
    /// Its index in the new list.
    int index() const { return m_index; }
    friend bool operator==(const Insert&, const Insert&) = default;

private:
    T m_item;
    int m_index;
};

/// An element of the old list that has no partner in the new one.
template <typename T>
class Delete {
public:
    Delete(T item, int index) : m_item(std::move(item)), m_index(index) {}
    /// The element of the old list.
    const T& item() const { return m_item; }
    /// Its index in the old list.
    int index() const { return m_index; }
    friend bool operator==(const Delete&, const Delete&) = default;

private:
    T m_item;
    int m_index;
};

/// A paired element whose content changed.
template <typename T>
class Replace {
public:
    Replace(T oldItem, T newItem, int index)
        : m_oldItem(std::move(oldItem)), m_newItem(std::move(newItem)), m_index(index) {}
    const T& oldItem() const { return m_oldItem; }
    const T& newItem() const { return m_newItem; }
    /// The index in the new list.
    int index() const { return m_index; }
    friend bool operator==(const Replace&, const Replace&) = default;

private:
    T m_oldItem;
    T m_newItem;
    int m_index;
};

/// A paired element whose index, after deletes and inserts are accounted for, differs.
template <typename T>
class Move {
public:
    Move(T item, int fromIndex, int toIndex)
        : m_item(std::move(item)), m_fromIndex(fromIndex), m_toIndex(toIndex) {}
    /// The element from the new list.
    const T& item() const { return m_item; }
    /// Its index in the old list.
    int fromIndex() const { return m_fromIndex; }
    /// Its index in the new list.
    int toIndex() const { return m_toIndex; }
    friend bool operator==(const Move&, const Move&) = default;

private:
    T m_item;
    int m_fromIndex;
    int m_toIndex;
};

/// One edit: an insert, a delete, a replace or a move.
template <typename T>
class Change {
public:
    Change(Insert<T> insert) : m_value(std::move(insert)) {}
    Change(Delete<T> deletion) : m_value(std::move(deletion)) {}
    Change(Replace<T> replace) : m_value(std::move(replace)) {}
    Change(Move<T> move) : m_value(std::move(move)) {}

    /// The payload when this change is of that case, nullptr otherwise.
    const Insert<T>* insert() const { return std::get_if<Insert<T>>(&m_value); }
    /// `delete` is reserved in C++, hence the trailing underscore.
    const Delete<T>* delete_() const { return std::get_if<Delete<T>>(&m_value); }
    const Replace<T>* replace() const { return std::get_if<Replace<T>>(&m_value); }
    const Move<T>* move() const { return std::get_if<Move<T>>(&m_value); }

    friend bool operator==(const Change&, const Change&) = default;

private:
    std::variant<Insert<T>, Delete<T>, Replace<T>, Move<T>> m_value;
};

// ---------------------------------------------------------------------------------------------
// Heckel's algorithm.

/// The parts of the algorithm that do not depend on the element type.
class LUMORASDK_EXPORT HeckelBase {
public:
    /// How often a key was seen in one list.
    enum class Counter : quint8 { zero, one, many };
    static constexpr Counter incremented(Counter counter) {
        return counter == Counter::zero ? Counter::one : Counter::many;
    }

    /// The old-list indexes of one key, in the order they were found; consumed from the front.
    /// Most keys occur once, so the first index is kept inline and only duplicates allocate.
    class IndexList {
    public:
        IndexList() = default;
        IndexList(std::initializer_list<int> indexes) {
            for (int index : indexes) {
                append(index);
            }
        }
        void append(int index) {
            if (m_count == 0) {
                m_first = index;
            } else {
                if (!m_more) {
                    m_more = std::make_unique<std::vector<int>>();
                }
                m_more->push_back(index);
            }
            ++m_count;
        }
        bool isEmpty() const { return m_head == m_count; }
        int size() const { return m_count - m_head; }
        /// The n-th index not consumed yet.
        int at(int n) const { return absoluteAt(m_head + n); }
        int takeFirst() { return absoluteAt(m_head++); }
        friend LUMORASDK_EXPORT bool operator==(const IndexList& a, const IndexList& b);

    private:
        int absoluteAt(int n) const { return n == 0 ? m_first : (*m_more)[size_t(n) - 1]; }

        int m_first = 0;
        int m_count = 0;
        int m_head = 0;
        std::unique_ptr<std::vector<int>> m_more;
    };

    /// The symbol table's record of one key, shared by the table and every array slot that
    /// refers to it.
    struct TableEntry {
        Counter oldCounter = Counter::zero;
        Counter newCounter = Counter::zero;
        IndexList indexesInOld;
        friend LUMORASDK_EXPORT bool operator==(const TableEntry& a, const TableEntry& b);
    };

    /// One position of either list: not yet paired (pointing at its key's entry), or paired with
    /// an index of the other list.
    class ArrayEntry {
    public:
        static ArrayEntry tableEntry(std::shared_ptr<TableEntry> entry) {
            return ArrayEntry(std::move(entry));
        }
        static ArrayEntry indexInOther(int index) { return ArrayEntry(index); }

        /// The entry of an unpaired position, nullptr for a paired one.
        TableEntry* entry() const {
            const auto* shared = std::get_if<std::shared_ptr<TableEntry>>(&m_value);
            return shared ? shared->get() : nullptr;
        }
        bool isTableEntry() const { return m_value.index() == 0; }
        /// The partner's index of a paired position, -1 for an unpaired one.
        int otherIndex() const {
            const int* index = std::get_if<int>(&m_value);
            return index ? *index : -1;
        }
        friend LUMORASDK_EXPORT bool operator==(const ArrayEntry& a, const ArrayEntry& b);

    private:
        explicit ArrayEntry(std::shared_ptr<TableEntry> entry) : m_value(std::move(entry)) {}
        explicit ArrayEntry(int index) : m_value(index) {}
        std::variant<std::shared_ptr<TableEntry>, int> m_value;
    };

protected:
    /// List lengths and running offsets are ints; a list that does not fit is a programming error.
    static int checkedCount(qsizetype count);
    static int checkedIncrement(int offset);
};

/// Heckel's linear-time list difference, reduced to the passes a keyed list needs: the symbol
/// table, the pairing of unique and duplicated keys in order of occurrence, and the report. Runs
/// of matches are not grown forward or backward, so an element that keeps its relative order
/// but is shifted by moved neighbours is still reported as moved. It holds no state.
template <DiffAware T>
class Heckel : public HeckelBase {
public:
    using Traits = DiffTraits<T>;
    using DiffId = typename Traits::DiffId;

    /// Every delete by ascending old index, then by ascending new index each new element's
    /// insert, or its replace and/or move (replace first).
    template <ListOf<T> List>
    QList<Change<T>> diff(const List& oldList, const List& newList) const;

private:
    // A key handed out by reference lives in its element, which outlives the diff: the table
    // then refers to it instead of copying it.
    static constexpr bool kKeyIsReference =
        std::is_lvalue_reference_v<decltype(Traits::diffId(std::declval<const T&>()))>;
    using TableKey = std::conditional_t<kKeyIsReference, DiffKeyReference<DiffId>, DiffId>;
    static TableKey tableKey(const T& element) {
        if constexpr (kKeyIsReference) {
            return TableKey{&Traits::diffId(element)};
        } else {
            return Traits::diffId(element);
        }
    }
};

template <DiffAware T>
template <ListOf<T> List>
QList<Change<T>> Heckel<T>::diff(const List& oldList, const List& newList) const {
    const int oldCount = checkedCount(std::ranges::ssize(oldList));
    const int newCount = checkedCount(std::ranges::ssize(newList));
    const auto oldAt = [&](int k) -> const T& { return std::ranges::begin(oldList)[k]; };
    const auto newAt = [&](int i) -> const T& { return std::ranges::begin(newList)[i]; };

    // The entries sit side by side in one block (room for a key per element, so it never moves)
    // under one shared owner; every reference to an entry shares ownership of that block. The
    // reference counting thus touches one hot counter instead of a cold one per key.
    const auto entries = std::make_shared<std::vector<TableEntry>>();
    entries->reserve(static_cast<size_t>(oldCount) + static_cast<size_t>(newCount));
    const auto makeEntry = [&] {
        return std::shared_ptr<TableEntry>(entries, &entries->emplace_back());
    };
    // Slots for the longer list (they grow in the rare case that the lists share few keys) and
    // node room for every element, so the table never copies its keys.
    DiffKeyTable<TableKey, std::shared_ptr<TableEntry>> table(std::max(oldCount, newCount),
                                                              qsizetype(oldCount) + newCount);

    // Pass 1: count the keys of the new list.
    std::vector<ArrayEntry> newArray;
    newArray.reserve(static_cast<size_t>(newCount));
    for (int i = 0; i < newCount; ++i) {
        std::shared_ptr<TableEntry>& entry = table.findOrInsert(tableKey(newAt(i)), makeEntry);
        entry->newCounter = incremented(entry->newCounter);
        newArray.push_back(ArrayEntry::tableEntry(entry));
    }

    // Pass 2: count the keys of the old list and remember where they stand.
    std::vector<ArrayEntry> oldArray;
    oldArray.reserve(static_cast<size_t>(oldCount));
    for (int k = 0; k < oldCount; ++k) {
        std::shared_ptr<TableEntry>& entry = table.findOrInsert(tableKey(oldAt(k)), makeEntry);
        entry->oldCounter = incremented(entry->oldCounter);
        entry->indexesInOld.append(k);
        oldArray.push_back(ArrayEntry::tableEntry(entry));
    }

    // Pass 3: pair the n-th occurrence of a key in the new list with its n-th in the old one.
    int pairedCount = 0;
    for (int i = 0; i < newCount; ++i) {
        TableEntry* entry = newArray[i].entry();
        if (!entry || entry->indexesInOld.isEmpty()) {
            continue;
        }
        const int j = entry->indexesInOld.takeFirst();
        const bool uniqueInBoth =
            entry->newCounter == Counter::one && entry->oldCounter == Counter::one;
        const bool sameEntry = entry->newCounter != Counter::zero &&
                               entry->oldCounter != Counter::zero && newArray[i] == oldArray[j];
        if (uniqueInBoth || sameEntry) {
            newArray[i] = ArrayEntry::indexInOther(j);
            oldArray[j] = ArrayEntry::indexInOther(i);
            ++pairedCount;
        }
    }

    QList<Change<T>> result;
    result.reserve(qsizetype(oldCount) - pairedCount + newCount);

    // Report, part one: deletes, and how many old elements before each index were deleted.
    std::vector<int> deleteOffsets(static_cast<size_t>(oldCount), 0);
    int runningOffset = 0;
    for (int k = 0; k < oldCount; ++k) {
        deleteOffsets[k] = runningOffset;
        if (oldArray[k].isTableEntry()) {
            result.append(Delete<T>(oldAt(k), k));
            runningOffset = checkedIncrement(runningOffset);
        }
    }

    // Report, part two: inserts, replaces and moves in new-list order.
    int insertOffset = 0;
    for (int i = 0; i < newCount; ++i) {
        const ArrayEntry& slot = newArray[i];
        if (slot.isTableEntry()) {
            insertOffset = checkedIncrement(insertOffset);
            result.append(Insert<T>(newAt(i), i));
            continue;
        }
        const int j = slot.otherIndex();
        if (!Traits::compareContent(oldAt(j), newAt(i))) {
            result.append(Replace<T>(oldAt(j), newAt(i), i));
        }
        if (j - deleteOffsets[j] + insertOffset != i) {
            result.append(Move<T>(newAt(i), j, i));
        }
    }
    return result;
}

/// The changes that turn `oldList` into `newList`, after Heckel.
template <DiffAwareList List>
QList<Change<std::ranges::range_value_t<List>>> diff(const List& oldList, const List& newList) {
    return Heckel<std::ranges::range_value_t<List>>().diff(oldList, newList);
}

}  // namespace LumoraSDK
