#include <QDir>
#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include "Lumora.h"
#include "Platform/Bundle.h"
#include "Platform/NotificationCenter.h"
#include "Platform/UserDefaults.h"
#include "Services/DatabaseService.h"
#include "TestSupport.h"

using namespace LumoraSDK;

namespace {
void writeJson(const QString& path, const QJsonObject& object) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(QJsonDocument(object).toJson());
    }
}

UserDefaults& store() {
    return DatabaseService::sharedInstance().userDefaults();
}

// Child modes, selected by LUMORA_TEST_MODE, run against the store in LUMORA_TEST_STORE.
int runChild(const QString& mode) {
    UserDefaults::setStandardLocation(qEnvironmentVariable("LUMORA_TEST_STORE"));
    Bundle::setMainResourcePath(
        qEnvironmentVariable("LUMORA_TEST_MAIN", QCoreApplication::applicationDirPath()));
    DatabaseService& database = DatabaseService::sharedInstance();
    if (mode == QLatin1String("write")) {
        Lumora::sharedInstance().initialize("key-1", [] {});
        database.setUserId("user-7");
        database.userDefaults().setValue(DatabaseService::Key::accessToken, "token-1");
        database.setChannelInitialPageMapping({{"c1", 3}});
        database.setChannelIsReadMapping({{"c1", true}});
        return 0;
    }
    if (mode == QLatin1String("read")) {
        const auto text = [&](const QString& key) {
            return database.userDefaults().string(key).value_or(QStringLiteral("<absent>"));
        };
        QJsonObject seen{
            {"apiKey", text(DatabaseService::Key::apiKey)},
            {"environment", text(DatabaseService::Key::environment)},
            {"token", text(DatabaseService::Key::accessToken)},
            {"userId", Lumora::currentUserId().value_or(QString())},
            {"pages", QJsonObject::fromVariantMap(database.channelInitialPageMapping())},
            {"read", QJsonObject::fromVariantMap(database.channelIsReadMapping())},
        };
        fputs(QJsonDocument(seen).toJson(QJsonDocument::Compact).constData(), stdout);
        return 0;
    }
    if (mode == QLatin1String("initialize")) {
        Lumora::sharedInstance().initialize("k", [] {});
        return 0;
    }
    return 2;
}
}  // namespace

