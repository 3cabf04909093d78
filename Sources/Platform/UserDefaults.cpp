#include "UserDefaults.h"

#include <QCoreApplication>
#include <QFile>
#include <QMutex>
#include <QMutexLocker>
#include <QSet>
#include <QStandardPaths>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#endif

#include "PlatformLog.h"
#include "UserDefaultsFile.h"

namespace LumoraSDK {

namespace {
QMutex g_locationMutex;
QString g_standardLocation;

/// An exclusive lock on a file next to the store, held for one read-merge-write. The kernel
/// drops it when its holder dies, so a killed process never leaves the store locked.
class FileLock {
public:
    explicit FileLock(const QString& path) {
#ifdef Q_OS_UNIX
        m_fd = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (m_fd < 0 || ::flock(m_fd, LOCK_EX) != 0) {
            qCWarning(lcPlatform).noquote()
                << QStringLiteral("UserDefaults - cannot lock %1 (%2); writing without it")
                       .arg(path, QString::fromLocal8Bit(std::strerror(errno)));
        }
#endif
    }
    ~FileLock() {
#ifdef Q_OS_UNIX
        if (m_fd >= 0) {
            ::close(m_fd);  // releases the lock
        }
#endif
    }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    int m_fd = -1;
};
}  // namespace

struct UserDefaults::Private {
    const QString filePath;
    const std::chrono::milliseconds coalescing;

    mutable std::mutex mutex;  // guards the fields below
    std::condition_variable wake;
    QVariantMap values;
    QVariantMap registered;
    // Keys this process has set or removed: their values win over the file's.
    QSet<QString> owned;
    bool dirty = false;
    bool stopping = false;
    int writes = 0;

    std::mutex writeMutex;  // one file write at a time: the writer's or a flush's
    std::thread writer;
    QMetaObject::Connection quitConnection;

    Private(const QString& path, int coalescingMs) : filePath(path), coalescing(coalescingMs) {}

    void markChanged(const QString& key, std::unique_lock<std::mutex>& lock) {
        owned.insert(key);
        const bool wasDirty = dirty;
        dirty = true;
        lock.unlock();
        if (!wasDirty) {
            wake.notify_one();
        }
    }

    void writerLoop() {
        std::unique_lock lock(mutex);
        for (;;) {
            wake.wait(lock, [this] { return dirty || stopping; });
            // The rest of a burst lands in the same write.
            wake.wait_for(lock, coalescing, [this] { return stopping; });
            if (stopping) {
                return;  // the destructor writes what is left
            }
            lock.unlock();
            writeNow();
            lock.lock();
        }
    }

    /// Read-merge-write under the file lock, then take the other processes' keys into memory.
    void writeNow() {
        std::lock_guard serial(writeMutex);
        QVariantMap snapshot;
        QSet<QString> mine;
        QVariantMap defaults;
        {
            std::lock_guard lock(mutex);
            if (!dirty) {
                return;
            }
            dirty = false;
            snapshot = values;
            mine = owned;
            defaults = registered;
        }
        UserDefaultsFile::ensureDirectory(filePath);
        const FileLock fileLock(filePath + QStringLiteral(".lock"));
        UserDefaultsFile::removeLeftovers(filePath);
        QVariantMap merged = UserDefaultsFile::read(filePath).value_or(QVariantMap());
        for (const QString& key : mine) {
            merged.remove(key);
        }
        UserDefaultsFile::dropMistyped(merged, defaults, filePath);
        for (const QString& key : mine) {
            const auto value = snapshot.constFind(key);
            if (value != snapshot.constEnd()) {
                merged.insert(key, value.value());
            } else {
                merged.remove(key);
            }
        }
        const bool written = UserDefaultsFile::write(filePath, merged);

        std::lock_guard lock(mutex);
        writes += written ? 1 : 0;
        for (auto it = values.begin(); it != values.end();) {
            if (!owned.contains(it.key()) && !merged.contains(it.key())) {
                it = values.erase(it);
            } else {
                ++it;
            }
        }
        for (auto it = merged.constBegin(); it != merged.constEnd(); ++it) {
            if (!owned.contains(it.key())) {
                values.insert(it.key(), it.value());
            }
        }
    }
};

UserDefaults& UserDefaults::standard() {
    static UserDefaults store(standardLocation());
    return store;
}

QString UserDefaults::standardLocation() {
    QMutexLocker lock(&g_locationMutex);
    if (g_standardLocation.isEmpty()) {
        g_standardLocation = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) +
                             QStringLiteral("/LumoraDefaults.json");
    }
    return g_standardLocation;
}

