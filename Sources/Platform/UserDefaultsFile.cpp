#include "UserDefaultsFile.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSaveFile>

#include "PlatformLog.h"

namespace LumoraSDK::UserDefaultsFile {

namespace {

constexpr QFileDevice::Permissions kOwnerOnlyFile =
    QFileDevice::ReadOwner | QFileDevice::WriteOwner;
constexpr QFileDevice::Permissions kOwnerOnlyDirectory =
    QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;
constexpr QFileDevice::Permissions kOthersAndGroup =
    QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup |
    QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;

QString typeName(QJsonValue::Type type) {
    switch (type) {
        case QJsonValue::Bool:
            return QStringLiteral("a Boolean");
        case QJsonValue::Double:
            return QStringLiteral("a number");
        case QJsonValue::String:
            return QStringLiteral("a string");
        case QJsonValue::Array:
            return QStringLiteral("a list");
        case QJsonValue::Object:
            return QStringLiteral("a dictionary");
        default:
            return QStringLiteral("null");
    }
}

void moveAside(const QString& path, const QString& problem) {
    const QString aside =
        path + QStringLiteral(".corrupt-") +
        QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMddhhmmsszzz"));
    const bool moved = QFile::rename(path, aside);
    qCWarning(lcPlatform).noquote()
        << QStringLiteral(
               "UserDefaults - cannot read %1 (%2); %3, starting from the registered "
               "defaults")
               .arg(path, problem,
                    moved ? QStringLiteral("moved it aside to ") + aside
                          : QStringLiteral("left it in place"));
}

void narrowToOwner(QFile& file) {
    const QFileDevice::Permissions permissions = file.permissions();
    if (!(permissions & kOthersAndGroup)) {
        return;
    }
    const bool narrowed = file.setPermissions(kOwnerOnlyFile);
    qCWarning(lcPlatform).noquote()
        << QStringLiteral("UserDefaults - %1 was readable by others (mode %2); %3")
               .arg(file.fileName(), QString::number(permissions.toInt() & 0x777, 16),
                    narrowed ? QStringLiteral("narrowed it to owner-only")
                             : QStringLiteral("cannot narrow it: ") + file.errorString());
}

}  // namespace

void ensureDirectory(const QString& path) {
    const QString directory = QFileInfo(path).absolutePath();
    if (QFileInfo::exists(directory)) {
        return;
    }
    QDir().mkpath(directory);
    QFile::setPermissions(directory, kOwnerOnlyDirectory);
}

QJsonValue::Type jsonType(const QVariant& value) {
    return QJsonValue::fromVariant(value).type();
}

std::optional<QVariantMap> read(const QString& path) {
    // Open first and only then ask whether the file is missing: a stat-based existence check can
    // miss the file for an instant while another process renames a fresh copy over it.
    QFile file(path);
    QString problem;
    if (!file.open(QIODevice::ReadOnly)) {
        if (!file.exists()) {
            return std::nullopt;
        }
        problem = file.errorString();
    } else {
        narrowToOwner(file);
        QJsonParseError error{};
        const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
        file.close();
        if (error.error != QJsonParseError::NoError) {
            problem = error.errorString();
        } else if (!document.isObject()) {
            problem = QStringLiteral("not a JSON object");
        } else {
            return document.object().toVariantMap();
        }
    }
    moveAside(path, problem);
    return QVariantMap();
}

QStringList dropMistyped(QVariantMap& values, const QVariantMap& registered, const QString& path) {
    QStringList dropped;
    for (auto it = registered.begin(); it != registered.end(); ++it) {
        const auto stored = values.constFind(it.key());
        if (stored == values.constEnd()) {
            continue;
        }
        const QJsonValue::Type expected = jsonType(it.value());
        const QJsonValue::Type found = jsonType(stored.value());
        if (found == expected) {
            continue;
        }
        qCWarning(lcPlatform).noquote()
            << QStringLiteral(
                   "UserDefaults - dropped \"%1\" from %2: stored as %3, registered as %4; the "
                   "registered default answers")
                   .arg(it.key(), path, typeName(found), typeName(expected));
        values.remove(it.key());
        dropped.append(it.key());
    }
    return dropped;
}

void removeLeftovers(const QString& path) {
    const QFileInfo info(path);
    const QRegularExpression temporary(
        QStringLiteral("^%1\\.[A-Za-z0-9]{6}$").arg(QRegularExpression::escape(info.fileName())));
    QDir directory = info.absoluteDir();
    for (const QString& name : directory.entryList({info.fileName() + QStringLiteral(".*")},
                                                   QDir::Files | QDir::Hidden)) {
        if (temporary.match(name).hasMatch()) {
            directory.remove(name);
        }
    }
}

bool write(const QString& path, const QVariantMap& values) {
    QSaveFile file(path);
    // Owner-only before the first byte goes in; the rename keeps the mode.
    if (!file.open(QIODevice::WriteOnly) || !file.setPermissions(kOwnerOnlyFile)) {
        qCWarning(lcPlatform).noquote()
            << QStringLiteral("UserDefaults - cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    file.write(QJsonDocument(QJsonObject::fromVariantMap(values)).toJson(QJsonDocument::Compact));
    // commit() syncs the temporary file to disk before renaming it over the old one.
    if (!file.commit()) {
        qCWarning(lcPlatform).noquote()
            << QStringLiteral("UserDefaults - cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

}  // namespace LumoraSDK::UserDefaultsFile
