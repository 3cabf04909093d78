// lumora-devserver's own behaviour, beyond what the SDK's network tests exercise: key and token
// rules, per-user read state, byte ranges, fault injection and the request journal.

#include "DevServer.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QStringDecoder>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

using LumoraTest::DevServer;

namespace {

constexpr int kTimeoutMs = 20000;
constexpr int kClipSize = 1000;
const QString kChannels = QStringLiteral("/api/app/channel/channelsForUser");
const QString kViewingHistory = QStringLiteral("/api/app/viewingHistory/recordViewingHistory");
const QString kActivity = QStringLiteral("/api/app/activity/recordActivity");

struct Answer {
    bool finished = false;
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    int status = 0;
    QByteArray body;
    QHash<QByteArray, QByteArray> headers;  // lower-case names

    QJsonDocument json() const { return QJsonDocument::fromJson(body); }
};

QByteArray clipBytes() {
    QByteArray bytes(kClipSize, Qt::Uninitialized);
    for (int i = 0; i < kClipSize; ++i) {
        bytes[i] = char(i % 251);
    }
    return bytes;
}

void writeFile(const QString& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

// A tiny content directory whose every byte the tests know. "gamma" lists its last page (by
// sort order) first.
const char* const kContent = R"([
 {"id": "alpha", "title": "Alpha", "status": "unread", "profilePictureUrl": "avatar.png",
  "pages": [{"id": "a1", "type": "image", "sortOrder": 1, "url": "image.jpg", "duration": 5},
            {"id": "a2", "type": "video", "sortOrder": 2, "url": "clip.mp4", "duration": 5,
             "playcardUrl": "avatar.png", "swipeUpUrl": "/pages/more.html",
             "showSwipeUpUi": true, "skippable": false}]},
 {"id": "beta", "title": "Beta", "status": "read",
  "profilePictureUrl": "https:\/\/cdn.example.invalid/beta.png",
  "pages": [{"id": "b1", "type": "image", "sortOrder": 1, "url": "image.jpg"}]},
 {"id": "gamma", "title": "Gamma",
  "pages": [{"id": "g2", "type": "image", "sortOrder": 2, "url": "image.jpg"},
            {"id": "g1", "type": "image", "sortOrder": 1, "url": "image.jpg"}]}
])";

}  // namespace

