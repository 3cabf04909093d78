// The models as the API sends them (decoding, colours, descriptions), and the read state and
// resume pages a loaded channel list leaves in the store.

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include "Extensions/ChannelListExtensions.h"
#include "Extensions/ColorExtensions.h"
#include "Models/Authorization.h"
#include "Models/Branding.h"
#include "Models/Channel.h"
#include "Models/ChannelList.h"
#include "Models/DemoData.h"
#include "Models/UserInput.h"
#include "Platform/UserDefaults.h"
#include "Services/DatabaseService.h"
#include "TestSupport.h"

using namespace LumoraSDK;

namespace {
// Child mode: decode the channel in this variable, then report having survived.
constexpr const char* kChildChannelVariable = "LUMORA_TEST_DECODE_CHANNEL";

QJsonObject page(const QString& id, const QJsonValue& sortOrder = QJsonValue::Undefined) {
    QJsonObject json{{"id", id}};
    if (!sortOrder.isUndefined()) {
        json.insert("sortOrder", sortOrder);
    }
    return json;
}

// Decodes `json` as `entity` and serializes it again; no value when it does not decode.
std::optional<QJsonObject> reserialized(const QString& entity, const QJsonObject& json) {
    const auto run = [](auto decoded) -> std::optional<QJsonObject> {
        return decoded ? std::optional(decoded->serialize()) : std::nullopt;
    };
    if (entity == "page")
        return run(Page::fromJson(json));
    if (entity == "channel")
        return run(Channel::fromJson(json));
    if (entity == "authorization")
        return run(Authorization::fromJson(json));
    if (entity == "userInput")
        return run(UserInput::fromJson(json));
    if (entity == "branding")
        return run(Branding::fromJson(json));
    return run(DemoData::fromJson(json));
}

QJsonArray deeplyNested(int depth) {
    QJsonArray value{1};
    for (int i = 0; i < depth; ++i) {
        value = QJsonArray{QJsonObject{{"url", value}}};
    }
    return value;
}

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

class ModelsTest : public QObject {
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

    // A field survives decoding only with its exact key and JSON type; anything else is absent.
    void fieldTypes_data() {
        QTest::addColumn<QString>("entity");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QJsonValue>("value");
        QTest::addColumn<bool>("kept");
        const auto row = [](const char* name, const char* entity, const char* key,
                            const QJsonValue& value, bool kept) {
            QTest::newRow(name) << QString(entity) << QString(key) << value << kept;
        };
        row("type video", "page", "type", "video", true);
        row("type capitalised", "page", "type", "Video", false);
        row("duration integral double", "page", "duration", 7.0, true);
        row("duration fraction", "page", "duration", 3.5, false);
        row("duration beyond int", "page", "duration", 1e10, true);
        row("duration beyond 64 bits", "page", "duration", 1e19, false);
        row("expires_in fraction", "authorization", "expires_in", 3000000000.5, false);
        row("initialPage beyond int, negative", "channel", "initialPage", -9007199254740992.0,
            true);
        row("url deeply nested", "page", "url", deeplyNested(5000), false);
        row("showSwipeUpUi false", "page", "showSwipeUpUi", false, true);
        row("showSwipeUpUI spelled as field", "page", "showSwipeUpUI", true, false);
        row("sortOrder negative", "page", "sortOrder", -2, true);
        row("channel initialPage text", "channel", "initialPage", "2", false);
        row("channel isPlaceholder", "channel", "isPlaceholder", true, false);
        row("externalId number", "userInput", "externalId", 42, false);
        row("secondaryColor null", "branding", "secondaryColor", QJsonValue::Null, false);
        row("demo secret number", "demo", "secret", 42, false);
    }
    void fieldTypes() {
        QFETCH(QString, entity);
        QFETCH(QString, key);
        QFETCH(QJsonValue, value);
        QFETCH(bool, kept);
        // The unknown key keeps the object non-empty and must itself be ignored.
        const auto output = reserialized(entity, {{key, value}, {"unknownMarker", 1}});
        QVERIFY(output);
        QJsonObject expected = kept ? QJsonObject{{key, value}} : QJsonObject{};
        if (entity == "channel") {
            expected.insert("pages", QJsonArray());
        }
        QCOMPARE(*output, expected);
    }

