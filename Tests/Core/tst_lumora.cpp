#include <QDir>
#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include "Lumora.h"
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
        Lumora::sharedInstance().initialize(QStringLiteral("key-1"), [] {});
        database.setUserId(QStringLiteral("user-7"));
        database.userDefaults().setValue(DatabaseService::Key::accessToken,
                                         QStringLiteral("token-1"));
        database.setChannelInitialPageMapping({{QStringLiteral("c1"), 3}});
        database.setChannelIsReadMapping({{QStringLiteral("c1"), true}});
        return 0;
    }
    if (mode == QLatin1String("read")) {
        const auto text = [&](const QString& key) {
            return database.userDefaults().string(key).value_or(QStringLiteral("<absent>"));
        };
        QJsonObject seen{
            {QStringLiteral("apiKey"), text(DatabaseService::Key::apiKey)},
            {QStringLiteral("environment"), text(DatabaseService::Key::environment)},
            {QStringLiteral("token"), text(DatabaseService::Key::accessToken)},
            {QStringLiteral("userId"), Lumora::currentUserId().value_or(QString())},
            {QStringLiteral("pages"),
             QJsonObject::fromVariantMap(database.channelInitialPageMapping())},
            {QStringLiteral("read"), QJsonObject::fromVariantMap(database.channelIsReadMapping())},
        };
        fputs(QJsonDocument(seen).toJson(QJsonDocument::Compact).constData(), stdout);
        return 0;
    }
    if (mode == QLatin1String("initialize")) {
        Lumora::sharedInstance().initialize(QStringLiteral("k"), [] {});
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
        UserDefaults::setStandardLocation(m_dir.filePath(QStringLiteral("store/defaults.json")));
        m_main = m_dir.filePath(QStringLiteral("app"));
        writeJson(m_main + QStringLiteral("/Info.json"), {});
        Bundle::setMainResourcePath(m_main);
    }

    void environmentFromTheHostProperties_data() {
        QTest::addColumn<QJsonValue>("value");
        QTest::addColumn<QString>("environment");
        QTest::addColumn<bool>("foundLine");
        QTest::newRow("Dev") << QJsonValue(QStringLiteral("Dev")) << "Dev" << true;
        QTest::newRow("Staging") << QJsonValue(QStringLiteral("Staging")) << "Staging" << true;
        QTest::newRow("Production")
            << QJsonValue(QStringLiteral("Production")) << "Production" << true;
        QTest::newRow("lower-case staging")
            << QJsonValue(QStringLiteral("staging")) << "Production" << false;
        QTest::newRow("unknown word") << QJsonValue(QStringLiteral("QA")) << "Production" << false;
        QTest::newRow("not a string") << QJsonValue(1) << "Production" << false;
        QTest::newRow("absent") << QJsonValue(QJsonValue::Undefined) << "Production" << false;
    }

    void environmentFromTheHostProperties() {
        QFETCH(QJsonValue, value);
        QFETCH(QString, environment);
        QFETCH(bool, foundLine);
        QJsonObject info;
        if (!value.isUndefined()) {
            info.insert(QStringLiteral("LumoraEnvironment"), value);
        }
        writeJson(m_main + QStringLiteral("/Info.json"), info);
        qputenv("LUMORA_SDK_LOG_LEVEL", "1");
        LumoraTest::LogCapture log;
        Lumora::sharedInstance().initialize(QStringLiteral("key"), [] {});
        QCOMPARE(Lumora::currentEnvironment().has_value(), true);
        QCOMPARE(rawValue(*Lumora::currentEnvironment()), environment);
        QCOMPARE(store().string(DatabaseService::Key::environment),
                 std::optional<QString>(environment));
        QCOMPARE(log.contains(
                     QStringLiteral("LumoraSDK.Lumora - found environment in plist, setting to ") +
                     environment),
                 foundLine);
        writeJson(m_main + QStringLiteral("/Info.json"), {});
    }

    void baseUrlPrefixesTheHostOutsideProduction_data() {
        QTest::addColumn<QString>("configured");
        QTest::addColumn<QString>("environment");
        QTest::addColumn<QString>("expected");
        const QString api = QStringLiteral("https://api.example.test/");
        QTest::newRow("Dev") << api << "Dev"
                             << "https://dev.api.example.test/";
        QTest::newRow("Staging") << api << "Staging"
                                 << "https://staging.api.example.test/";
        QTest::newRow("Production") << api << "Production" << api;
        QTest::newRow("path and query kept") << "https://api.example.test/v2?x=1"
                                             << "Dev"
                                             << "https://dev.api.example.test/v2?x=1";
        QTest::newRow("port kept") << "http://127.0.0.1:8787"
                                   << "Production"
                                   << "http://127.0.0.1:8787";
        QTest::newRow("malformed") << "http://exa mple.test"
                                   << "Production" << QString();
    }

    void baseUrlPrefixesTheHostOutsideProduction() {
        QFETCH(QString, configured);
        QFETCH(QString, environment);
        QFETCH(QString, expected);
        // An on-disk SDK bundle beside the application overrides the compiled-in properties.
        const QString onDisk =
            m_main + QStringLiteral("/Frameworks/LumoraSDK.framework/LumoraSDK.bundle");
        writeJson(onDisk + QStringLiteral("/Info-iOS.json"),
                  {{QStringLiteral("ApiBaseUrl"), configured}});
        writeJson(m_main + QStringLiteral("/Info.json"),
                  {{QStringLiteral("LumoraEnvironment"), environment}});
        Lumora::sharedInstance().initialize(QStringLiteral("key"), [] {});
        const auto url = Lumora::sharedInstance().baseApiUrl();
        QCOMPARE(url ? url->toString() : QString(), expected);
        QDir(m_main + QStringLiteral("/Frameworks")).removeRecursively();
        writeJson(m_main + QStringLiteral("/Info.json"), {});
    }

    void packagedPropertiesAndFonts() {
        Lumora::sharedInstance().initialize(QStringLiteral("key"), [] {});
        QCOMPARE(Lumora::sharedInstance().baseApiUrl()->toString(),
                 QStringLiteral("http://127.0.0.1:8787"));
        QCOMPARE(Lumora::sharedInstance().bundleName(),
                 std::optional<QString>(QStringLiteral("LumoraSDK")));
        QCOMPARE(Lumora::version(), std::optional<QString>(QStringLiteral(LUMORA_PROJECT_VERSION)));
        QVERIFY(Lumora::resourceBundle().has_value());
        QVERIFY(QFontDatabase::families().contains(QStringLiteral("Inter")));
    }

    void initializePostsOnceAfterStoringTheKeyThenCompletes() {
        QStringList order;
        int observer = 0;
        NotificationCenter::defaultCenter().addObserver(
            &observer, Lumora::sdkDidInit, [&](const Notification&) {
                order << QStringLiteral("posted with key ") +
                             Lumora::currentApiKey().value_or(QStringLiteral("none"));
            });
        Lumora::sharedInstance().initialize(QStringLiteral("secret-1"),
                                            [&] { order << QStringLiteral("completed"); });
        NotificationCenter::defaultCenter().removeObserver(&observer);
        QCOMPARE(order, QStringList({"posted with key secret-1", "completed"}));
    }

    void userIdChangeIsPostedBeforeTheWriteAndOnlyWhenItDiffers() {
        DatabaseService& database = DatabaseService::sharedInstance();
        database.resetDefaults();
        QStringList seenInHandler;
        int observer = 0;
        NotificationCenter::defaultCenter().addObserver(
            &observer, Lumora::userIdDidChange,
            [&](const Notification&) { seenInHandler << *Lumora::currentUserId(); });
        database.setUserId(QString());  // a missing id reads as empty: nothing to post
        database.setUserId(QStringLiteral("a"));
        database.setUserId(QStringLiteral("a"));
        database.setUserId(QStringLiteral("b"));
        NotificationCenter::defaultCenter().removeObserver(&observer);
        QCOMPARE(seenInHandler, QStringList({"", "a"}));  // the old value, still stored
        QCOMPARE(Lumora::currentUserId(), std::optional<QString>(QStringLiteral("b")));
    }

    void logoutRestoresDefaultsAndPostsOnce() {
        DatabaseService& database = DatabaseService::sharedInstance();
        Lumora::sharedInstance().initialize(QStringLiteral("k"), [] {});
        database.setUserId(QStringLiteral("someone"));
        store().setValue(DatabaseService::Key::accessToken, QStringLiteral("t"));
        store().setValue(DatabaseService::Key::hasShownInstructions, true);
        database.setChannelIsReadMapping({{QStringLiteral("c1"), true}});
        int posts = 0;
        int observer = 0;
        NotificationCenter::defaultCenter().addObserver(&observer, Lumora::userIdDidChange,
                                                        [&](const Notification&) { ++posts; });
        bool completed = false;
        Lumora::sharedInstance().logout([&] { completed = true; });
        NotificationCenter::defaultCenter().removeObserver(&observer);
        QVERIFY(completed);
        QCOMPARE(posts, 1);
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
        const auto writer =
            LumoraTest::runSelf({}, env + QStringList{QStringLiteral("LUMORA_TEST_MODE=write")});
        QCOMPARE(writer.exitCode, 0);
        const auto reader =
            LumoraTest::runSelf({}, env + QStringList{QStringLiteral("LUMORA_TEST_MODE=read")});
        QCOMPARE(reader.exitCode, 0);
        const QJsonObject seen = QJsonDocument::fromJson(reader.standardOutput.toUtf8()).object();
        QCOMPARE(seen.value(QStringLiteral("apiKey")).toString(), QStringLiteral("<absent>"));
        QCOMPARE(seen.value(QStringLiteral("environment")).toString(), QStringLiteral("<absent>"));
        QCOMPARE(seen.value(QStringLiteral("token")).toString(), QStringLiteral("<absent>"));
        QCOMPARE(seen.value(QStringLiteral("userId")).toString(), QStringLiteral("user-7"));
        QCOMPARE(seen.value(QStringLiteral("pages")).toObject().value(QStringLiteral("c1")).toInt(),
                 3);
        QCOMPARE(seen.value(QStringLiteral("read")).toObject().value(QStringLiteral("c1")).toBool(),
                 true);
    }

    void storeOfASessionIsOwnerOnly() {
        // The store and the directory it creates, as a whole session in its own process leaves
        // them: the token and user id inside are nobody else's to read.
        const QString directory = m_dir.filePath(QStringLiteral("private/app"));
        const QString storePath = directory + QStringLiteral("/defaults.json");
        const auto writer =
            LumoraTest::runSelf({}, {QStringLiteral("LUMORA_TEST_STORE=") + storePath,
                                     QStringLiteral("LUMORA_TEST_MAIN=") + m_main,
                                     QStringLiteral("LUMORA_TEST_MODE=write")});
        QCOMPARE(writer.exitCode, 0);
        const auto mode = [](const QString& path) {
            return QFile::permissions(path) & QFileDevice::Permissions(0x0777);
        };
        QCOMPARE(mode(storePath), QFileDevice::ReadUser | QFileDevice::WriteUser);
        QCOMPARE(mode(directory),
                 QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser);
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
            writeJson(app.filePath(QStringLiteral("Info.json")), {});
            QDir().mkpath(
                app.filePath(QStringLiteral("Frameworks/LumoraSDK.framework/LumoraSDK.bundle")));
        }
        const auto child = LumoraTest::runSelf(
            {}, {QStringLiteral("LUMORA_TEST_MODE=initialize"),
                 QStringLiteral("LUMORA_TEST_MAIN=") + app.path(),
                 QStringLiteral("LUMORA_TEST_STORE=") + app.filePath(QStringLiteral("d.json"))});
        QVERIFY2(child.crashed || child.exitCode != 0, qPrintable(child.standardError));
        QVERIFY2(child.standardError.contains(message), qPrintable(child.standardError));
    }

    void standardPortraitScreen_data() {
        QTest::addColumn<QString>("geometry");
        QTest::addColumn<bool>("standard");
        QTest::newRow("1080 x 1920") << "1080x1920" << true;
        QTest::newRow("1125 x 2436") << "1125x2436" << false;
    }

    void standardPortraitScreen() {
        QFETCH(QString, geometry);
        QFETCH(bool, standard);
        // The offscreen platform takes its screen size from a configuration file.
        const QStringList size = geometry.split(QLatin1Char('x'));
        const QString config = m_dir.filePath(geometry + QStringLiteral(".json"));
        writeJson(config, {{QStringLiteral("screens"),
                            QJsonArray{QJsonObject{{QStringLiteral("name"), QStringLiteral("s")},
                                                   {QStringLiteral("x"), 0},
                                                   {QStringLiteral("y"), 0},
                                                   {QStringLiteral("width"), size[0].toInt()},
                                                   {QStringLiteral("height"), size[1].toInt()},
                                                   {QStringLiteral("logicalDpi"), 96},
                                                   {QStringLiteral("logicalBaseDpi"), 96},
                                                   {QStringLiteral("dpr"), 1}}}}});
        const auto child = LumoraTest::runSelf(
            {}, {QStringLiteral("LUMORA_TEST_MODE=screen"),
                 QStringLiteral("QT_QPA_PLATFORM=offscreen:configfile=") + config});
        QCOMPARE(child.standardOutput.trimmed(),
                 standard ? QStringLiteral("standard") : QStringLiteral("other"));
    }

private:
    QTemporaryDir m_dir;
    QString m_main;
};

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    const QString mode = qEnvironmentVariable("LUMORA_TEST_MODE");
    if (mode == QLatin1String("screen")) {
        fputs(Lumora::isScreenStandardPortrait() ? "standard\n" : "other\n", stdout);
        return 0;
    }
    if (!mode.isEmpty()) {
        return runChild(mode);
    }
    LumoraTest_ test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_lumora.moc"
