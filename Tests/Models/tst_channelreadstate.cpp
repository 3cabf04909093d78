#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include "Extensions/ChannelListExtensions.h"
#include "Platform/UserDefaults.h"
#include "Services/DatabaseService.h"

using namespace LumoraSDK;

namespace {
const QJsonValue kNone = QJsonValue::Undefined;

QJsonObject channel(const QJsonValue& id, const QJsonValue& status,
                    const QJsonValue& initialPage = kNone, const QJsonArray& pages = {}) {
    QJsonObject json{{"title", "t"}, {"pages", pages}};
    for (const auto& [key, value] : {std::pair<const char*, QJsonValue>{"id", id},
                                     {"status", status},
                                     {"initialPage", initialPage}}) {
        if (!value.isUndefined()) {
            json.insert(key, value);
        }
    }
    return json;
}

QJsonObject video(int sortOrder, const QString& url) {
    return {{"type", "video"}, {"url", url}, {"sortOrder", sortOrder}};
}

QJsonObject image(int sortOrder) {
    return {{"type", "image"}, {"url", "https://a/i.jpg"}, {"sortOrder", sortOrder}};
}

QList<Channel> decoded(const QJsonArray& list) {
    QList<Channel> channels;
    for (const auto& value : list) {
        channels.append(*Channel::fromJson(value.toObject()));
    }
    return channels;
}
}  // namespace

class ChannelReadStateTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        QVERIFY(m_dir.isValid());
        m_database.reset();
        m_store = std::make_unique<UserDefaults>(
            m_dir.filePath(QStringLiteral("defaults-%1.json").arg(++m_stores)));
        m_database = std::make_unique<DatabaseService>(*m_store);
    }

    // Loading a list makes the server's read state the stored one; stale entries disappear.
    void readMappingFollowsServer_data() {
        QTest::addColumn<QVariantMap>("before");
        QTest::addColumn<QJsonArray>("channels");
        QTest::addColumn<QVariantMap>("after");
        QTest::newRow("server read")
            << QVariantMap() << QJsonArray{channel("c1", "read")} << QVariantMap{{"c1", true}};
        QTest::newRow("local read, server unread")
            << QVariantMap{{"c1", true}, {"gone", true}} << QJsonArray{channel("c1", "unread")}
            << QVariantMap{{"c1", false}};
        QTest::newRow("absent or unknown status")
            << QVariantMap() << QJsonArray{channel("c1", kNone), channel("c2", "READ")}
            << QVariantMap{{"c1", false}, {"c2", false}};
        QTest::newRow("absent id files under empty")
            << QVariantMap() << QJsonArray{channel(kNone, "read")} << QVariantMap{{"", true}};
        QTest::newRow("repeated id, last wins")
            << QVariantMap() << QJsonArray{channel("c1", "read"), channel("c1", "unread")}
            << QVariantMap{{"c1", false}};
        QTest::newRow("empty list") << QVariantMap{{"c1", true}} << QJsonArray() << QVariantMap();
    }
    void readMappingFollowsServer() {
        QFETCH(QVariantMap, before);
        QFETCH(QJsonArray, channels);
        QFETCH(QVariantMap, after);
        m_database->setChannelIsReadMapping(before);
        updateLocalChannelReadMapping(decoded(channels), *m_database);
        m_store->flush();
        // Read through a second store on the same file: what a later process would see.
        QCOMPARE(UserDefaults(m_store->filePath())
                     .dictionary(DatabaseService::Key::channelIsReadMapping),
                 after);
    }

    // The stored flags laid over server data, with or without a reload in between.
    void locallyUpdatedChannels_data() {
        QTest::addColumn<QVariantMap>("flags");
        QTest::addColumn<bool>("reload");
        QTest::addColumn<QJsonObject>("input");
        QTest::addColumn<QString>("status");   // raw value, "" for absent
        QTest::addColumn<int>("initialPage");  // -1 for absent
        QTest::newRow("flag true: read, restart at 0")
            << QVariantMap{{"c1", true}} << false << channel("c1", "unread", 3) << "read" << 0;
        QTest::newRow("flag false keeps initial page")
            << QVariantMap{{"c1", false}} << false << channel("c1", "read", 2) << "unread" << 2;
        QTest::newRow("unknown channel unchanged")
            << QVariantMap{{"c2", true}} << false << channel("c1", kNone, 4) << "" << 4;
        QTest::newRow("absent id uses empty entry")
            << QVariantMap{{"", true}} << false << channel(kNone, kNone) << "read" << 0;
        QTest::newRow("reload, server read")
            << QVariantMap() << true << channel("c1", "read", 2) << "read" << 0;
        QTest::newRow("reload, local read but server unread")
            << QVariantMap{{"c1", true}} << true << channel("c1", "unread", 1) << "unread" << 1;
    }
    void locallyUpdatedChannels() {
        QFETCH(QVariantMap, flags);
        QFETCH(bool, reload);
        QFETCH(QJsonObject, input);
        QFETCH(QString, status);
        QFETCH(int, initialPage);
        m_database->setChannelIsReadMapping(flags);
        const QJsonObject other = channel("other", "unread", 5, {image(1), image(2)});
        const QList<Channel> channels = decoded({other, input});
        if (reload) {
            updateLocalChannelReadMapping(channels, *m_database);
        }
        const QList<Channel> updated = getLocallyUpdatedChannels(channels, *m_database);
        QCOMPARE(updated.size(), 2);
        QCOMPARE(updated[0].serialize(), other);  // order and unaffected channels kept
        QCOMPARE(updated[1].status ? rawValue(*updated[1].status) : QString(), status);
        QCOMPARE(updated[1].initialPage.value_or(-1), qint64(initialPage));
        QCOMPARE(updated[1].pages, channels[1].pages);
    }

    void initialPageVideoUrls_data() {
        QTest::addColumn<QVariantMap>("stored");
        QTest::addColumn<QJsonArray>("channels");
        QTest::addColumn<QStringList>("urls");
        const QJsonArray four{image(1), image(2), image(3), video(4, "v4")};
        const QJsonArray three{image(1), image(2), video(3, "v3")};
        QTest::newRow("stored 3 beats server 1")
            << QVariantMap{{"c1", 3}} << QJsonArray{channel("c1", kNone, 1, four)}
            << QStringList{"v4"};
        QTest::newRow("index past the last page")
            << QVariantMap{{"c1", 3}} << QJsonArray{channel("c1", kNone, 1, three)}
            << QStringList();
        QTest::newRow("server beats stored")
            << QVariantMap{{"c1", 0}} << QJsonArray{channel("c1", kNone, 2, three)}
            << QStringList{"v3"};
        QTest::newRow("stored alone without initialPage")
            << QVariantMap{{"c1", 2}} << QJsonArray{channel("c1", kNone, kNone, three)}
            << QStringList{"v3"};
        QTest::newRow("image page")
            << QVariantMap() << QJsonArray{channel("c1", kNone, 0, three)} << QStringList();
        QTest::newRow("video without url, url without type")
            << QVariantMap()
            << QJsonArray{channel("a", kNone, 0, {QJsonObject{{"type", "video"}}}),
                          channel("b", kNone, 0, {QJsonObject{{"url", "u"}}})}
            << QStringList();
        QTest::newRow("absent id uses empty entry")
            << QVariantMap{{"", 2}, {"c1", 0}} << QJsonArray{channel(kNone, kNone, kNone, three)}
            << QStringList{"v3"};
        QTest::newRow("channel order, duplicates kept")
            << QVariantMap{{"b", 1}}
            << QJsonArray{channel("a", kNone, 0, {video(1, "x")}),
                          channel("b", kNone, 0, {image(1), video(2, "y")}),
                          channel("c", kNone, 0, {video(1, "x")})}
            << QStringList{"x", "y", "x"};
    }
    void initialPageVideoUrls() {
        QFETCH(QVariantMap, stored);
        QFETCH(QJsonArray, channels);
        QFETCH(QStringList, urls);
        m_database->setChannelInitialPageMapping(stored);
        QCOMPARE(getInitialPageVideoUrls(decoded(channels), *m_database), urls);
    }

private:
    QTemporaryDir m_dir;
    int m_stores = 0;
    std::unique_ptr<UserDefaults> m_store;
    std::unique_ptr<DatabaseService> m_database;
};

QTEST_GUILESS_MAIN(ChannelReadStateTest)

#include "tst_channelreadstate.moc"
