#pragma once

#include "Fault.h"

#include <QJsonArray>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace LumoraSDK::DevServer {

/// The faults in force. Thread-safe.
class FaultTable {
public:
    /// Adds `fault`, replacing one set earlier for the same route.
    void set(const Fault& fault);
    void clear();

    /// The fault for a request to `path`, using up one of its `times`. An exact route wins over
    /// a prefix, and a longer prefix over a shorter one.
    std::optional<Fault> take(const std::string& path);

    QJsonArray toJson() const;

private:
    mutable std::mutex m_mutex;
    std::vector<Fault> m_faults;
};

}  // namespace LumoraSDK::DevServer
