#include "Extensions/DiffExtensions.h"

#include <QtNumeric>
#include <algorithm>
#include <limits>

namespace LumoraSDK {

bool operator==(const HeckelBase::IndexList& a, const HeckelBase::IndexList& b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (int n = 0; n < a.size(); ++n) {
        if (a.at(n) != b.at(n)) {
            return false;
        }
    }
    return true;
}

bool operator==(const HeckelBase::TableEntry& a, const HeckelBase::TableEntry& b) {
    return &a == &b || (a.oldCounter == b.oldCounter && a.newCounter == b.newCounter &&
                        a.indexesInOld == b.indexesInOld);
}

bool operator==(const HeckelBase::ArrayEntry& a, const HeckelBase::ArrayEntry& b) {
    const bool aPaired = !a.isTableEntry();
    if (aPaired != !b.isTableEntry()) {
        return false;
    }
    if (aPaired) {
        return a.otherIndex() == b.otherIndex();
    }
    const HeckelBase::TableEntry* x = a.entry();
    const HeckelBase::TableEntry* y = b.entry();
    return x == y || (x && y && *x == *y);
}

int HeckelBase::checkedCount(qsizetype count) {
    if (count > std::numeric_limits<int>::max()) {
        qFatal("Heckel - a list of %lld elements is too long to diff", qlonglong(count));
    }
    return static_cast<int>(count);
}

int HeckelBase::checkedIncrement(int offset) {
    int result = 0;
    if (qAddOverflow(offset, 1, &result)) {
        qFatal("Heckel - offset overflow");
    }
    return result;
}

}  // namespace LumoraSDK
