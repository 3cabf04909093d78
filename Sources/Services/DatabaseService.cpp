#include "DatabaseService.h"

#include <limits>

#include "Lumora.h"
#include "Platform/NotificationCenter.h"
#include "Platform/UserDefaults.h"
#include "Services/Logger.h"

namespace LumoraSDK {

// "Lumora" is the facade's type name: every key is "Lumora.<name>".
const QString DatabaseService::Key::deviceId = QStringLiteral("Lumora.deviceId");
const QString DatabaseService::Key::environment = QStringLiteral("Lumora.environment");
const QString DatabaseService::Key::apiKey = QStringLiteral("Lumora.apiKey");
const QString DatabaseService::Key::accessToken = QStringLiteral("Lumora.accessToken");
const QString DatabaseService::Key::primaryColorHex = QStringLiteral("Lumora.primaryColorHex");
const QString DatabaseService::Key::secondaryColorHex = QStringLiteral("Lumora.secondaryColorHex");
const QString DatabaseService::Key::hasShownInstructions =
    QStringLiteral("Lumora.hasShownInstructions");
const QString DatabaseService::Key::channelInitialPageMapping =
    QStringLiteral("Lumora.channelInitialPageMapping");
const QString DatabaseService::Key::channelIsReadMapping =
    QStringLiteral("Lumora.channelIsReadMapping");

namespace {
QVariantMap registeredDefaults() {
    return {
        {DatabaseService::Key::deviceId, QString()},
        {DatabaseService::Key::primaryColorHex, QString()},
        {DatabaseService::Key::secondaryColorHex, QString()},
        {DatabaseService::Key::hasShownInstructions, false},
        {DatabaseService::Key::channelInitialPageMapping, QVariantMap()},
        {DatabaseService::Key::channelIsReadMapping, QVariantMap()},
    };
}

QVariantMap requiredMap(const UserDefaults& store, const QString& key) {
    const auto map = store.dictionary(key);
    if (!map) {
        qFatal("DatabaseService - %s is missing from the defaults store", qUtf8Printable(key));
    }
    return *map;
}

bool isPageIndex(const QVariant& value) {
    bool integral = false;
    const qlonglong index = value.toLongLong(&integral);
    return value.typeId() != QMetaType::Bool && value.typeId() != QMetaType::QString && integral &&
           double(index) == value.toDouble() && index >= 0 &&
           index <= std::numeric_limits<int>::max();
}

bool isReadFlag(const QVariant& value) {
    return value.typeId() == QMetaType::Bool;
}

/// Drops the entries of a per-channel map that its readers could not use (a negative or
/// fractional page, a flag that is not a Boolean): a damaged file must not stop the process.
void dropUnusableEntries(UserDefaults& store, const QString& key, bool (*usable)(const QVariant&)) {
    auto map = store.dictionary(key);
    if (!map) {
        return;
    }
    QStringList dropped;
    for (auto it = map->begin(); it != map->end();) {
        if (usable(it.value())) {
            ++it;
        } else {
            dropped.append(it.key());
            it = map->erase(it);
        }
    }
    if (!dropped.isEmpty()) {
        logger().log(QStringLiteral("DatabaseService - dropped unusable entries of %1: %2")
                         .arg(key, dropped.join(QStringLiteral(", "))),
                     LogLevel::error);
        store.setValue(key, *map);
    }
}
}  // namespace

DatabaseService& DatabaseService::sharedInstance() {
    static DatabaseService instance(UserDefaults::standard());
    return instance;
}

DatabaseService::DatabaseService(UserDefaults& store)
    : m_userDefaults(store), m_defaults(registeredDefaults()) {
    m_userDefaults.registerDefaults(m_defaults);
    dropUnusableEntries(m_userDefaults, Key::channelInitialPageMapping, isPageIndex);
    dropUnusableEntries(m_userDefaults, Key::channelIsReadMapping, isReadFlag);
    m_userDefaults.removeObject(Key::environment);
    m_userDefaults.removeObject(Key::apiKey);
    m_userDefaults.removeObject(Key::accessToken);
}

void DatabaseService::setEnvironment(std::optional<Environment> environment) {
    if (environment) {
        m_userDefaults.setValue(Key::environment, rawValue(*environment));
    } else {
        m_userDefaults.removeObject(Key::environment);
    }
}

void DatabaseService::setUserId(const QString& userId) {
    // Observers reading the current user id in their handler still see the old value.
    if (m_userDefaults.string(Key::deviceId).value_or(QString()) != userId) {
        NotificationCenter::defaultCenter().post(Lumora::userIdDidChange);
    }
    m_userDefaults.setValue(Key::deviceId, userId);
}

void DatabaseService::resetDefaults() {
    const QVariantMap current = m_userDefaults.dictionaryRepresentation();
    for (auto it = current.begin(); it != current.end(); ++it) {
        if (m_defaults.contains(it.key())) {
            m_userDefaults.setValue(it.key(), m_defaults.value(it.key()));
        }
    }
    m_userDefaults.removeObject(Key::environment);
    m_userDefaults.removeObject(Key::apiKey);
    m_userDefaults.removeObject(Key::accessToken);
    NotificationCenter::defaultCenter().post(Lumora::userIdDidChange);
}

QVariantMap DatabaseService::channelInitialPageMapping() const {
    return requiredMap(m_userDefaults, Key::channelInitialPageMapping);
}

void DatabaseService::setChannelInitialPageMapping(const QVariantMap& mapping) {
    m_userDefaults.setValue(Key::channelInitialPageMapping, mapping);
}

QVariantMap DatabaseService::channelIsReadMapping() const {
    return requiredMap(m_userDefaults, Key::channelIsReadMapping);
}

void DatabaseService::setChannelIsReadMapping(const QVariantMap& mapping) {
    m_userDefaults.setValue(Key::channelIsReadMapping, mapping);
}

void DatabaseService::setChannelIsRead(const QString& channelId, bool isRead) {
    m_userDefaults.setDictionaryValue(Key::channelIsReadMapping, channelId, isRead);
}

}  // namespace LumoraSDK
