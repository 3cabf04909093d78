#include "Bundle.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMutex>
#include <QMutexLocker>

namespace LumoraSDK {

namespace {
QMutex g_mainMutex;
QString g_mainOverride;
}  // namespace

std::optional<Bundle> Bundle::open(const QString& path) {
    if (path.isEmpty() || !QFileInfo(path).isDir()) {
        return std::nullopt;
    }
    return Bundle(path);
}

Bundle Bundle::sdk() {
    return Bundle(QStringLiteral(":/LumoraSDK"));
}

std::optional<QString> Bundle::mainResourcePath() {
    {
        QMutexLocker lock(&g_mainMutex);
        if (!g_mainOverride.isEmpty()) {
            return g_mainOverride;
        }
    }
    if (!QCoreApplication::instance()) {
        return std::nullopt;
    }
    return QCoreApplication::applicationDirPath();
}

void Bundle::setMainResourcePath(const QString& path) {
    QMutexLocker lock(&g_mainMutex);
    g_mainOverride = path;
}

std::optional<QString> Bundle::pathForResource(const QString& name, const QString& type) const {
    QString path = m_path + QLatin1Char('/') + name;
    if (!type.isEmpty()) {
        path += QLatin1Char('.') + type;
    }
    if (!QFileInfo(path).isFile()) {
        return std::nullopt;
    }
    return path;
}

std::optional<QVariantMap> Bundle::infoDictionary() const {
    const auto path = pathForResource(QStringLiteral("Info"), QStringLiteral("json"));
    return path ? readPropertyList(*path) : std::nullopt;
}

std::optional<QVariantMap> Bundle::readPropertyList(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject()) {
        return std::nullopt;
    }
    return document.object().toVariantMap();
}

}  // namespace LumoraSDK
