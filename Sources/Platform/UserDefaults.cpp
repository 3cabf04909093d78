#include "UserDefaults.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutexLocker>
#include <QSaveFile>
#include <QStandardPaths>

#include "PlatformLog.h"

namespace LumoraSDK {

namespace {
QMutex g_locationMutex;
QString g_standardLocation;
}  // namespace

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

UserDefaults::UserDefaults(const QString& filePath) : m_filePath(filePath) {
    load();
}

void UserDefaults::load() {
    // Open first and only then ask whether the file is missing: a stat-based existence check can
    // miss the file for an instant while another process renames a fresh copy over it.
    QFile file(m_filePath);
    QString problem;
    if (!file.open(QIODevice::ReadOnly)) {
        if (!file.exists()) {
            return;
        }
        problem = file.errorString();
    } else {
        QJsonParseError error{};
        const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
        file.close();
        if (error.error != QJsonParseError::NoError) {
            problem = error.errorString();
        } else if (!document.isObject()) {
            problem = QStringLiteral("not a JSON object");
        } else {
            m_values = document.object().toVariantMap();
            return;
        }
    }
    const QString aside =
        m_filePath + QStringLiteral(".corrupt-") +
        QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMddhhmmsszzz"));
    const bool moved = QFile::rename(m_filePath, aside);
    qCWarning(lcPlatform).noquote()
        << QStringLiteral(
               "UserDefaults - cannot read %1 (%2); %3, starting from the registered "
               "defaults")
               .arg(m_filePath, problem,
                    moved ? QStringLiteral("moved it aside to ") + aside
                          : QStringLiteral("left it in place"));
}

void UserDefaults::persistLocked() {
    QDir().mkpath(QFileInfo(m_filePath).absolutePath());
    QSaveFile file(m_filePath);
    if (!file.open(QIODevice::WriteOnly)) {
        qCWarning(lcPlatform).noquote() << QStringLiteral("UserDefaults - cannot write %1: %2")
                                               .arg(m_filePath, file.errorString());
        return;
    }
    file.write(QJsonDocument(QJsonObject::fromVariantMap(m_values)).toJson(QJsonDocument::Compact));
    if (!file.commit()) {
        qCWarning(lcPlatform).noquote() << QStringLiteral("UserDefaults - cannot write %1: %2")
                                               .arg(m_filePath, file.errorString());
    }
}

void UserDefaults::registerDefaults(const QVariantMap& defaults) {
    QMutexLocker lock(&m_mutex);
    for (auto it = defaults.begin(); it != defaults.end(); ++it) {
        m_registered.insert(it.key(), it.value());
    }
}

QVariant UserDefaults::object(const QString& key) const {
    QMutexLocker lock(&m_mutex);
    const auto stored = m_values.constFind(key);
    if (stored != m_values.constEnd()) {
        return stored.value();
    }
    return m_registered.value(key);
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
    QMutexLocker lock(&m_mutex);
    if (!value.isValid()) {
        if (m_values.remove(key) == 0) {
            return;
        }
    } else {
        m_values.insert(key, value);
    }
    persistLocked();
}

void UserDefaults::removeObject(const QString& key) {
    setValue(key, QVariant());
}

QVariantMap UserDefaults::dictionaryRepresentation() const {
    QMutexLocker lock(&m_mutex);
    QVariantMap merged = m_registered;
    for (auto it = m_values.begin(); it != m_values.end(); ++it) {
        merged.insert(it.key(), it.value());
    }
    return merged;
}

}  // namespace LumoraSDK
