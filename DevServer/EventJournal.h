#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>

namespace LumoraSDK::DevServer {

/// What clients did: the viewing-history and activity events, and every API request with the
/// status it was answered with. Thread-safe; oldest first.
class EventJournal {
public:
    /// Each list keeps at most this many entries, dropping the oldest.
    static constexpr size_t kMaximumEntries = 10000;

    /// Records an API request as it arrives; its status stays 0 until finishRequest().
    int64_t beginRequest(const QJsonObject& request);
    void finishRequest(int64_t seq, int status);

    /// kind is "viewingHistory" or "activity"; user the external id (empty when anonymous).
    void recordEvent(const std::string& kind, const std::string& user, const QJsonValue& body);

    /// The events after sequence number `after` (all of them by default), oldest first.
    QJsonArray events(int64_t after = -1) const;
    /// The requests whose path starts with `prefix`.
    QJsonArray requests(const std::string& prefix) const;
    /// The last `count` events, newest first, for the index page.
    QJsonArray recentEvents(size_t count) const;

    void clear();

private:
    mutable std::mutex m_mutex;
    std::deque<QJsonObject> m_events;
    std::deque<QJsonObject> m_requests;
    int64_t m_nextEventSeq = 1;
    int64_t m_nextRequestSeq = 1;
};

}  // namespace LumoraSDK::DevServer
