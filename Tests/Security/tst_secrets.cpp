// A whole session (start-up, registration, channels, an activity) against lumora-devserver, run in
// a child process at each log level: no line carries the access token or the Authorization
// header's value, and the API key appears only in the start-up line, at the levels that show it.
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>
#include <atomic>

#include "DevServer.h"
#include "Lumora.h"
#include "Models/UserInput.h"
#include "Platform/Bundle.h"
#include "Platform/UserDefaults.h"
#include "Services/AnalyticsService.h"
#include "Services/DatabaseService.h"
#include "Services/NetworkingService.h"
#include "TestSupport.h"

using namespace LumoraSDK;

namespace {
constexpr const char* kSessionVariable = "LUMORA_TEST_SECRETS_SESSION";
constexpr int kWaitMs = 20000;

/// The child: a session with a key no other text holds; prints the key and the token it got.
int runSession() {
    QTemporaryDir dir;
    LumoraTest::DevServer::Options options;
    options.apiKey = QStringLiteral("k3y-") + QFileInfo(dir.path()).fileName();
    LumoraTest::DevServer server(options);
    UserDefaults::setStandardLocation(dir.filePath("defaults.json"));
    const QString main = dir.filePath("app");
    const QString bundle = main + "/Frameworks/LumoraSDK.framework/LumoraSDK.bundle";
    QDir().mkpath(bundle);
    QFile info(main + "/Info.json");
    QFile framework(bundle + "/Info-iOS.json");
    if (!server.isRunning() || !info.open(QIODevice::WriteOnly) || info.write("{}") < 0 ||
        !framework.open(QIODevice::WriteOnly) ||
        framework.write(QJsonDocument(QJsonObject{{"ApiBaseUrl", server.baseUrl()}}).toJson()) <
            0) {
        return 2;
    }
    info.close();
    framework.close();
    Bundle::setMainResourcePath(main);

    Lumora& lumora = Lumora::sharedInstance();
    lumora.initialize(options.apiKey, [] {});
    std::atomic<int> steps{0};
    lumora.setUserDetails(
        UserInput{QStringLiteral("viewer-7")}, [&] { ++steps; }, [](const RequestError&) {});
    if (!QTest::qWaitFor([&] { return steps == 1; }, kWaitMs)) {
        return 3;
    }
    lumora.requestGetChannels([&](const QList<Channel>&) { ++steps; }, [](const RequestError&) {});
    AnalyticsService::sharedInstance().trackActivity(
        ActivityType::OpenedChannel, QStringLiteral("welcome"), QStringLiteral("welcome-1"));
    // A request that passes the standard headers itself, so its argument line prints them.
    NetworkingService& network = NetworkingService::sharedInstance();
    network.performGetRequest(
        network.fullRequestPath(RequestType::channel, QString(), RequestAction::channelsForUser),
        std::nullopt, network.requestHeaders(), [&](auto&&...) { ++steps; });
    if (!QTest::qWaitFor([&] { return steps == 3 && server.events().size() == 1; }, kWaitMs)) {
        return 4;
    }
    const auto token =
        DatabaseService::sharedInstance().userDefaults().string(DatabaseService::Key::accessToken);
    QTextStream(stdout) << "key=" << options.apiKey << "\ntoken=" << token.value_or(QString())
                        << "\n";
    return 0;
}
}  // namespace

class SecretsTest : public QObject {
    Q_OBJECT

private slots:
    void noSecretInTheLog_data() {
        QTest::addColumn<int>("level");
        for (int level = 0; level <= 3; ++level) {
            QTest::addRow("level %d", level) << level;
        }
    }
    void noSecretInTheLog() {
        QFETCH(int, level);
        const auto child =
            LumoraTest::runSelf({}, {QString(kSessionVariable) + "=1", "QT_FORCE_STDERR_LOGGING=1",
                                     "LUMORA_SDK_LOG_LEVEL=" + QString::number(level)});
        QVERIFY2(!child.crashed && child.exitCode == 0,
                 qPrintable(child.standardError.right(2000)));
        const QStringList printed = child.standardOutput.split('\n');
        const QString key = printed.value(0).mid(4);
        const QString token = printed.value(1).mid(6);
        QVERIFY(key.size() > 4 && token.size() >= 8);

        int keyLines = 0;
        for (const QString& line : child.standardError.split('\n')) {
            QVERIFY2(!line.contains(token) && !line.contains("Bearer"), qPrintable(line));
            if (line.contains(key)) {
                QVERIFY2(line.contains("LumoraSDK.Lumora - initialize with key " + key +
                                       ", environment Production"),
                         qPrintable(line));
                ++keyLines;
            }
        }
        // The start-up line is a debug line; the transport's argument lines, with the header
        // names but not their values, are info lines.
        QCOMPARE(keyLines, level <= 1 ? 1 : 0);
        QCOMPARE(child.standardError.contains("\"x-lumora-api-key\": \"<redacted>\"") &&
                     child.standardError.contains("\"Authorization\": \"<redacted>\""),
                 level == 0);
    }
};

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    if (qEnvironmentVariableIsSet(kSessionVariable)) {
        return runSession();
    }
    SecretsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_secrets.moc"
