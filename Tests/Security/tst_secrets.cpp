// A whole session (start-up, registration, channels, an activity) against lumora-devserver, run in
// a child process at each log level: no line carries the access token or the Authorization
// header's value, and the API key appears only in the start-up line, at the levels that show it.
#include <QGuiApplication>
#include <QTest>
#include <atomic>

#include "../Network/ApiTestCase.h"
#include "Models/UserInput.h"
#include "Services/AnalyticsService.h"
#include "Services/NetworkingService.h"
#include "TestSupport.h"

using namespace LumoraSDK;

namespace {
constexpr const char* kSessionVariable = "LUMORA_TEST_SECRETS_SESSION";
constexpr int kWaitMs = 20000;

/// The child: a session at the level in LUMORA_SDK_LOG_LEVEL; prints the key and the token.
int runSession() {
    LumoraTest::SdkOnDevServer sdk(qgetenv("LUMORA_SDK_LOG_LEVEL"));
    Lumora& lumora = Lumora::sharedInstance();
    std::atomic<int> steps{0};
    lumora.setUserDetails(UserInput{QStringLiteral("viewer-7")}, [&] { ++steps; }, {});
    if (!QTest::qWaitFor([&] { return steps == 1; }, kWaitMs)) {
        return 1;
    }
    lumora.requestGetChannels([&](const QList<Channel>&) { ++steps; }, {});
    AnalyticsService::sharedInstance().trackActivity(ActivityType::OpenedChannel, "welcome",
                                                     "welcome-1");
    // A request that passes the standard headers itself, so its argument line prints them.
    NetworkingService& network = NetworkingService::sharedInstance();
    network.performGetRequest(
        network.fullRequestPath(RequestType::channel, QString(), RequestAction::channelsForUser),
        std::nullopt, network.requestHeaders(), [&](auto&&...) { ++steps; });
    const bool done =
        QTest::qWaitFor([&] { return steps == 3 && sdk.server().events().size() == 1; }, kWaitMs);
    QTextStream(stdout) << sdk.server().apiKey() << '\n'
                        << DatabaseService::sharedInstance()
                               .userDefaults()
                               .string(DatabaseService::Key::accessToken)
                               .value_or(QString());
    return done ? 0 : 1;
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
        const QString key = printed.value(0);
        const QString token = printed.value(1);
        QVERIFY(key.size() >= 8 && token.size() >= 8);

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
