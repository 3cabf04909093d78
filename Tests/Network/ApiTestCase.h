#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QMutex>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <atomic>
#include <optional>

#include "DevServer.h"
#include "Lumora.h"
#include "Platform/Bundle.h"
#include "Platform/UserDefaults.h"
#include "Services/DatabaseService.h"

namespace LumoraTest {

/// Points the SDK at a fresh lumora-devserver: the host's properties select Production, an
/// on-disk SDK bundle beside the test carries the server's address as its ApiBaseUrl.
inline void pointSdkAt(const QString& baseUrl, QTemporaryDir& dir) {
    using namespace LumoraSDK;
    const QString main = dir.filePath(QStringLiteral("app"));
    const QString bundle =
        main + QStringLiteral("/Frameworks/LumoraSDK.framework/LumoraSDK.bundle");
    QDir().mkpath(bundle);
    QFile info(main + QStringLiteral("/Info.json"));
    info.open(QIODevice::WriteOnly);
    info.write("{}");
    info.close();
    QFile framework(bundle + QStringLiteral("/Info-iOS.json"));
    framework.open(QIODevice::WriteOnly);
    framework.write(QJsonDocument(QJsonObject{{QStringLiteral("ApiBaseUrl"), baseUrl}}).toJson());
    framework.close();
    Bundle::setMainResourcePath(main);
}

/// Collects the outcome of one asynchronous call; the test waits for it with QTRY_*.
template <typename T>
struct Outcome {
    std::atomic<int> calls{0};
    QMutex mutex;
    std::optional<T> value;
    bool onMainThread = false;

    void set(T v) {
        QMutexLocker lock(&mutex);
        value = std::move(v);
        onMainThread = QThread::currentThread() == QCoreApplication::instance()->thread();
        ++calls;
    }
    T get() {
        QMutexLocker lock(&mutex);
        return *value;
    }
};

}  // namespace LumoraTest
