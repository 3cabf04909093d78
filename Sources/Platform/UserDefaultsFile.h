#pragma once

#include <QJsonValue>
#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <optional>

namespace LumoraSDK::UserDefaultsFile {

// The file behind a UserDefaults: one JSON object, owner-only, replaced atomically.

/// The JSON type a value is stored as.
QJsonValue::Type jsonType(const QVariant& value);

/// The file's object; nothing when the file does not exist. A file that cannot be read or is
/// not a JSON object is moved aside (never deleted) with an error line, and reads as empty.
/// A file readable by others is narrowed to owner-only first.
std::optional<QVariantMap> read(const QString& path);

/// Drops every value whose JSON type differs from its registered default's, with an error line
/// naming the key. Returns the keys dropped.
QStringList dropMistyped(QVariantMap& values, const QVariantMap& registered, const QString& path);

/// Creates the file's directory, owner-only, when it is missing.
void ensureDirectory(const QString& path);

/// Removes the temporary files of writes that a crash interrupted ("<file>.XXXXXX"). Only safe
/// under the store's lock, when no write is under way.
void removeLeftovers(const QString& path);

/// Replaces the file with `values`: temporary file, sync, rename; owner-only. False (with an error
/// line) when it could not be written.
bool write(const QString& path, const QVariantMap& values);

}  // namespace LumoraSDK::UserDefaultsFile