    // Decoding and serializing again gives the same object: enums as raw texts, absent fields
    // left out, pages in order.
    void roundTrip_data() {
        QTest::addColumn<QString>("entity");
        QTest::addColumn<QJsonObject>("json");
        QTest::newRow("page, every field") << "page"
                                           << QJsonObject{{"type", "video"},
                                                          {"duration", 15},
                                                          {"url", "https://a/v.mp4"},
                                                          {"swipeUpText", "Shop"},
                                                          {"swipeUpUrl", "https://s"},
                                                          {"showSwipeUpUi", true},
                                                          {"playcardUrl", "https://a/v.jpg"},
                                                          {"sortOrder", 4},
                                                          {"id", "p4"},
                                                          {"status", "read"},
                                                          {"skippable", false}};
        QTest::newRow("page, huge url") << "page" << QJsonObject{{"url", QString(8 << 20, 'x')}};
        QTest::newRow("channel") << "channel"
                                 << QJsonObject{{"title", "News"},
                                                {"id", "c1"},
                                                {"initialPage", 2},
                                                {"profilePictureUrl", "https://p"},
                                                {"status", "unread"},
                                                {"pages", QJsonArray{page("a", 1), page("b", 2)}}};
        QTest::newRow("authorization")
            << "authorization" << QJsonObject{{"access_token", "t"}, {"expires_in", 60}};
        QTest::newRow("access_token only") << "authorization" << QJsonObject{{"access_token", "t"}};
        QTest::newRow("userInput") << "userInput" << QJsonObject{{"externalId", "u-1"}};
        QTest::newRow("branding") << "branding"
                                  << QJsonObject{{"primaryColor", "#1e90ff"},
                                                 {"secondaryColor", "#e21219"}};
    }
    void roundTrip() {
        QFETCH(QString, entity);
        QFETCH(QJsonObject, json);
        QCOMPARE(reserialized(entity, json), json);
    }

    void emptyObjects_data() {
        QTest::addColumn<QString>("entity");
        QTest::addColumn<bool>("decodes");
        for (const char* entity : {"page", "channel", "authorization", "userInput", "branding"}) {
            QTest::addRow("%s", entity) << QString(entity) << false;
        }
        QTest::newRow("demo data needs only an object") << "demo" << true;
    }
    void emptyObjects() {
        QFETCH(QString, entity);
        QFETCH(bool, decodes);
        QCOMPARE(reserialized(entity, {}).has_value(), decodes);
    }

    void channelPages_data() {
        QTest::addColumn<QJsonValue>("pages");
        QTest::addColumn<QStringList>("expectedIds");
        // Sorted ascending, equal orders in delivered order: enough pages for an unstable sort
        // to show.
        QJsonArray many;
        QStringList byOrder[3];
        for (int i = 0; i < 60; ++i) {
            many.append(page(QString::number(i), 2 - i % 3));
            byOrder[2 - i % 3].append(QString::number(i));
        }
        QTest::newRow("sixty pages, stable")
            << QJsonValue(many) << byOrder[0] + byOrder[1] + byOrder[2];
        QTest::newRow("empty page dropped")
            << QJsonValue(QJsonArray{page("b", 2), QJsonObject(), page("a", 1)})
            << QStringList{"a", "b"};
        QTest::newRow("lone page needs no sortOrder")
            << QJsonValue(QJsonArray{page("a"), QJsonObject()}) << QStringList{"a"};
        QTest::newRow("non-object element")
            << QJsonValue(QJsonArray{page("a", 1), 5}) << QStringList();
        QTest::newRow("object, not a list") << QJsonValue(page("a", 1)) << QStringList();
    }
    void channelPages() {
        QFETCH(QJsonValue, pages);
        QFETCH(QStringList, expectedIds);
        const auto channel = Channel::fromJson({{"id", "c1"}, {"pages", pages}});
        QStringList ids;
        for (const Page& p : channel->pages) {
            ids.append(p.id.value_or("<none>"));
        }
        QCOMPARE(ids, expectedIds);
    }