void UserDefaults::setStandardLocation(const QString& filePath) {
    QMutexLocker lock(&g_locationMutex);
    g_standardLocation = filePath;
}

UserDefaults::UserDefaults(const QString& filePath, int coalescingMs)
    : d(std::make_unique<Private>(filePath, coalescingMs)) {
    d->values = UserDefaultsFile::read(filePath).value_or(QVariantMap());
    d->writer = std::thread([p = d.get()] { p->writerLoop(); });
    if (QCoreApplication* app = QCoreApplication::instance()) {
        d->quitConnection =
            QObject::connect(app, &QCoreApplication::aboutToQuit, [p = d.get()] { p->writeNow(); });
    }
}

UserDefaults::~UserDefaults() {
    QObject::disconnect(d->quitConnection);
    {
        std::lock_guard lock(d->mutex);
        d->stopping = true;
    }
    d->wake.notify_all();
    d->writer.join();
    d->writeNow();
}

QString UserDefaults::filePath() const {
    return d->filePath;
}

void UserDefaults::registerDefaults(const QVariantMap& defaults) {
    std::unique_lock lock(d->mutex);
    for (auto it = defaults.begin(); it != defaults.end(); ++it) {
        d->registered.insert(it.key(), it.value());
    }
    const QStringList dropped =
        UserDefaultsFile::dropMistyped(d->values, d->registered, d->filePath);
    if (dropped.isEmpty()) {
        return;
    }
    // Owned, so the next write takes the damaged values out of the file as well.
    for (const QString& key : dropped) {
        d->owned.insert(key);
    }
    d->markChanged(dropped.first(), lock);
}

QVariant UserDefaults::object(const QString& key) const {
    std::lock_guard lock(d->mutex);
    const auto stored = d->values.constFind(key);
    if (stored != d->values.constEnd()) {
        return stored.value();
    }
    return d->registered.value(key);
}

std::optional<QString> UserDefaults::string(const QString& key) const {
    const QVariant value = object(key);
    if (value.typeId() != QMetaType::QString) {
        return std::nullopt;
    }
    return value.toString();
}

std::optional<QVariantMap> UserDefaults::dictionary(const QString& key) const {
    const QVariant value = object(key);
    if (value.typeId() != QMetaType::QVariantMap) {
        return std::nullopt;
    }
    return value.toMap();
}

bool UserDefaults::boolValue(const QString& key) const {
    const QVariant value = object(key);
    return value.isValid() && value.toBool();
}

void UserDefaults::setValue(const QString& key, const QVariant& value) {
    std::unique_lock lock(d->mutex);
    // Removing a key this process never saw still claims it and writes: another process may
    // have stored it since this one loaded, and the file must lose it too.
    if (!value.isValid()) {
        d->values.remove(key);
    } else {
        d->values.insert(key, value);
    }
    d->markChanged(key, lock);
}

void UserDefaults::removeObject(const QString& key) {
    setValue(key, QVariant());
}

void UserDefaults::setDictionaryValue(const QString& key, const QString& entry,
                                      const QVariant& value) {
    std::unique_lock lock(d->mutex);
    QVariant& stored = d->values[key];
    if (stored.typeId() != QMetaType::QVariantMap) {
        stored = QVariantMap();
    }
    // data() hands out the map itself: no copy unless a reader still shares it.
    static_cast<QVariantMap*>(stored.data())->insert(entry, value);
    d->markChanged(key, lock);
}

QVariantMap UserDefaults::dictionaryRepresentation() const {
    std::lock_guard lock(d->mutex);
    QVariantMap merged = d->registered;
    for (auto it = d->values.begin(); it != d->values.end(); ++it) {
        merged.insert(it.key(), it.value());
    }
    return merged;
}

void UserDefaults::flush() {
    d->writeNow();
}

int UserDefaults::fileWriteCount() const {
    std::lock_guard lock(d->mutex);
    return d->writes;
}

}  // namespace LumoraSDK