class LumoraTest_ : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QVERIFY(m_dir.isValid());
        UserDefaults::setStandardLocation(m_dir.filePath("store/defaults.json"));
        m_main = m_dir.filePath("app");
        writeJson(m_main + "/Info.json", {});
        Bundle::setMainResourcePath(m_main);
    }

    // The environment comes from the host's properties, Production unless they name Dev or
    // Staging exactly; outside Production the API's host gets the environment as a prefix. An
    // on-disk SDK bundle beside the application overrides the compiled-in address.
    void environmentAndBaseUrl_data() {
        QTest::addColumn<QJsonValue>("value");
        QTest::addColumn<QString>("configured");
        QTest::addColumn<QString>("environment");
        QTest::addColumn<QString>("baseUrl");
        const auto row = [](const char* name, const QJsonValue& value, const char* configured,
                            const char* environment, const char* baseUrl) {
            QTest::newRow(name) << value << QString(configured) << QString(environment)
                                << QString(baseUrl);
        };
        const char* api = "https://api.example.test/";
        row("Staging", "Staging", api, "Staging", "https://staging.api.example.test/");
        row("Production", "Production", api, "Production", api);
        row("lower-case staging", "staging", api, "Production", api);
        row("absent", QJsonValue::Undefined, api, "Production", api);
        row("path and query kept", "Dev", "https://api.example.test/v2?x=1", "Dev",
            "https://dev.api.example.test/v2?x=1");
        row("malformed address", "Production", "http://exa mple.test", "Production", "");
    }

    void environmentAndBaseUrl() {
        QFETCH(QJsonValue, value);
        QFETCH(QString, configured);
        QFETCH(QString, environment);
        QJsonObject info;
        if (!value.isUndefined()) {
            info.insert("LumoraEnvironment", value);
        }
        writeJson(m_main + "/Info.json", info);
        writeJson(m_main + QStringLiteral("/Frameworks/LumoraSDK.framework/LumoraSDK.bundle/"
                                          "Info-iOS.json"),
                  {{"ApiBaseUrl", configured}});
        Lumora::sharedInstance().initialize("key", [] {});
        QCOMPARE(rawValue(Lumora::currentEnvironment().value()), environment);
        const auto url = Lumora::sharedInstance().baseApiUrl();
        QTEST(url ? url->toString() : QString(), "baseUrl");
        QDir(m_main + "/Frameworks").removeRecursively();
        writeJson(m_main + "/Info.json", {});
    }

    void packagedPropertiesAndFonts() {
        Lumora::sharedInstance().initialize("key", [] {});
        QCOMPARE(Lumora::sharedInstance().baseApiUrl()->toString(), "http://127.0.0.1:8787");
        QCOMPARE(Lumora::version(), std::optional<QString>(QStringLiteral(LUMORA_PROJECT_VERSION)));
        QVERIFY(Lumora::resourceBundle().has_value());
        QVERIFY(QFontDatabase::families().contains("Inter"));
    }

    void initializePostsOnceAfterStoringTheKeyThenCompletes() {
        QStringList order;
        int observer = 0;
        NotificationCenter::defaultCenter().addObserver(
            &observer, Lumora::sdkDidInit, [&](const Notification&) {
                order << QStringLiteral("posted with key ") +
                             Lumora::currentApiKey().value_or("none");
            });
        Lumora::sharedInstance().initialize("secret-1", [&] { order << "completed"; });
        NotificationCenter::defaultCenter().removeObserver(&observer);
        QCOMPARE(order, QStringList({"posted with key secret-1", "completed"}));
    }

    // A user id change is posted before the write and only when the id differs; logging out
    // restores the defaults and posts the change once.
    void userIdChangesAndLogout() {
        DatabaseService& database = DatabaseService::sharedInstance();
        database.resetDefaults();
        Lumora::sharedInstance().initialize("k", [] {});
        QStringList seenInHandler;
        int observer = 0;
        NotificationCenter::defaultCenter().addObserver(
            &observer, Lumora::userIdDidChange,
            [&](const Notification&) { seenInHandler << *Lumora::currentUserId(); });
        database.setUserId(QString());  // a missing id reads as empty: nothing to post
        database.setUserId("a");
        database.setUserId("a");
        database.setUserId("b");
        QCOMPARE(seenInHandler, QStringList({"", "a"}));  // the old value, still stored
        QCOMPARE(Lumora::currentUserId(), std::optional<QString>("b"));

        store().setValue(DatabaseService::Key::accessToken, "t");
        store().setValue(DatabaseService::Key::hasShownInstructions, true);
        database.setChannelIsReadMapping({{"c1", true}});
        bool completed = false;
        Lumora::sharedInstance().logout([&] { completed = true; });
        NotificationCenter::defaultCenter().removeObserver(&observer);
        QVERIFY(completed);
        QCOMPARE(seenInHandler.size(), 3);  // one more post
        QCOMPARE(database.channelIsReadMapping(), QVariantMap());
        QCOMPARE(Lumora::currentUserId(), std::optional<QString>(QString()));
        QCOMPARE(store().boolValue(DatabaseService::Key::hasShownInstructions), false);
        QVERIFY(!Lumora::currentApiKey());
        QVERIFY(!Lumora::currentEnvironment());
        QVERIFY(!store().string(DatabaseService::Key::accessToken));
    }

    void credentialsDoNotSurviveTheProcessButTheUserAndMapsDo() {
        const QString storePath = m_dir.filePath(QStringLiteral("cross/defaults.json"));
        const QStringList env{QStringLiteral("LUMORA_TEST_STORE=") + storePath,
                              QStringLiteral("LUMORA_TEST_MAIN=") + m_main};
        const auto writer = LumoraTest::runSelf({}, env + QStringList{"LUMORA_TEST_MODE=write"});
        QCOMPARE(writer.exitCode, 0);
        const auto reader = LumoraTest::runSelf({}, env + QStringList{"LUMORA_TEST_MODE=read"});
        QCOMPARE(reader.exitCode, 0);
        const QJsonObject seen = QJsonDocument::fromJson(reader.standardOutput.toUtf8()).object();
        QCOMPARE(seen.value("apiKey").toString(), "<absent>");
        QCOMPARE(seen.value("environment").toString(), "<absent>");
        QCOMPARE(seen.value("token").toString(), "<absent>");
        QCOMPARE(seen.value("userId").toString(), "user-7");
        QCOMPARE(seen.value("pages").toObject().value("c1").toInt(), 3);
        QCOMPARE(seen.value("read").toObject().value("c1").toBool(), true);
    }

    void missingPackagedResourcesStopTheProcess_data() {
        QTest::addColumn<QString>("layout");
        QTest::addColumn<QString>("message");
        QTest::newRow("no Info.json beside the application")
            << "no-app-info"
            << "the application's properties are missing";
        QTest::newRow("SDK bundle without Info-iOS.json") << "bundle-without-info"
                                                          << "has no Info-iOS.json";
    }

    void missingPackagedResourcesStopTheProcess() {
        QFETCH(QString, layout);
        QFETCH(QString, message);
        QTemporaryDir app;
        if (layout == QLatin1String("bundle-without-info")) {
            writeJson(app.filePath("Info.json"), {});
            QDir().mkpath(app.filePath("Frameworks/LumoraSDK.framework/LumoraSDK.bundle"));
        }
        const auto child = LumoraTest::runSelf(
            {}, {"LUMORA_TEST_MODE=initialize", QStringLiteral("LUMORA_TEST_MAIN=") + app.path(),
                 QStringLiteral("LUMORA_TEST_STORE=") + app.filePath("d.json")});
        QVERIFY2(child.crashed || child.exitCode != 0, qPrintable(child.standardError));
        QVERIFY2(child.standardError.contains(message), qPrintable(child.standardError));
    }

private:
    QTemporaryDir m_dir;
    QString m_main;
};

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    const QString mode = qEnvironmentVariable("LUMORA_TEST_MODE");
    if (!mode.isEmpty()) {
        return runChild(mode);
    }
    LumoraTest_ test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_lumora.moc"
