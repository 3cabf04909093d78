#include "FaultTable.h"

#include <algorithm>

namespace LumoraSDK::DevServer {

void FaultTable::set(const Fault& fault) {
    std::lock_guard lock(m_mutex);
    std::erase_if(m_faults, [&](const Fault& existing) { return existing.route == fault.route; });
    m_faults.push_back(fault);
}

void FaultTable::clear() {
    std::lock_guard lock(m_mutex);
    m_faults.clear();
}

std::optional<Fault> FaultTable::take(const std::string& path) {
    std::lock_guard lock(m_mutex);
    auto best = m_faults.end();
    auto rank = [](const Fault& fault) {
        // Exact routes outrank every prefix; longer prefixes outrank shorter ones.
        return fault.route.ends_with('*') ? fault.route.size() : std::string::npos;
    };
    for (auto fault = m_faults.begin(); fault != m_faults.end(); ++fault) {
        if (fault->matches(path) && (best == m_faults.end() || rank(*fault) > rank(*best))) {
            best = fault;
        }
    }
    if (best == m_faults.end()) {
        return std::nullopt;
    }
    Fault taken = *best;
    if (best->times && --*best->times == 0) {
        m_faults.erase(best);
    }
    return taken;
}

QJsonArray FaultTable::toJson() const {
    std::lock_guard lock(m_mutex);
    QJsonArray array;
    for (const auto& fault : m_faults) {
        array.append(fault.toJson());
    }
    return array;
}

}  // namespace LumoraSDK::DevServer
