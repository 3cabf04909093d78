#pragma once

#include <QMutex>
#include <QString>
#include <QVariantMap>
#include <functional>
#include <memory>
#include <vector>

#include "lumorasdk_export.h"

namespace LumoraSDK {

struct Notification {
    QString name;
    QVariantMap userInfo;
};

/// Named broadcasts between the SDK's parts. Handlers run synchronously on the posting thread,
/// in the order they were added. An observer is any address that identifies the listener; it
/// removes itself explicitly (by name or altogether), usually in its destructor.
class LUMORASDK_EXPORT NotificationCenter {
public:
    using Handler = std::function<void(const Notification&)>;

    static NotificationCenter& defaultCenter();

    void addObserver(const void* observer, const QString& name, Handler handler);
    void removeObserver(const void* observer, const QString& name);
    void removeObserver(const void* observer);
    void post(const QString& name, const QVariantMap& userInfo = {});

    /// How many observers listen for `name`.
    int observerCount(const QString& name) const;

private:
    struct Registration {
        const void* observer;
        QString name;
        Handler handler;
        bool removed = false;
    };

    mutable QMutex m_mutex;
    std::vector<std::shared_ptr<Registration>> m_registrations;
};

}  // namespace LumoraSDK
