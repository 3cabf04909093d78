#include <sys/wait.h>
#include <unistd.h>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <algorithm>
#include <csignal>

#include "Extensions/ChannelListExtensions.h"
#include "Platform/UserDefaults.h"
#include "Services/DatabaseService.h"
#include "TestSupport.h"

using namespace LumoraSDK;

namespace {
constexpr int kStateEntries = 20;

// In a forked child: keep changing the store until killed, writing with no coalescing so that
// the writer is always somewhere in a write. Every state the store ever holds has one number in
// all of its entries. Reports each change with one byte on `progress`: 'w' once the first file
// write of this process has landed, 'x' before.
[[noreturn]] void writeUntilKilled(const QString& path, int round, int progress) {
    UserDefaults store(path, 0);
    store.setValue(QStringLiteral("round"), round);
    for (qint64 i = 0;; ++i) {
        QVariantMap state;
        for (int c = 0; c < kStateEntries; ++c) {
            state.insert(QStringLiteral("channel-%1").arg(c), i);
        }
        store.setValue(QStringLiteral("state"), state);
        if (write(progress, store.fileWriteCount() > 0 ? "w" : "x", 1) != 1) {
            _exit(1);
        }
    }
}

constexpr int kOwnWrites = 30;

// Child mode: write one key of its own many times, each time to disk.
int writeOwnKey(const QString& path, const QString& key) {
    UserDefaults store(path);
    for (int i = 1; i <= kOwnWrites; ++i) {
        store.setValue(key, i);
        store.flush();
    }
    return 0;
}

QFileDevice::Permissions permissionBits(const QString& path) {
    return QFile::permissions(path) & QFileDevice::Permissions(0x0777);
}

const QFileDevice::Permissions kOwnerReadWrite = QFileDevice::ReadUser | QFileDevice::WriteUser;

void writeFile(const QString& path, const QByteArray& contents) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(contents);
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

