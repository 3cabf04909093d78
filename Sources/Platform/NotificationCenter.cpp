#include "NotificationCenter.h"

#include <QMutexLocker>
#include <algorithm>

namespace LumoraSDK {

NotificationCenter& NotificationCenter::defaultCenter() {
    static NotificationCenter center;
    return center;
}

void NotificationCenter::addObserver(const void* observer, const QString& name, Handler handler) {
    auto registration = std::make_shared<Registration>();
    registration->observer = observer;
    registration->name = name;
    registration->handler = std::move(handler);
    QMutexLocker lock(&m_mutex);
    m_registrations.push_back(std::move(registration));
}

void NotificationCenter::removeObserver(const void* observer, const QString& name) {
    QMutexLocker lock(&m_mutex);
    std::erase_if(m_registrations, [&](const std::shared_ptr<Registration>& r) {
        const bool match = r->observer == observer && r->name == name;
        if (match) {
            r->removed = true;
        }
        return match;
    });
}

void NotificationCenter::removeObserver(const void* observer) {
    QMutexLocker lock(&m_mutex);
    std::erase_if(m_registrations, [&](const std::shared_ptr<Registration>& r) {
        if (r->observer == observer) {
            r->removed = true;
            return true;
        }
        return false;
    });
}

void NotificationCenter::post(const QString& name, const QVariantMap& userInfo) {
    std::vector<std::shared_ptr<Registration>> receivers;
    {
        QMutexLocker lock(&m_mutex);
        for (const auto& r : m_registrations) {
            if (r->name == name) {
                receivers.push_back(r);
            }
        }
    }
    const Notification notification{name, userInfo};
    for (const auto& r : receivers) {
        // A handler may remove a later observer; that one must not hear this post.
        bool removed;
        {
            QMutexLocker lock(&m_mutex);
            removed = r->removed;
        }
        if (!removed) {
            r->handler(notification);
        }
    }
}

int NotificationCenter::observerCount(const QString& name) const {
    QMutexLocker lock(&m_mutex);
    return static_cast<int>(std::count_if(m_registrations.begin(), m_registrations.end(),
                                          [&](const auto& r) { return r->name == name; }));
}

}  // namespace LumoraSDK
