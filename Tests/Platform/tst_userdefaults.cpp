#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include "Platform/UserDefaults.h"
#include "TestSupport.h"

using namespace LumoraSDK;

namespace {
// Child mode: keep rewriting the store until killed.
int writeForever(const QString& path) {
    UserDefaults store(path);
    for (qint64 i = 0;; ++i) {
        QVariantMap pages;
        for (int c = 0; c < 200; ++c) {
            pages.insert(QStringLiteral("channel-%1").arg(c), int(i % 97));
        }
        store.setValue(QStringLiteral("Lumora.channelInitialPageMapping"), pages);
        store.setValue(QStringLiteral("counter"), i);
        if (i == 0) {
            fputs("writing\n", stdout);
            fflush(stdout);
        }
    }
}
}  // namespace

class UserDefaultsTest : public QObject {
    Q_OBJECT

private slots:
    void registeredDefaultsAnswerButAreNeverWritten() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("defaults.json"));
        {
            UserDefaults store(path);
            store.registerDefaults(
                {{QStringLiteral("flag"), false}, {QStringLiteral("map"), QVariantMap()}});
            QCOMPARE(store.boolValue(QStringLiteral("flag")), false);
            QCOMPARE(store.dictionary(QStringLiteral("map")),
                     std::optional<QVariantMap>(QVariantMap()));
            QVERIFY(!QFile::exists(path));
            store.setValue(QStringLiteral("name"), QStringLiteral("ada"));
            store.setValue(QStringLiteral("map"), QVariantMap{{QStringLiteral("c1"), 3}});
            store.setValue(QStringLiteral("flag"), true);
        }
        UserDefaults reopened(path);
        QCOMPARE(reopened.string(QStringLiteral("name")),
                 std::optional<QString>(QStringLiteral("ada")));
        QCOMPARE(reopened.dictionary(QStringLiteral("map"))->value(QStringLiteral("c1")).toInt(),
                 3);
        QCOMPARE(reopened.boolValue(QStringLiteral("flag")), true);
        // Only written keys reach the disk.
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QJsonDocument::fromJson(file.readAll()).object().keys(),
                 QStringList({"flag", "map", "name"}));
    }

    void typedReadsAnswerOnlyForTheirType() {
        QTemporaryDir dir;
        UserDefaults store(dir.filePath(QStringLiteral("d.json")));
        store.setValue(QStringLiteral("number"), 42);
        store.setValue(QStringLiteral("text"), QStringLiteral("42"));
        QVERIFY(!store.string(QStringLiteral("number")));
        QVERIFY(!store.dictionary(QStringLiteral("text")));
        QVERIFY(!store.string(QStringLiteral("missing")));
        QCOMPARE(store.boolValue(QStringLiteral("missing")), false);
    }

    void removeFallsBackToTheRegisteredDefault() {
        QTemporaryDir dir;
        UserDefaults store(dir.filePath(QStringLiteral("d.json")));
        store.registerDefaults({{QStringLiteral("id"), QString()}});
        store.setValue(QStringLiteral("id"), QStringLiteral("u1"));
        store.setValue(QStringLiteral("token"), QStringLiteral("t"));
        QCOMPARE(store.dictionaryRepresentation().value(QStringLiteral("id")).toString(),
                 QStringLiteral("u1"));
        store.removeObject(QStringLiteral("id"));
        store.removeObject(QStringLiteral("token"));
        QCOMPARE(store.string(QStringLiteral("id")), std::optional<QString>(QString()));
        QVERIFY(!store.object(QStringLiteral("token")).isValid());
        QCOMPARE(store.dictionaryRepresentation().keys(), QStringList({"id"}));
    }

    void unreadableFileIsMovedAsideAndStoreStartsOver_data() {
        QTest::addColumn<QByteArray>("contents");
        QTest::newRow("truncated mid-object")
            << QByteArray("{\"Lumora.deviceId\":\"u1\",\"Lumora.chan");
        QTest::newRow("garbage") << QByteArray("\x00\xff\x13garbage\x80", 12);
        QTest::newRow("empty file") << QByteArray();
        QTest::newRow("a list, not an object") << QByteArray("[\"Lumora.deviceId\"]");
    }

    void unreadableFileIsMovedAsideAndStoreStartsOver() {
        QFETCH(QByteArray, contents);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("defaults.json"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(contents);
        file.close();

        LumoraTest::LogCapture log;
        UserDefaults store(path);
        store.registerDefaults({{QStringLiteral("Lumora.deviceId"), QString()}});
        QCOMPARE(store.string(QStringLiteral("Lumora.deviceId")),
                 std::optional<QString>(QString()));

        const QStringList aside =
            QDir(dir.path()).entryList({QStringLiteral("defaults.json.corrupt-*")});
        QCOMPARE(aside.size(), 1);
        QFile kept(dir.filePath(aside.first()));
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), contents);  // kept byte for byte, never deleted
        QCOMPARE(log.count(QStringLiteral("UserDefaults - cannot read ")), 1);
        QCOMPARE(log.lines().first().first, QtWarningMsg);  // error level

        store.setValue(QStringLiteral("Lumora.deviceId"), QStringLiteral("fresh"));
        QCOMPARE(UserDefaults(path).string(QStringLiteral("Lumora.deviceId")),
                 std::optional<QString>(QStringLiteral("fresh")));
    }

    void processKilledMidWriteLeavesAReadableFile() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("defaults.json"));
        for (int round = 0; round < 3; ++round) {
            QProcess child;
            QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
            env.insert(QStringLiteral("LUMORA_TEST_WRITE_FOREVER"), path);
            child.setProcessEnvironment(env);
            child.start(QCoreApplication::applicationFilePath(), {});
            QVERIFY(child.waitForReadyRead(20000));
            // Let it rewrite the file many times, then kill it wherever it is.
            QTRY_VERIFY_WITH_TIMEOUT(
                UserDefaults(path).object(QStringLiteral("counter")).toLongLong() >
                    20 * (round + 1),
                20000);
            child.kill();
            child.waitForFinished();

            LumoraTest::LogCapture log;
            UserDefaults survivor(path);
            QCOMPARE(log.count(QStringLiteral("cannot read")), 0);
            QCOMPARE(
                survivor.dictionary(QStringLiteral("Lumora.channelInitialPageMapping"))->size(),
                200);
        }
    }

    void concurrentWritersNeverLoseTheFile() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("defaults.json"));
        UserDefaults store(path);
        QList<QThread*> threads;
        for (int t = 0; t < 4; ++t) {
            threads << QThread::create([&store, t] {
                for (int i = 0; i < 200; ++i) {
                    store.setValue(QStringLiteral("writer-%1").arg(t), i);
                    store.string(QStringLiteral("writer-0"));
                }
            });
            threads.last()->start();
        }
        for (QThread* thread : threads) {
            thread->wait();
            delete thread;
        }
        UserDefaults reopened(path);
        for (int t = 0; t < 4; ++t) {
            QCOMPARE(reopened.object(QStringLiteral("writer-%1").arg(t)).toInt(), 199);
        }
    }
};

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QString foreverPath = qEnvironmentVariable("LUMORA_TEST_WRITE_FOREVER");
    if (!foreverPath.isEmpty()) {
        return writeForever(foreverPath);
    }
    UserDefaultsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_userdefaults.moc"
