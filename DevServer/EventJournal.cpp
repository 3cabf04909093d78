#include "EventJournal.h"

namespace LumoraSDK::DevServer {

namespace {

void append(std::deque<QJsonObject>& list, QJsonObject entry) {
    list.push_back(std::move(entry));
    if (list.size() > EventJournal::kMaximumEntries) {
        list.pop_front();
    }
}

}  // namespace

int64_t EventJournal::beginRequest(const QJsonObject& request) {
    std::lock_guard lock(m_mutex);
    const int64_t seq = m_nextRequestSeq++;
    QJsonObject entry = request;
    entry.insert("seq", qint64(seq));
    entry.insert("status", 0);
    append(m_requests, std::move(entry));
    return seq;
}

void EventJournal::finishRequest(int64_t seq, int status) {
    std::lock_guard lock(m_mutex);
    // Requests finish roughly in order, so the entry is near the end.
    for (auto entry = m_requests.rbegin(); entry != m_requests.rend(); ++entry) {
        if (entry->value("seq").toInteger() == seq) {
            entry->insert("status", status);
            return;
        }
    }
}

void EventJournal::recordEvent(const std::string& kind, const std::string& user,
                               const QJsonValue& body) {
    std::lock_guard lock(m_mutex);
    append(m_events, QJsonObject{{"seq", qint64(m_nextEventSeq++)},
                                 {"kind", QString::fromStdString(kind)},
                                 {"user", QString::fromStdString(user)},
                                 {"body", body}});
}

QJsonArray EventJournal::events(int64_t after) const {
    std::lock_guard lock(m_mutex);
    QJsonArray array;
    for (const QJsonObject& event : m_events) {
        if (event.value("seq").toInteger() > after) {
            array.append(event);
        }
    }
    return array;
}

QJsonArray EventJournal::requests(const std::string& prefix) const {
    const QString wanted = QString::fromStdString(prefix);
    std::lock_guard lock(m_mutex);
    QJsonArray array;
    for (const auto& entry : m_requests) {
        if (entry.value("path").toString().startsWith(wanted)) {
            array.append(entry);
        }
    }
    return array;
}

QJsonArray EventJournal::recentEvents(size_t count) const {
    std::lock_guard lock(m_mutex);
    QJsonArray array;
    for (auto entry = m_events.rbegin(); entry != m_events.rend() && size_t(array.size()) < count;
         ++entry) {
        array.append(*entry);
    }
    return array;
}

void EventJournal::clear() {
    std::lock_guard lock(m_mutex);
    m_events.clear();
    m_requests.clear();
    // Sequence numbers keep counting, so a request still in flight cannot update a newer entry.
}

}  // namespace LumoraSDK::DevServer
