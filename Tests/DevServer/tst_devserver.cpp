// What the SDK's tests and the demo rely on from lumora-devserver, beyond what the network tests
// exercise: byte ranges, safe file serving, fault lifetime, its own lifetime and the demo content.

#include "DevServer.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

using LumoraTest::DevServer;

namespace {

constexpr int kTimeoutMs = 20000;
constexpr int kClipSize = 1000;
const QString kChannels = QStringLiteral("/api/app/channel/channelsForUser");

struct Answer {
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

// A tiny content directory whose every byte the tests know.
const char* const kContent = R"([{"id": "alpha", "title": "Alpha", "profilePictureUrl": "clip.mp4",
  "pages": [{"id": "a1", "type": "video", "sortOrder": 1, "url": "clip.mp4", "duration": 5}]}])";

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
        if (!reply->isFinished()) {
            finished.wait(kTimeoutMs);
        }
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

    QString login(const DevServer* server = nullptr) {
        return api("POST", "/api/auth", {}, {}, server)
            .json()
            .object()
            .value("access_token")
            .toString();
    }

    /// Sends `request` as is over a new connection and returns all the server answered.
    QByteArray rawExchange(const QByteArray& request) {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, QUrl(m_server->baseUrl()).port());
        if (!socket.waitForConnected(kTimeoutMs)) {
            return {};
        }
        socket.write(request);
        // The request says "Connection: close": the server hangs up after answering.
        QByteArray answer;
        while (socket.waitForReadyRead(kTimeoutMs)) {
            answer += socket.readAll();
        }
        return answer + socket.readAll();
    }

private Q_SLOTS:
    void initTestCase() {
        QVERIFY(m_root.isValid());
        writeFile(contentDir() + "/channels.json", kContent);
        writeFile(contentDir() + "/clip.mp4", clipBytes());
        writeFile(m_root.filePath("secret.txt"), "outside the content directory");
        QVERIFY(QFile::link(m_root.filePath("secret.txt"), contentDir() + "/link.txt"));
        DevServer::Options options;
        options.contentDir = contentDir();
        m_server = std::make_unique<DevServer>(options);
    }

    void init() { m_server->reset(); }

    void mediaRanges_data() {
        QTest::addColumn<QByteArray>("range");
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("first");  // of the bytes answered
        QTest::addColumn<int>("length");
        QTest::newRow("no range") << QByteArray() << 200 << 0 << kClipSize;
        QTest::newRow("first ten bytes") << QByteArray("bytes=0-9") << 206 << 0 << 10;
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
        QTest::newRow("missing file") << QByteArray("/media/none.png") << 404 << QByteArray();
        QTest::newRow("dot-dot") << QByteArray("/media/../secret.txt") << 404 << QByteArray();
        QTest::newRow("encoded dot-dot")
            << QByteArray("/media/%2e%2e/secret.txt") << 404 << QByteArray();
        QTest::newRow("symbolic link out") << QByteArray("/media/link.txt") << 404 << QByteArray();
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

    void faultLifetime() {
        const QString token = login();
        m_server->setFault(kChannels, {{"status", 500}, {"times", 2}});
        QCOMPARE(api("GET", kChannels, {}, token).status, 500);
        QCOMPARE(api("GET", kChannels, {}, token).status, 500);
        QCOMPARE(api("GET", kChannels, {}, token).status, 200);
        // A reset clearing the faults is what every network test's init relies on.
        m_server->setFault(kChannels, {{"status", 500}});
        m_server->reset();
        QCOMPARE(api("GET", kChannels, {}, login()).status, 200);
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
        const QJsonArray channels = api("GET", kChannels, {}, login(&demo), &demo).json().array();
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
