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

/// A fresh lumora-devserver with the SDK pointed at it and given its key, the SDK's store in a
/// temporary directory: the host's properties select Production, an on-disk SDK bundle beside
/// the test carries the server's address as its ApiBaseUrl.
class SdkOnDevServer {
public:
    explicit SdkOnDevServer(const QByteArray& logLevel = "1",
                            const DevServer::Options& options = {})
        : m_server(options) {
        using namespace LumoraSDK;
        qputenv("LUMORA_SDK_LOG_LEVEL", logLevel);  // before the logger's first use
        UserDefaults::setStandardLocation(m_dir.filePath("defaults.json"));
        const QString main = m_dir.filePath(QStringLiteral("app"));
        const QString bundle = main + "/Frameworks/LumoraSDK.framework/LumoraSDK.bundle";
        QDir().mkpath(bundle);
        QFile info(main + "/Info.json");
        info.open(QIODevice::WriteOnly);
        info.write("{}");
        info.close();
        QFile framework(bundle + "/Info-iOS.json");
        framework.open(QIODevice::WriteOnly);
        framework.write(QJsonDocument(QJsonObject{{"ApiBaseUrl", m_server.baseUrl()}}).toJson());
        framework.close();
        Bundle::setMainResourcePath(main);
        Lumora::sharedInstance().initialize(m_server.apiKey(), [] {});
    }
    DevServer& server() { return m_server; }

private:
    QTemporaryDir m_dir;
    DevServer m_server;
};

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