    void dictionaryEntriesChangeInPlaceButNeverUnderAReader() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("d.json"));
        UserDefaults store(path);
        store.setValue(QStringLiteral("map"), QStringLiteral("not a map"));
        store.setDictionaryValue(QStringLiteral("map"), QStringLiteral("a"), true);
        const QVariantMap before = *store.dictionary(QStringLiteral("map"));
        store.setDictionaryValue(QStringLiteral("map"), QStringLiteral("b"), false);
        QCOMPARE(before, QVariantMap({{"a", true}}));
        store.flush();
        QCOMPARE(UserDefaults(path).dictionary(QStringLiteral("map")),
                 std::optional<QVariantMap>(QVariantMap({{"a", true}, {"b", false}})));
    }

    void removeFallsBackToTheRegisteredDefault() {
        QTemporaryDir dir;
        UserDefaults store(dir.filePath(QStringLiteral("d.json")));
        store.registerDefaults({{QStringLiteral("id"), QString()}});
        store.setValue(QStringLiteral("id"), QStringLiteral("u1"));
        store.setValue(QStringLiteral("token"), QStringLiteral("t"));
        store.removeObject(QStringLiteral("id"));
        store.removeObject(QStringLiteral("token"));
        QCOMPARE(store.string(QStringLiteral("id")), std::optional<QString>(QString()));
        QVERIFY(!store.object(QStringLiteral("token")).isValid());
        QCOMPARE(store.dictionaryRepresentation().keys(), QStringList({"id"}));
    }

    void unreadableFileIsMovedAsideAndStoreStartsOver_data() {
        QTest::addColumn<QByteArray>("contents");
        QTest::newRow("garbage") << QByteArray("\x00\xff\x13garbage\x80", 12);
        QTest::newRow("empty file") << QByteArray();
        QTest::newRow("a list, not an object") << QByteArray("[\"Lumora.deviceId\"]");
    }

    void unreadableFileIsMovedAsideAndStoreStartsOver() {
        QFETCH(QByteArray, contents);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("defaults.json"));
        writeFile(path, contents);

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
        store.flush();
        QCOMPARE(UserDefaults(path).string(QStringLiteral("Lumora.deviceId")),
                 std::optional<QString>(QStringLiteral("fresh")));
    }

    void killedMidWriteLeavesARealState() {
        // In memory when the system has it: a killed process, not a lost disk, is the fault
        // here, and 200 rounds of disk syncs would make the test slow.
        const bool shm = QFileInfo(QStringLiteral("/dev/shm")).isWritable();
        QTemporaryDir dir((shm ? QStringLiteral("/dev/shm") : QDir::tempPath()) +
                          QStringLiteral("/lumora-test-XXXXXX"));
        QVERIFY(dir.isValid());
        const QString path = dir.filePath(QStringLiteral("defaults.json"));
        const quint32 seed = QRandomGenerator::global()->generate();
        QRandomGenerator random(seed);
        for (int round = 0; round < 200; ++round) {
            int progress[2];
            QCOMPARE(pipe(progress), 0);
            // Forked rather than started: a new process per kill would make this test slow.
            const pid_t child = fork();
            QVERIFY(child >= 0);
            if (child == 0) {
                close(progress[0]);
                writeUntilKilled(path, round, progress[1]);
            }
            close(progress[1]);
            // A random number of changes after this child's first write, wherever the writer is
            // in its next one.
            const qint64 changes = random.bounded(1, 200);
            qint64 seen = 0;
            char buffer[512];
            while (seen < changes) {
                const ssize_t got = read(progress[0], buffer, sizeof buffer);
                QVERIFY2(got > 0, qPrintable(QStringLiteral("seed %1").arg(seed)));
                seen += std::count(buffer, buffer + got, 'w');
            }
            kill(child, SIGKILL);
            QCOMPARE(waitpid(child, nullptr, 0), child);
            close(progress[0]);

            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadOnly));
            QJsonParseError error{};
            const QJsonObject stored = QJsonDocument::fromJson(file.readAll(), &error).object();
            QVERIFY2(error.error == QJsonParseError::NoError,
                     qPrintable(QStringLiteral("round %1, seed %2: %3")
                                    .arg(round)
                                    .arg(seed)
                                    .arg(error.errorString())));
            // A write of this round landed, and no later one can have taken it back.
            QCOMPARE(stored.value(QStringLiteral("round")).toInt(), round);
            // No state yet is the store before the child's first change.
            const QJsonObject state = stored.value(QStringLiteral("state")).toObject();
            QVERIFY(state.isEmpty() || state.size() == kStateEntries);
            const QJsonValue first = state.isEmpty() ? QJsonValue() : state.begin().value();
            for (const QJsonValue& entry : state) {
                QCOMPARE(entry, first);  // one state, never a mix of two
            }
            QCOMPARE(permissionBits(path), kOwnerReadWrite);
        }
        // The files left behind are the store, its lock and nothing half-written.
        const QStringList leftovers = QDir(dir.path()).entryList(QDir::Files);
        QVERIFY2(leftovers.size() <= 2, qPrintable(leftovers.join(QStringLiteral(", "))));
    }

    void twoProcessesKeepEachOthersKeys() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("defaults.json"));
        QList<QProcess*> children;
        for (const QString& key : {QStringLiteral("alpha"), QStringLiteral("beta")}) {
            auto* child = new QProcess(this);
            QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
            env.insert(QStringLiteral("LUMORA_TEST_WRITE_KEY"), path + QLatin1Char('|') + key);
            child->setProcessEnvironment(env);
            child->start(QCoreApplication::applicationFilePath(), {});
            children.append(child);
        }
        for (QProcess* child : children) {
            QVERIFY(child->waitForFinished(30000));
            QCOMPARE(child->exitCode(), 0);
            delete child;
        }
        UserDefaults reopened(path);
        QCOMPARE(reopened.object(QStringLiteral("alpha")).toInt(), kOwnWrites);
        QCOMPARE(reopened.object(QStringLiteral("beta")).toInt(), kOwnWrites);
    }

    void writtenKeysWinAndOthersComeFromTheFile() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("defaults.json"));
        UserDefaults first(path);
        UserDefaults second(path);
        first.setValue(QStringLiteral("shared"), QStringLiteral("first"));
        first.setValue(QStringLiteral("gone"), 1);
        first.flush();
        second.setValue(QStringLiteral("shared"), QStringLiteral("second"));
        second.setValue(QStringLiteral("own"), 2);
        second.removeObject(QStringLiteral("gone"));
        second.flush();
        first.setValue(QStringLiteral("later"), 3);
        first.flush();

        // Each keeps its own writes; keys it never wrote follow the file.
        QCOMPARE(first.object(QStringLiteral("shared")).toString(), QStringLiteral("first"));
        QCOMPARE(second.object(QStringLiteral("shared")).toString(), QStringLiteral("second"));
        QCOMPARE(first.object(QStringLiteral("own")).toInt(), 2);
        QCOMPARE(first.object(QStringLiteral("gone")).toInt(), 1);
        UserDefaults reopened(path);
        QCOMPARE(reopened.object(QStringLiteral("shared")).toString(), QStringLiteral("first"));
        QCOMPARE(reopened.object(QStringLiteral("own")).toInt(), 2);
        QCOMPARE(reopened.object(QStringLiteral("gone")).toInt(), 1);
        QCOMPARE(reopened.object(QStringLiteral("later")).toInt(), 3);
    }

    void removingAKeyStoredByAnotherProcessSinceLoadTakesItOut() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("defaults.json"));
        UserDefaults other(path);
        {
            UserDefaults self(path);
            other.setValue(QStringLiteral("token"), QStringLiteral("t"));
            other.flush();
            self.removeObject(QStringLiteral("token"));
        }
        QVERIFY(!UserDefaults(path).object(QStringLiteral("token")).isValid());
    }

    void fileIsOwnerOnly() {
        QTemporaryDir dir;
        const QString directory = dir.filePath(QStringLiteral("config/app"));
        const QString path = directory + QStringLiteral("/defaults.json");
        {
            UserDefaults store(path);
            store.setValue(QStringLiteral("Lumora.accessToken"), QStringLiteral("secret"));
        }
        QCOMPARE(permissionBits(path), kOwnerReadWrite);
        QCOMPARE(permissionBits(directory), kOwnerReadWrite | QFileDevice::ExeUser);

        // A store another tool left readable by everyone is narrowed when it is loaded.
        QVERIFY(QFile::setPermissions(
            path, kOwnerReadWrite | QFileDevice::ReadGroup | QFileDevice::ReadOther));
        LumoraTest::LogCapture log;
        UserDefaults reopened(path);
        QCOMPARE(permissionBits(path), kOwnerReadWrite);
        QCOMPARE(log.count(QStringLiteral("was readable by others (mode 644); narrowed")), 1);
        QCOMPARE(reopened.string(QStringLiteral("Lumora.accessToken")),
                 std::optional<QString>(QStringLiteral("secret")));
    }

    void mistypedValuesGiveWayToTheRegisteredDefaults_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<QVariant>("answer");  // invalid: the key reads as absent
        auto row = [](const QString& key, const char* stored, const QVariant& answer) {
            QTest::addRow("%s %s", qPrintable(key), stored) << key << QByteArray(stored) << answer;
        };
        using Key = DatabaseService::Key;
        row(Key::deviceId, "42", QString());
        row(Key::accessToken, "7", QVariant());
        row(Key::hasShownInstructions, "\"yes\"", false);
        row(Key::channelInitialPageMapping, "[1, 2]", QVariantMap());
        row(Key::channelInitialPageMapping, "{\"c1\": -5, \"c2\": 1.5, \"c3\": \"2\"}",
            QVariantMap());
        row(Key::channelIsReadMapping, "[\"c1\"]", QVariantMap());
        row(Key::channelIsReadMapping, "{\"c1\": \"yes\", \"c2\": 1}", QVariantMap());
    }

    void mistypedValuesGiveWayToTheRegisteredDefaults() {
        QFETCH(QString, key);
        QFETCH(QByteArray, stored);
        QFETCH(QVariant, answer);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("defaults.json"));
        writeFile(path, "{\"" + key.toUtf8() + "\": " + stored + ", \"other\": \"kept\"}");

        UserDefaults store(path);
        {
            LumoraTest::LogCapture log;
            DatabaseService database(store);
            // Keys without a default (the credentials) are cleared by the store's creation.
            QCOMPARE(log.contains(key), answer.isValid());
            QCOMPARE(store.object(key), answer);
            QCOMPARE(store.string(QStringLiteral("other")),
                     std::optional<QString>(QStringLiteral("kept")));

            // The readers of the maps and the flags work on what is left.
            Channel channel;
            channel.id = QStringLiteral("c1");
            Page video;
            video.mediaType = PageType::Video;
            video.url = QStringLiteral("https://a/v.mp4");
            channel.pages = {video};
            QCOMPARE(getInitialPageVideoUrls({channel}, database), QStringList{*video.url});
            QCOMPARE(getLocallyUpdatedChannels({channel}, database).first().status, std::nullopt);
            updateLocalChannelReadMapping({channel}, database);
            QCOMPARE(database.channelIsReadMapping(), QVariantMap({{QStringLiteral("c1"), false}}));
        }

        // The damage is gone from the file too: loading it again finds nothing to drop.
        store.flush();
        LumoraTest::LogCapture again;
        UserDefaults reopened(path);
        DatabaseService reloaded(reopened);
        QVERIFY2(!again.contains(key), qPrintable(again.messages().join('\n')));
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
        store.flush();
        UserDefaults reopened(path);
        for (int t = 0; t < 4; ++t) {
            QCOMPARE(reopened.object(QStringLiteral("writer-%1").arg(t)).toInt(), 199);
        }
    }
};

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList ownKey =
        qEnvironmentVariable("LUMORA_TEST_WRITE_KEY").split(QLatin1Char('|'));
    if (ownKey.size() == 2) {
        return writeOwnKey(ownKey[0], ownKey[1]);
    }
    UserDefaultsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_userdefaults.moc"
