#pragma once

#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <memory>
#include <optional>

#include "lumorasdk_export.h"

namespace LumoraSDK {

/// Persistent per-application key-value store with registered defaults.
///
/// Values are strings, Booleans, numbers and dictionaries, kept in one JSON file. Registered
/// defaults answer reads of keys that hold nothing and are never written.
///
/// Reads and writes answer from memory at once; the file is written behind the caller by a
/// writer thread of the store's own. Writes that come in a burst are coalesced (one file write
/// in flight, the latest state wins) and every file write is atomic (temporary file, sync,
/// rename), so after a crash the file holds a state the store really had, at most about
/// kCoalescingMs plus one write behind. Pending state is written synchronously by flush(), when
/// the application quits and when the store is destroyed.
///
/// Several processes may share one file: each write takes a lock next to the file, reads what is
/// on disk and merges. Keys this process has written (set or removed) keep this process's
/// values; every other key is taken from the file, in memory too.
///
/// On load, a stored value whose JSON type differs from its registered default's type is dropped
/// with an error line naming the key, so the default answers. A file that cannot be read is moved
/// aside (never deleted), logged at error level, and the store starts over from its registered
/// defaults. The file is owner-only (0600), the directory the store creates for it too (0700).
/// All operations are thread-safe.
class LUMORASDK_EXPORT UserDefaults {
public:
    /// How long the writer waits after the first change of a burst before writing, so that a
    /// burst of changes becomes one file write.
    static constexpr int kCoalescingMs = 50;

    /// The application's store, created on first use at standardLocation().
    static UserDefaults& standard();
    /// Where standard() keeps its file: by default under the application's configuration
    /// directory. Tests point it elsewhere before the first use of standard().
    static QString standardLocation();
    static void setStandardLocation(const QString& filePath);

    /// `coalescingMs` is how long the writer lets a burst of changes gather before writing.
    explicit UserDefaults(const QString& filePath, int coalescingMs = kCoalescingMs);
    /// Writes what is pending, then stops the writer.
    ~UserDefaults();
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;

    QString filePath() const;

    /// Registers defaults; a loaded value of another JSON type than its default is dropped.
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
    /// Stores `value` as the `entry` of the dictionary at `key`, in place: the same as reading
    /// the dictionary, inserting and storing it back, without copying the whole dictionary.
    /// A key that holds no dictionary is given a new one.
    void setDictionaryValue(const QString& key, const QString& entry, const QVariant& value);

    /// Registered defaults overlaid with every stored value.
    QVariantMap dictionaryRepresentation() const;

    /// Writes pending changes now, on the calling thread, and returns when they are on disk.
    void flush();
    /// How many times the file has been written since the store was created.
    int fileWriteCount() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}  // namespace LumoraSDK
