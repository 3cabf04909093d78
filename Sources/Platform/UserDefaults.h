#pragma once

#include <QMutex>
#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <optional>

#include "lumorasdk_export.h"

namespace LumoraSDK {

/// Persistent per-application key-value store with registered defaults.
///
/// Values are strings, Booleans, numbers and dictionaries, kept in one JSON file. Registered
/// defaults answer reads of keys that hold nothing and are never written. Every write replaces
/// the file atomically, so a crash mid-write leaves the previous file intact. A file that cannot
/// be read is moved aside (never deleted), logged at error level, and the store starts over from
/// its registered defaults. All operations are thread-safe.
class LUMORASDK_EXPORT UserDefaults {
public:
    /// The application's store, created on first use at standardLocation().
    static UserDefaults& standard();
    /// Where standard() keeps its file: by default under the application's configuration
    /// directory. Tests point it elsewhere before the first use of standard().
    static QString standardLocation();
    static void setStandardLocation(const QString& filePath);

    explicit UserDefaults(const QString& filePath);

    QString filePath() const { return m_filePath; }

    void registerDefaults(const QVariantMap& defaults);

    /// The stored value, else the registered default, else an invalid QVariant.
    QVariant object(const QString& key) const;
    /// The value when it is a string.
    std::optional<QString> string(const QString& key) const;
    /// The value when it is a dictionary.
    std::optional<QVariantMap> dictionary(const QString& key) const;
    /// The value as a Boolean; false when missing.
    bool boolValue(const QString& key) const;

    /// Stores a value; an invalid QVariant removes the key.
    void setValue(const QString& key, const QVariant& value);
    void removeObject(const QString& key);

    /// Registered defaults overlaid with every stored value.
    QVariantMap dictionaryRepresentation() const;

private:
    void load();
    void persistLocked();

    const QString m_filePath;
    mutable QMutex m_mutex;
    QVariantMap m_values;
    QVariantMap m_registered;
};

}  // namespace LumoraSDK