class tst_DevServer : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_root;
    std::unique_ptr<DevServer> m_server;
    QNetworkAccessManager m_network;

    QString contentDir() const { return m_root.filePath("content"); }

    Answer send(const QByteArray& verb, const QString& url, const QByteArray& body = {},
                const QList<QPair<QByteArray, QByteArray>>& headers = {}) {
        QNetworkRequest request{QUrl(url)};
        if (!body.isEmpty()) {
            request.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
        }
        for (const auto& [name, value] : headers) {
            request.setRawHeader(name, value);
        }
        std::unique_ptr<QNetworkReply> reply(m_network.sendCustomRequest(request, verb, body));
        QSignalSpy finished(reply.get(), &QNetworkReply::finished);
        Answer answer;
        answer.finished = reply->isFinished() || finished.wait(kTimeoutMs);
        answer.error = reply->error();
        answer.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        answer.body = reply->readAll();
        for (const auto& [name, value] : reply->rawHeaderPairs()) {
            answer.headers.insert(name.toLower(), value);
        }
        return answer;
    }

    /// An API request with the right key, and the bearer token when one is given.
    Answer api(const QByteArray& verb, const QString& path, const QJsonObject& body = {},
               const QString& token = {}, const DevServer* server = nullptr) {
        QList<QPair<QByteArray, QByteArray>> headers{{"x-lumora-api-key", "test-api-key"}};
        if (!token.isEmpty()) {
            headers.append({"Authorization", "Bearer " + token.toUtf8()});
        }
        return send(verb, (server ? server : m_server.get())->baseUrl() + path,
                    verb == "GET" ? QByteArray() : QJsonDocument(body).toJson(), headers);
    }

    QString login(const QString& externalId = {}, const DevServer* server = nullptr) {
        QJsonObject body;
        if (!externalId.isEmpty()) {
            body.insert("externalId", externalId);
        }
        return api("POST", "/api/auth", body, {}, server)
            .json()
            .object()
            .value("access_token")
            .toString();
    }

    /// channel id -> status, as the user of `token` gets them.
    QHash<QString, QString> statuses(const QString& token) {
        QHash<QString, QString> result;
        for (const auto& value : api("GET", kChannels, {}, token).json().array()) {
            const QJsonObject channel = value.toObject();
            result.insert(channel["id"].toString(), channel["status"].toString());
        }
        return result;
    }

    /// Sends `request` as is over a new connection and returns all the server answered.
    QByteArray rawExchange(const QByteArray& request) {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, QUrl(m_server->baseUrl()).port());
        if (!socket.waitForConnected(kTimeoutMs)) {
            return {};
        }
        socket.write(request);
        // With "Connection: close" the server hangs up after answering; a request it could not
        // read leaves the connection open, and its status line and headers are all there is.
        const bool untilClosed = request.contains("Connection: close");
        QByteArray answer;
        while (socket.waitForReadyRead(kTimeoutMs)) {
            answer += socket.readAll();
            if (!untilClosed && answer.contains("\r\n\r\n")) {
                break;
            }
        }
        return answer + socket.readAll();
    }

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(m_root.isValid());
        writeFile(contentDir() + "/channels.json", kContent);
        writeFile(contentDir() + "/clip.mp4", clipBytes());
        writeFile(contentDir() + "/avatar.png", "\x89PNG fake");
        writeFile(contentDir() + "/image.jpg", "\xff\xd8 fake");
        writeFile(contentDir() + "/pages/more.html", "<html>more</html>");
        writeFile(m_root.filePath("secret.txt"), "outside the content directory");
        QVERIFY(QFile::link(m_root.filePath("secret.txt"), contentDir() + "/link.txt"));
        DevServer::Options options;
        options.contentDir = contentDir();
        m_server = std::make_unique<DevServer>(options);
        QVERIFY(m_server->isRunning());
    }

    void init() { m_server->reset(); }

    void keyAndTokenRules_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("token");  // "valid": a token from /api/auth
        QTest::addColumn<QString>("body");
        QTest::addColumn<int>("status");

        const auto row = [](const char* name, const QString& path, const char* key,
                            const char* token, const char* body, int status) {
            QTest::newRow(name) << path << QString(key) << QString(token) << QString(body)
                                << status;
        };
        const char* key = "test-api-key";
        const QString auth = "/api/auth";
        row("auth without key", auth, "", "", "{}", 401);
        row("auth with wrong key", auth, "lumora-demo-key", "", "{}", 401);
        row("auth with empty body", auth, key, "", "", 400);
        row("auth with a JSON array", auth, key, "", "[]", 400);
        row("auth with numeric externalId", auth, key, "", R"({"externalId": 7})", 400);
        row("anonymous auth", auth, key, "", "{}", 200);
        row("channels without token", kChannels, key, "", "", 401);
        row("channels with unknown token", kChannels, key, "nope", "", 401);
        row("channels with token but no key", kChannels, "", "valid", "", 401);
        row("channels with key and token", kChannels, key, "valid", "", 200);
        row("update without externalId", "/api/app/user/updateExternalId", key, "valid", "{}", 400);
        row("viewing history not an object", kViewingHistory, key, "valid", "\"a2\"", 400);
        row("unknown API route", "/api/app/nothing", key, "valid", "{}", 404);
    }

    void keyAndTokenRules() {
        QFETCH(QString, path);
        QFETCH(QString, key);
        QFETCH(QString, token);
        QFETCH(QString, body);
        QFETCH(int, status);

        if (token == "valid") {
            token = login();
            QVERIFY(!token.isEmpty());
        }
        QList<QPair<QByteArray, QByteArray>> headers;
        if (!key.isEmpty()) {
            headers.append({"x-lumora-api-key", key.toUtf8()});
        }
        if (!token.isEmpty()) {
            headers.append({"Authorization", "Bearer " + token.toUtf8()});
        }
        const QByteArray verb = path == kChannels ? "GET" : "POST";
        const Answer answer = send(verb, m_server->baseUrl() + path, body.toUtf8(), headers);
        QVERIFY(answer.finished);
        QCOMPARE(answer.status, status);
        if (path == "/api/auth" && status == 200) {
            QVERIFY(!answer.json()["access_token"].toString().isEmpty());
            QCOMPARE(answer.json()["expires_in"].toInt(), 3600);
        }
    }

    void activityTypes_data() {
        QTest::addColumn<QJsonValue>("type");
        QTest::addColumn<int>("status");
        for (const char* type :
             {"openedChannel", "dismissedChannel", "skipPage", "skipChannel", "completePage",
              "completeChannel", "swipeUpOnPage", "shareButtonTapped", "previousPage"}) {
            QTest::addRow("%s", type) << QJsonValue(type) << 200;
        }
        QTest::newRow("case name instead of wire value") << QJsonValue("SwipedUp") << 400;
        QTest::newRow("wrong case") << QJsonValue("skippage") << 400;
        QTest::newRow("number") << QJsonValue(3) << 400;
        QTest::newRow("missing") << QJsonValue() << 400;
    }

    void activityTypes() {
        QFETCH(QJsonValue, type);
        QFETCH(int, status);
        const QString token = login("ann");
        QJsonObject body{{"pageStoryId", "a1"}, {"channelStoryId", "alpha"}};
        if (!type.isUndefined() && !type.isNull()) {
            body.insert("activityItemType", type);
        }
        QCOMPARE(api("POST", kActivity, body, token).status, status);
        const QJsonArray events = m_server->events();
        QCOMPARE(events.size(), status == 200 ? 1 : 0);
        if (status == 200) {
            QCOMPARE(events[0]["kind"].toString(), "activity");
            QCOMPARE(events[0]["user"].toString(), "ann");
            QCOMPARE(events[0]["body"].toObject(), body);
        }
    }

    // Relative media and page links become addresses on the server the request came to (the
    // demo content test fetches every one of them); absolute ones and page flags pass as they are.
    void channelListUsesTheRequestsAddress() {
        const QJsonArray channels = api("GET", kChannels, {}, login()).json().array();
        QCOMPARE(channels.size(), 3);
        const QJsonObject video = channels[0]["pages"][1].toObject();
        QCOMPARE(video["skippable"], QJsonValue(false));
        QCOMPARE(video["showSwipeUpUi"], QJsonValue(true));
        QCOMPARE(channels[1]["profilePictureUrl"].toString(),
                 "https://cdn.example.invalid/beta.png");
        QString viaLocalhost = m_server->baseUrl();
        viaLocalhost.replace("127.0.0.1", "localhost");
        const Answer answer = send("GET", viaLocalhost + kChannels, {},
                                   {{"x-lumora-api-key", "test-api-key"},
                                    {"Authorization", "Bearer " + login().toUtf8()}});
        QCOMPARE(answer.json()[0]["profilePictureUrl"].toString(),
                 viaLocalhost + "/media/avatar.png");
        QCOMPARE(answer.json()[0]["pages"][1]["swipeUpUrl"].toString(),
                 viaLocalhost + "/pages/more.html");
    }

    void readStateIsPerUser() {
        const QString ann = login("ann");
        const QString bob = login("bob");
        // A page that is not the last one leaves the channel unread; g2 has the highest sort
        // order although it is listed first.
        QCOMPARE(
            api("POST", kViewingHistory, {{"pageStoryId", "g1"}, {"ChannelStoryId", "gamma"}}, ann)
                .status,
            200);
        QCOMPARE(statuses(ann).value("gamma"), "unread");
        api("POST", kViewingHistory, {{"pageStoryId", "g2"}, {"ChannelStoryId", "gamma"}}, ann);

        QCOMPARE(statuses(ann), (QHash<QString, QString>{
                                    {"alpha", "unread"}, {"beta", "read"}, {"gamma", "read"}}));
        QCOMPARE(statuses(bob), (QHash<QString, QString>{
                                    {"alpha", "unread"}, {"beta", "read"}, {"gamma", "unread"}}));
        // A second token of the same external id is the same user.
        QCOMPARE(statuses(login("ann")).value("gamma"), "read");

        // Rebinding an anonymous token to "ann" gives it ann's history and tags its events.
        const QString anonymous = login();
        QCOMPARE(statuses(anonymous).value("gamma"), "unread");
        QCOMPARE(api("POST", "/api/app/user/updateExternalId", {{"externalId", "ann"}}, anonymous)
                     .status,
                 200);
        QCOMPARE(statuses(anonymous).value("gamma"), "read");
        api("POST", kViewingHistory, {{"pageStoryId", "a1"}, {"ChannelStoryId", "alpha"}},
            anonymous);
        const QJsonArray events = m_server->events();
        QCOMPARE(events.size(), 3);
        QCOMPARE(events[2]["user"].toString(), "ann");
        QVERIFY(events[1]["seq"].toInteger() < events[2]["seq"].toInteger());
    }

    void mediaRanges_data() {
        QTest::addColumn<QByteArray>("range");
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("first");  // of the bytes answered
        QTest::addColumn<int>("length");
        QTest::newRow("no range") << QByteArray() << 200 << 0 << kClipSize;
        QTest::newRow("first ten bytes") << QByteArray("bytes=0-9") << 206 << 0 << 10;
        QTest::newRow("open end") << QByteArray("bytes=990-") << 206 << 990 << 10;
        QTest::newRow("suffix") << QByteArray("bytes=-5") << 206 << 995 << 5;
        QTest::newRow("end past the size") << QByteArray("bytes=995-5000") << 206 << 995 << 5;
        QTest::newRow("several ranges: whole file")
            << QByteArray("bytes=0-1,5-6") << 200 << 0 << kClipSize;
        QTest::newRow("start past the size") << QByteArray("bytes=1000-") << 416 << 0 << 0;
    }

    void mediaRanges() {
        QFETCH(QByteArray, range);
        QFETCH(int, status);
        QFETCH(int, first);
        QFETCH(int, length);
        QList<QPair<QByteArray, QByteArray>> headers;
        if (!range.isEmpty()) {
            headers.append({"Range", range});
        }
        const Answer answer = send("GET", m_server->baseUrl() + "/media/clip.mp4", {}, headers);
        QCOMPARE(answer.status, status);
        QCOMPARE(answer.body, clipBytes().mid(first, length));
        if (status == 206) {
            QCOMPARE(answer.headers.value("content-range"), QStringLiteral("bytes %1-%2/%3")
                                                                .arg(first)
                                                                .arg(first + length - 1)
                                                                .arg(kClipSize)
                                                                .toUtf8());
        } else if (status == 416) {
            QCOMPARE(answer.headers.value("content-range"), QByteArray("bytes */1000"));
        } else {
            QCOMPARE(answer.headers.value("accept-ranges"), QByteArray("bytes"));
        }
    }

    void filesAndTraversal_data() {
        QTest::addColumn<QByteArray>("target");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("contentType");
        QTest::newRow("mp4") << QByteArray("/media/clip.mp4") << 200 << QByteArray("video/mp4");
        QTest::newRow("png") << QByteArray("/media/avatar.png") << 200 << QByteArray("image/png");
        QTest::newRow("jpg") << QByteArray("/media/image.jpg") << 200 << QByteArray("image/jpeg");
        QTest::newRow("web page") << QByteArray("/pages/more.html") << 200
                                  << QByteArray("text/html; charset=utf-8");
        QTest::newRow("missing file") << QByteArray("/media/none.png") << 404 << QByteArray();
        QTest::newRow("dot-dot") << QByteArray("/media/../secret.txt") << 404 << QByteArray();
        QTest::newRow("encoded dot-dot")
            << QByteArray("/media/%2e%2e/secret.txt") << 404 << QByteArray();
        QTest::newRow("symbolic link out") << QByteArray("/media/link.txt") << 404 << QByteArray();
        QTest::newRow("directory") << QByteArray("/media/pages") << 404 << QByteArray();
    }

    void filesAndTraversal() {
        QFETCH(QByteArray, target);
        QFETCH(int, status);
        QFETCH(QByteArray, contentType);
        // Sent byte for byte: a client library would tidy "/../" away before it left.
        const QByteArray answer = rawExchange(
            "GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n");
        QVERIFY2(answer.startsWith("HTTP/1.1 " + QByteArray::number(status)), answer.left(200));
        QVERIFY(!answer.contains("outside the content directory"));
        if (!contentType.isEmpty()) {
            QVERIFY2(answer.contains("\r\nContent-Type: " + contentType + "\r\n"),
                     answer.left(300));
        }
    }

    void faultAnswers_data() {
        QTest::addColumn<QString>("route");
        QTest::addColumn<QJsonObject>("fault");
        QTest::addColumn<int>("status");
        QTest::addColumn<QNetworkReply::NetworkError>("error");

        const auto none = QNetworkReply::NoError;
        QTest::newRow("status") << kChannels << QJsonObject{{"status", 500}} << 500
                                << QNetworkReply::InternalServerError;
        QTest::newRow("prefix route") << "/api/app/*" << QJsonObject{{"status", 503}} << 503
                                      << QNetworkReply::ServiceUnavailableError;
        QTest::newRow("body and type")
            << kChannels << QJsonObject{{"body", "<p>gateway</p>"}, {"contentType", "text/html"}}
            << 200 << none;
        for (const char* kind :
             {"malformed", "truncated", "huge", "nested", "invalid-utf8", "wrong-type"}) {
            QTest::addRow("%s", kind)
                << kChannels << QJsonObject{{"bodyKind", kind}} << 200 << none;
        }
        QTest::newRow("drop") << kChannels << QJsonObject{{"drop", true}} << 0
                              << QNetworkReply::RemoteHostClosedError;
    }

    void faultAnswers() {
        QFETCH(QString, route);
        QFETCH(QJsonObject, fault);
        QFETCH(int, status);
        QFETCH(QNetworkReply::NetworkError, error);
        const QString token = login();
        const QByteArray normal = api("GET", kChannels, {}, token).body;
        QCOMPARE(QJsonDocument::fromJson(normal).array().size(), 3);

        m_server->setFault(route, fault);
        const Answer answer = api("GET", kChannels, {}, token);
        QVERIFY(answer.finished);
        QCOMPARE(answer.error, error);
        QCOMPARE(answer.status, status);
        QJsonParseError parseError{};
        const QJsonDocument document = QJsonDocument::fromJson(answer.body, &parseError);
        const QString kind = fault["bodyKind"].toString();
        if (kind == "malformed") {
            QVERIFY(parseError.error != QJsonParseError::NoError);
        } else if (kind == "truncated") {
            QVERIFY(parseError.error != QJsonParseError::NoError);
            QVERIFY(!answer.body.isEmpty() && normal.startsWith(answer.body));
        } else if (kind == "huge") {
            QVERIFY(answer.body.size() >= 50 * 1024 * 1024);
            QCOMPARE(document.array().size(), 3);
        } else if (kind == "nested") {
            QVERIFY(answer.body.startsWith(QByteArray(100000, '[')));
        } else if (kind == "invalid-utf8") {
            auto decode = QStringDecoder(QStringDecoder::Utf8);
            const QString text = decode(answer.body);
            QVERIFY(decode.hasError());
            QVERIFY(text.contains("\"id\":\"gamma\""));
        } else if (kind == "wrong-type") {
            QCOMPARE(document.object()["channels"].toArray().size(), 3);
        } else if (fault.contains("body")) {
            QCOMPARE(answer.body, QByteArray("<p>gateway</p>"));
            QCOMPARE(answer.headers.value("content-type"), QByteArray("text/html"));
        }
        // The journal has the faulted request with what it answered (0: no answer at all).
        QCOMPARE(m_server->requests().last()["status"].toInt(), status);

        m_server->clearFaults();
        QCOMPARE(api("GET", kChannels, {}, token).body, normal);
    }

    void faultLifetime() {
        const QString token = login();
        m_server->setFault(kChannels, {{"status", 500}, {"times", 2}});
        QCOMPARE(api("GET", kChannels, {}, token).status, 500);
        QCOMPARE(api("GET", kChannels, {}, token).status, 500);
        QCOMPARE(api("GET", kChannels, {}, token).status, 200);
        // (A delay alone is what orders the pictures in tst_remoteimages; a reset clearing the
        // faults is what every network test's init relies on.)
        const Answer bad = send("POST", m_server->baseUrl() + "/dev/faults",
                                R"({"route": "/api/auth", "bodyKind": "enormous"})");
        QCOMPARE(bad.status, 400);

        DevServer::Options options;
        options.contentDir = contentDir();
        options.extraArguments = QStringList{"--fault", "/api/auth={\"status\": 423}"};
        DevServer faulty(options);
        QCOMPARE(send("POST", faulty.baseUrl() + "/api/auth", "{}",
                      {{"x-lumora-api-key", "test-api-key"}})
                     .status,
                 423);
    }

    void survivesBadInput() {
        const Answer tooLarge =
            send("POST", m_server->baseUrl() + kActivity, QByteArray(9 * 1024 * 1024, '{'),
                 {{"x-lumora-api-key", "test-api-key"}});
        QCOMPARE(tooLarge.status, 413);
        QVERIFY(rawExchange("\x16\x03\x01 not http at all\r\n\r\n").startsWith("HTTP/1.1 400"));
        QVERIFY(rawExchange("GET /" + QByteArray(20000, 'a') + " HTTP/1.1\r\n\r\n")
                    .startsWith("HTTP/1.1 414"));
        QCOMPARE(api("POST", "/api/auth").status, 200);
        QVERIFY(m_server->isRunning());
    }

    void refusesBadCommandLines_data() {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("any address") << QStringList{"--host", "0.0.0.0"};
        QTest::newRow("LAN address") << QStringList{"--host", "192.168.1.10"};
        QTest::newRow("port out of range") << QStringList{"--port", "70000"};
        QTest::newRow("fault without JSON") << QStringList{"--fault", "/api/auth"};
        QTest::newRow("unknown option") << QStringList{"--verbose"};
        QTest::newRow("parent not a process id") << QStringList{"--parent-pid", "me"};
    }

    void refusesBadCommandLines() {
        QFETCH(QStringList, arguments);
        QProcess process;
        process.start(LUMORA_DEVSERVER_PATH, arguments);
        QVERIFY(process.waitForFinished(kTimeoutMs));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 2);
        QVERIFY(process.readAllStandardOutput().isEmpty());
    }

    void stopsWhenItsParentDies() {
        // A shell starts the server as its own child and is then killed outright, as a test
        // process that aborts would be.
        QProcess shell;
        shell.start("sh", {"-c", QStringLiteral("'%1' --port 0 --parent-pid $$ >/dev/null 2>&1 & "
                                                "echo $!; read wait")
                                     .arg(LUMORA_DEVSERVER_PATH)});
        QVERIFY(shell.waitForReadyRead(kTimeoutMs));
        const QString pid = QString::fromLatin1(shell.readLine()).trimmed();
        QVERIFY(pid.toInt() > 1);
        QFile stat("/proc/" + pid + "/stat");
        const auto alive = [&] {
            // A server that ended may linger as a zombie of whoever adopted it.
            stat.close();
            return stat.open(QIODevice::ReadOnly) && !stat.readAll().contains(") Z ");
        };
        QVERIFY(alive());
        shell.kill();
        QVERIFY(shell.waitForFinished(kTimeoutMs));
        QTRY_VERIFY_WITH_TIMEOUT(!alive(), kTimeoutMs);
    }

    void demoContentIsComplete() {
        DevServer demo;
        const QJsonArray channels =
            api("GET", kChannels, {}, login({}, &demo), &demo).json().array();
        QVERIFY(channels.size() >= 8);
        const QHash<QString, QByteArray> magic{
            {"mp4", "ftyp"}, {"png", "\x89PNG"}, {"jpg", "\xff\xd8"}, {"html", "<!doctype html>"}};
        int longest = 0, shortest = 1000, mostPages = 0, read = 0, unskippable = 0, videos = 0;
        auto check = [&](const QString& url) {
            QVERIFY2(url.startsWith(demo.baseUrl() + "/"), qPrintable(url));
            const Answer head = send("GET", url, {}, {{"Range", "bytes=0-15"}});
            QVERIFY2(head.status == 206, qPrintable(url));
            const QByteArray expected = magic.value(QFileInfo(url).suffix());
            QVERIFY2(head.body.mid(url.endsWith("mp4") ? 4 : 0).startsWith(expected),
                     qPrintable(url));
        };
        for (const auto& value : channels) {
            const QJsonObject channel = value.toObject();
            longest = qMax(longest, int(channel["title"].toString().size()));
            shortest = qMin(shortest, int(channel["title"].toString().size()));
            mostPages = qMax(mostPages, int(channel["pages"].toArray().size()));
            read += channel["status"] == "read";
            check(channel["profilePictureUrl"].toString());
            for (const auto& pageValue : channel["pages"].toArray()) {
                const QJsonObject page = pageValue.toObject();
                const bool video = page["type"] == "video";
                videos += video;
                unskippable += page["skippable"] == false;
                QVERIFY(page["duration"].toInt() >= 3 &&
                        page["duration"].toInt() <= (video ? 8 : 10));
                check(page["url"].toString());
                if (video) {
                    check(page["playcardUrl"].toString());
                }
                if (page.contains("swipeUpUrl")) {
                    check(page["swipeUpUrl"].toString());
                }
            }
        }
        QVERIFY(shortest <= 3);
        QVERIFY(longest >= 60);
        QCOMPARE(mostPages, 12);
        QVERIFY(read >= 1 && unskippable >= 1 && videos >= 3);
    }
};

QTEST_GUILESS_MAIN(tst_DevServer)
#include "tst_devserver.moc"