    // The channel list is read with a faster reader than QJsonDocument; whatever the text, the
    // result is QJsonDocument's: the same channels with the same fields, or nothing.
    void channelListReaders_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<int>("count");  // -1: not a list of channel objects
        const QByteArray deep = QByteArray(600, '[') + QByteArray(600, ']');
        const struct {
            const char* name;
            QByteArray json;
            int count;
        } rows[] = {
            {"every field",
             "[{\"id\":\"c\",\"title\":\"T\u00e9\\\"\",\"initialPage\":1,\"status\":\"read\","
             "\"profilePictureUrl\":\"a.png\",\"pages\":[{\"id\":\"q\",\"sortOrder\":2,"
             "\"type\":\"video\",\"duration\":5.0,\"url\":\"v.mp4\",\"playcardUrl\":\"v.png\","
             "\"swipeUpText\":\"More\",\"swipeUpUrl\":\"/p\",\"showSwipeUpUi\":true,"
             "\"skippable\":false,\"status\":\"unread\"},{\"id\":\"p\",\"sortOrder\":1}]}]",
             1},
            {"wrong types and unknown keys",
             "[{\"id\":1,\"title\":null,\"initialPage\":\"2\",\"status\":\"seen\",\"x\":[{}],"
             "\"pages\":[{\"duration\":3.5,\"sortOrder\":1e30,\"skippable\":1,\"type\":\"gif\"}]}]",
             1},
            {"integers past 2^53, 2^63 and 2^64",
             "[{\"initialPage\":9007199254740993},{\"initialPage\":9223372036854775807},"
             "{\"initialPage\":-9223372036854775808},{\"initialPage\":18446744073709551615},"
             "{\"initialPage\":123456789012345678901234567890},{\"initialPage\":-0}]",
             6},
            {"duplicate keys, the last wins",
             "[{\"id\":\"a\",\"pages\":[{\"id\":\"x\"},{\"id\":\"y\"}],\"id\":\"b\",\"pages\":[]}]",
             1},
            {"empty objects dropped", "[{\"id\":\"a\"},{},{\"pages\":[{}]}]", 2},
            {"escapes and characters",
             "[{\"id\":\"\\u0000\\ud83d\\ude00 \\/\\n\",\"title\":\"\xf0\x9f\x98\x80\"},"
             "{\"id\":\"\\ud800 unpaired\"}]",
             2},
            {"byte order mark", "\xEF\xBB\xBF[{\"id\":\"a\"}]", 1},
            {"invalid UTF-8 in a string", "[{\"id\":\"a\xff\xfe\"}]", -1},
            {"deep nesting in an unknown key", "[{\"x\":" + deep + "}]", 1},
            {"non-object element", "[{\"id\":\"a\"},5]", -1},
            {"object, not a list", "{\"a\":1}", -1},
            // Nothing is decoded, so the page without "sortOrder" stops nothing.
            {"non-object beside a broken channel",
             "[{\"id\":\"c\",\"pages\":[{\"id\":\"p\"},{\"id\":\"q\"}]},5]", -1},
        };
        for (const auto& row : rows) {
            QTest::newRow(row.name) << row.json << row.count;
        }
    }
    void channelListReaders() {
        QFETCH(QByteArray, json);
        QFETCH(int, count);
        const auto texts = [](const std::optional<QList<Channel>>& channels) {
            QStringList result;
            for (const Channel& channel : channels.value_or(QList<Channel>())) {
                result.append(QJsonDocument(channel.serialize()).toJson(QJsonDocument::Compact));
            }
            return channels ? result : QStringList{"<nothing>"};
        };
        const auto reference = decodeChannelListWithQtJson(json);
        QCOMPARE(reference ? int(reference->size()) : -1, count);
        QCOMPARE(texts(decodeChannelList(json)), texts(reference));
    }

    // Every page of a multi-page channel must have "sortOrder"; otherwise the process stops,
    // naming the channel.
    void missingSortOrderStopsTheProcess_data() {
        QTest::addColumn<QJsonObject>("channel");
        QTest::addColumn<QString>("named");
        QTest::newRow("first page")
            << QJsonObject{{"id", "ch-9"}, {"pages", QJsonArray{page("p"), page("q", 1)}}}
            << "channel \"ch-9\"";
        QTest::newRow("text sortOrder, no id")
            << QJsonObject{{"pages", QJsonArray{page("q", "1"), page("r", 2)}}} << "channel nil";
    }
    void missingSortOrderStopsTheProcess() {
        QFETCH(QJsonObject, channel);
        QFETCH(QString, named);
        const QString json = QJsonDocument(channel).toJson(QJsonDocument::Compact);
        const auto child = LumoraTest::runSelf(
            {}, {QString(kChildChannelVariable) + '=' + json, "QT_FORCE_STDERR_LOGGING=1"});
        QVERIFY2(child.crashed, qPrintable(child.standardOutput));
        QVERIFY2(child.standardError.contains(named + " has a page without \"sortOrder\""),
                 qPrintable(child.standardError));
    }

