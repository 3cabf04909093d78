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
        store.setValue("Lumora.channelInitialPageMapping", pages);
        store.setValue("counter", i);
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
    // Registered defaults answer reads but never reach the disk; typed reads answer only for
    // their own type; a removed key falls back to its registered default, or is gone.
    void readsWritesAndDefaults() {
        QTemporaryDir dir;
        const QString path = dir.filePath("defaults.json");
        {
            UserDefaults store(path);
            store.registerDefaults({{"flag", false}, {"map", QVariantMap()}, {"id", QString()}});
            QCOMPARE(store.boolValue("flag"), false);
            QCOMPARE(store.dictionary("map"), std::optional<QVariantMap>(QVariantMap()));
            QVERIFY(!QFile::exists(path));
            store.setValue("name", "ada");
            store.setValue("map", QVariantMap{{"c1", 3}});
            store.setValue("flag", true);
            store.setValue("number", 42);
            store.setValue("id", "u1");
            QVERIFY(!store.string("number"));
            QVERIFY(!store.dictionary("name"));
            QVERIFY(!store.string("missing"));
            QCOMPARE(store.boolValue("missing"), false);
            QCOMPARE(store.dictionaryRepresentation().value("id").toString(), "u1");
            store.removeObject("id");
            store.removeObject("number");
            QCOMPARE(store.string("id"), std::optional<QString>(QString()));
            QVERIFY(!store.object("number").isValid());
            QCOMPARE(store.dictionaryRepresentation().keys(),
                     QStringList({"flag", "id", "map", "name"}));
        }
        UserDefaults reopened(path);
        QCOMPARE(reopened.string("name"), std::optional<QString>("ada"));
        QCOMPARE(reopened.dictionary("map")->value("c1").toInt(), 3);
        QCOMPARE(reopened.boolValue("flag"), true);
        // Only written keys that are still there reach the disk.
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QJsonDocument::fromJson(file.readAll()).object().keys(),
                 QStringList({"flag", "map", "name"}));
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
        const QString path = dir.filePath("defaults.json");
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(contents);
        file.close();

        LumoraTest::LogCapture log;
        UserDefaults store(path);
        store.registerDefaults({{"Lumora.deviceId", QString()}});
        QCOMPARE(store.string("Lumora.deviceId"), std::optional<QString>(QString()));

        const QStringList aside = QDir(dir.path()).entryList({"defaults.json.corrupt-*"});
        QCOMPARE(aside.size(), 1);
        QFile kept(dir.filePath(aside.first()));
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), contents);  // kept byte for byte, never deleted
        QCOMPARE(log.count("UserDefaults - cannot read "), 1);
        QCOMPARE(log.lines().first().first, QtWarningMsg);  // error level

        store.setValue("Lumora.deviceId", "fresh");
        QCOMPARE(UserDefaults(path).string("Lumora.deviceId"), std::optional<QString>("fresh"));
    }

    void processKilledMidWriteLeavesAReadableFile() {
        QTemporaryDir dir;
        const QString path = dir.filePath("defaults.json");
        for (int round = 0; round < 3; ++round) {
            QProcess child;
            QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
            env.insert("LUMORA_TEST_WRITE_FOREVER", path);
            child.setProcessEnvironment(env);
            child.start(QCoreApplication::applicationFilePath(), {});
            QVERIFY(child.waitForReadyRead(20000));
            // Let it rewrite the file many times, then kill it wherever it is.
            QTRY_VERIFY_WITH_TIMEOUT(
                UserDefaults(path).object("counter").toLongLong() > 20 * (round + 1), 20000);
            child.kill();
            child.waitForFinished();

            LumoraTest::LogCapture log;
            UserDefaults survivor(path);
            QCOMPARE(log.count("cannot read"), 0);
            QCOMPARE(survivor.dictionary("Lumora.channelInitialPageMapping")->size(), 200);
        }
    }

    void concurrentWritersNeverLoseTheFile() {
        QTemporaryDir dir;
        const QString path = dir.filePath("defaults.json");
        UserDefaults store(path);
        QList<QThread*> threads;
        for (int t = 0; t < 4; ++t) {
            threads << QThread::create([&store, t] {
                for (int i = 0; i < 200; ++i) {
                    store.setValue(QStringLiteral("writer-%1").arg(t), i);
                    store.string("writer-0");
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