    void hexToColor_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("alpha");
        QTest::addColumn<QColor>("expected");
        QTest::newRow("no #") << "c5c5c5" << 1.0 << QColor(197, 197, 197);
        QTest::newRow("two #, upper case") << "##F5C92C" << 1.0 << QColor(245, 201, 44);
        QTest::newRow("empty") << "" << 1.0 << QColor(0, 0, 0);
        QTest::newRow("leading space") << " #ffffff" << 1.0 << QColor(0, 0, 0);
        QTest::newRow("eight digits: last six") << "#11223344" << 1.0 << QColor(0x22, 0x33, 0x44);
        QTest::newRow("stops at non-digit") << "#12345g" << 1.0 << QColor(0x01, 0x23, 0x45);
        QTest::newRow("0x prefix") << "0xff8800" << 1.0 << QColor(0xff, 0x88, 0x00);
        QTest::newRow("overflow saturates") << QString(20, '9') << 1.0 << QColor(255, 255, 255);
        QTest::newRow("alpha kept") << "#ff0000" << 0.5 << QColor::fromRgbF(1, 0, 0, 0.5);
        QTest::newRow("alpha clamped") << "#ff0000" << 3.0 << QColor(255, 0, 0);
    }
    void hexToColor() {
        QFETCH(QString, text);
        QFETCH(double, alpha);
        QFETCH(QColor, expected);
        QCOMPARE(colorFromHexString(text, alpha), expected);
    }

    void colorToHex_data() {
        QTest::addColumn<QColor>("color");
        QTest::addColumn<QString>("expected");
        QTest::newRow("(1, 0.5, 0) truncates") << QColor::fromRgbF(1, 0.5f, 0) << "#ff7f00";
        QTest::newRow("alpha dropped") << QColor(0x12, 0x34, 0x56, 0x10) << "#123456";
    }
    void colorToHex() {
        QFETCH(QColor, color);
        QFETCH(QString, expected);
        QCOMPARE(toHexString(color), expected);
    }

    void hexRoundTripsEveryComponentValue() {
        for (int v = 0; v < 256; ++v) {
            const QString text = QString::asprintf("#%02x%02x%02x", v, 255 - v, v / 2);
            QCOMPARE(toHexString(colorFromHexString(text)), text);
        }
    }

    void demoData() {
        const QJsonObject texts{{"demoAppHeaderImageUrl", "h"},
                                {"demoAppFooterImageUrl", "f"},
                                {"demoAppTabBarImageUrl", "t"},
                                {"secret", "k"},
                                {"title", "Demo"},
                                {"appStoreIdentifier", "123"},
                                {"id", "d1"},
                                {"platform", "ios"}};
        QJsonObject json = texts;
        json.insert("themeColorHex", "#c5c5c5");
        const auto data = DemoData::fromJson(json);
        QCOMPARE(data->apiKey, "k");
        QCOMPARE(data->topContentImageUrl, "h");
        QCOMPARE(data->themeColor, QColor(197, 197, 197));
        QCOMPARE(DemoData::fromJson(std::nullopt), std::nullopt);
    }

private:
    QTemporaryDir m_dir;
    int m_stores = 0;
    std::unique_ptr<UserDefaults> m_store;
    std::unique_ptr<DatabaseService> m_database;
};

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (qEnvironmentVariableIsSet(kChildChannelVariable)) {
        const auto json = QJsonDocument::fromJson(qgetenv(kChildChannelVariable)).object();
        const auto channel = Channel::fromJson(json);
        printf("decoded %lld pages\n",
               channel ? static_cast<long long>(channel->pages.size()) : -1);
        return 0;
    }
    ModelsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_models.moc"
