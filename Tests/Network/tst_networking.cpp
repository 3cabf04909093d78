#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSslCertificate>
#include <QSslConfiguration>

#include "ApiTestCase.h"
#include "Services/NetworkingService.h"
#include "TestSupport.h"

using namespace LumoraSDK;
using LumoraTest::Outcome;

namespace {
struct Result {
    std::optional<HttpResponse> response;
    std::optional<QByteArray> data;
    bool ok = false;
};

NetworkingService::Completion into(Outcome<Result>& outcome) {
    return [&outcome](const std::optional<HttpResponse>& r, const std::optional<QByteArray>& d,
                      bool ok) {
        outcome.set({r, d, ok});
    };
}
}  // namespace

class NetworkingTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        qputenv("LUMORA_SDK_LOG_LEVEL", "1");  // before the logger's first use
        UserDefaults::setStandardLocation(m_dir.filePath(QStringLiteral("defaults.json")));
        QVERIFY(m_server.isRunning());
        LumoraTest::pointSdkAt(m_server.baseUrl(), m_dir);
        Lumora::sharedInstance().initialize(m_server.apiKey(), [] {});
    }

    void init() { m_server.reset(); }

    void standardHeadersCarryKeyAndTokenWhenHeld_data() {
        QTest::addColumn<QString>("apiKey");
        QTest::addColumn<QString>("token");
        QTest::newRow("key and token") << "test-api-key"
                                       << "tok-1";
        QTest::newRow("key, empty token") << "test-api-key"
                                          << "";
        QTest::newRow("no key, no token") << QString() << QString();
    }

    void standardHeadersCarryKeyAndTokenWhenHeld() {
        QFETCH(QString, apiKey);
        QFETCH(QString, token);
        UserDefaults& store = DatabaseService::sharedInstance().userDefaults();
        store.setValue(DatabaseService::Key::apiKey,
                       apiKey.isNull() ? QVariant() : QVariant(apiKey));
        store.setValue(DatabaseService::Key::accessToken,
                       token.isNull() ? QVariant() : QVariant(token));

        Outcome<Result> outcome;
        NetworkingService::sharedInstance().performGetRequest(
            m_server.baseUrl() + QStringLiteral("/api/app/channel/channelsForUser"),
            HttpHeaders{{QStringLiteral("a"), QStringLiteral("1")}}, std::nullopt, into(outcome));
        QTRY_COMPARE(outcome.calls.load(), 1);
        QVERIFY(!outcome.onMainThread);  // completions arrive on the network thread

        const QJsonObject request = m_server.requests().last().toObject();
        QCOMPARE(request.value(QStringLiteral("query")).toString(), QStringLiteral("a=1"));
        const QJsonObject headers = request.value(QStringLiteral("headers")).toObject();
        const QString version = *Lumora::version();
        QCOMPARE(headers.value(QStringLiteral("ClientPlatform")).toString(), QStringLiteral("iOS"));
        QCOMPARE(headers.value(QStringLiteral("accept")).toString(),
                 QStringLiteral("application/json"));
        QCOMPARE(headers.value(QStringLiteral("Content-Type")).toString(),
                 QStringLiteral("application/json"));
        QCOMPARE(headers.value(QStringLiteral("ClientVersion")).toString(), version);
        QCOMPARE(headers.value(QStringLiteral("User-Agent")).toString(),
                 QStringLiteral("Lumora Stories SDK - Client [iOS] - Version [%1]").arg(version));
        QCOMPARE(headers.value(QStringLiteral("x-lumora-api-key")).toString(), apiKey);
        QCOMPARE(headers.contains(QStringLiteral("x-lumora-api-key")), !apiKey.isEmpty());
        QCOMPARE(headers.value(QStringLiteral("Authorization")).toString(),
                 token.isEmpty() ? QString() : QStringLiteral("Bearer ") + token);
        store.setValue(DatabaseService::Key::apiKey, m_server.apiKey());
    }

    void callerHeadersReplaceTheStandardSet() {
        DatabaseService::sharedInstance().userDefaults().setValue(DatabaseService::Key::accessToken,
                                                                  QStringLiteral("tok"));
        Outcome<Result> outcome;
        NetworkingService::sharedInstance().performPostRequest(
            m_server.baseUrl() + QStringLiteral("/api/app/activity/recordActivity"), QJsonObject{},
            HttpHeaders{{QStringLiteral("X-Only"), QStringLiteral("this")}}, into(outcome));
        QTRY_COMPARE(outcome.calls.load(), 1);
        const QJsonObject headers =
            m_server.requests().last().toObject().value(QStringLiteral("headers")).toObject();
        QCOMPARE(headers.value(QStringLiteral("X-Only")).toString(), QStringLiteral("this"));
        for (const char* standard :
             {"x-lumora-api-key", "Authorization", "ClientPlatform", "ClientVersion"}) {
            QVERIFY2(!headers.contains(QLatin1String(standard)), standard);
        }
        QVERIFY(!headers.value(QStringLiteral("User-Agent"))
                     .toString()
                     .contains(QStringLiteral("Lumora")));
        QCOMPARE(outcome.get().response->statusCode, 401);  // without the key the server refuses
        QVERIFY(!outcome.get().ok);
    }

    void statusTable_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<int>("error");
        const int unknown = int(RequestStatusError::Unknown);
        for (int status : {200, 201, 204}) {
            QTest::addRow("%d", status) << status << true << -1;
        }
        for (int status : {202, 203, 206, 301, 304, 402, 405, 422, 424, 501, 503}) {
            QTest::addRow("%d", status) << status << false << unknown;
        }
        QTest::newRow("400") << 400 << false << int(RequestStatusError::BadRequest);
        QTest::newRow("401") << 401 << false << int(RequestStatusError::Unauthorized);
        QTest::newRow("403") << 403 << false << int(RequestStatusError::Forbidden);
        QTest::newRow("404") << 404 << false << int(RequestStatusError::NotFound);
        QTest::newRow("423") << 423 << false << int(RequestStatusError::Locked);
        QTest::newRow("500") << 500 << false << int(RequestStatusError::InternalServerError);
    }

    void statusTable() {
        QFETCH(int, status);
        QFETCH(bool, ok);
        QFETCH(int, error);
        const QString route = QStringLiteral("/api/app/viewingHistory/recordViewingHistory");
        m_server.setFault(route, {{QStringLiteral("status"), status},
                                  {QStringLiteral("body"), QStringLiteral("{}")}});
        Outcome<Result> transport;
        NetworkingService::sharedInstance().performPostRequest(
            m_server.baseUrl() + route, QJsonObject{}, std::nullopt, into(transport));
        QTRY_COMPARE(transport.calls.load(), 1);
        QCOMPARE(transport.get().ok, ok);
        QCOMPARE(transport.get().response->statusCode, status);

        Outcome<int> mapped;
        Lumora::sharedInstance().requestRecordViewingHistory(
            QStringLiteral("p"), QStringLiteral("c"), [&] { mapped.set(-1); },
            [&](const RequestError& e) { mapped.set(int(std::get<RequestStatusError>(e))); });
        QTRY_COMPARE(mapped.calls.load(), 1);
        QCOMPARE(mapped.get(), error);
    }

    void droppedConnectionHasNoResponseAndMapsToUnknown() {
        m_server.setFault(QStringLiteral("/api/app/channel/channelsForUser"),
                          {{QStringLiteral("drop"), true}});
        LumoraTest::LogCapture log;
        Outcome<int> mapped;
        Lumora::sharedInstance().requestGetChannels(
            [&](const QList<Channel>&) { mapped.set(-1); },
            [&](const RequestError& e) { mapped.set(int(std::get<RequestStatusError>(e))); });
        QTRY_COMPARE(mapped.calls.load(), 1);
        QCOMPARE(mapped.get(), int(RequestStatusError::Unknown));
        QVERIFY(log.contains(QStringLiteral("GET response error: ")));
    }

    void unusablePaths() {
        // A POST that cannot form a URL answers at once, on the calling thread, with no response.
        Outcome<Result> post;
        NetworkingService::sharedInstance().performPostRequest(
            QStringLiteral("not a url"), QJsonObject{}, std::nullopt, into(post));
        QCOMPARE(post.calls.load(), 1);
        QVERIFY(post.onMainThread);
        QVERIFY(!post.get().response);

        // A GET that cannot form a URL is dropped silently: a later request completes, it never
        // does.
        Outcome<Result> silent;
        NetworkingService::sharedInstance().performGetRequest(QStringLiteral("::"), std::nullopt,
                                                              std::nullopt, into(silent));
        Outcome<Result> later;
        NetworkingService::sharedInstance().performGetRequest(
            m_server.baseUrl() + QStringLiteral("/dev/events"), std::nullopt, std::nullopt,
            into(later));
        QTRY_COMPARE(later.calls.load(), 1);
        QCoreApplication::processEvents();
        QCOMPARE(silent.calls.load(), 0);
        QCOMPARE(m_server.requests().size(), 0);
    }

    void hostileBodiesNeverCrash_data() {
        QTest::addColumn<QJsonObject>("fault");
        QTest::newRow("truncated")
            << QJsonObject{{QStringLiteral("bodyKind"), QStringLiteral("truncated")}};
        QTest::newRow("malformed")
            << QJsonObject{{QStringLiteral("bodyKind"), QStringLiteral("malformed")}};
        QTest::newRow("deeply nested")
            << QJsonObject{{QStringLiteral("bodyKind"), QStringLiteral("nested")}};
        QTest::newRow("invalid UTF-8")
            << QJsonObject{{QStringLiteral("bodyKind"), QStringLiteral("invalid-utf8")}};
        QTest::newRow("object wrapping the list")
            << QJsonObject{{QStringLiteral("bodyKind"), QStringLiteral("wrong-type")}};
        QTest::newRow("HTML") << QJsonObject{
            {QStringLiteral("body"), QStringLiteral("<html><body>oops</body></html>")},
            {QStringLiteral("contentType"), QStringLiteral("text/html")}};
        QTest::newRow("empty 204")
            << QJsonObject{{QStringLiteral("status"), 204}, {QStringLiteral("body"), QString()}};
    }

    void hostileBodiesNeverCrash() {
        QFETCH(QJsonObject, fault);
        m_server.setFault(QStringLiteral("/api/app/channel/channelsForUser"), fault);
        LumoraTest::LogCapture log;
        Outcome<int> channels;
        Lumora::sharedInstance().requestGetChannels(
            [&](const QList<Channel>& list) { channels.set(list.size()); },
            [&](const RequestError&) { channels.set(-1); });
        QTRY_COMPARE_WITH_TIMEOUT(channels.calls.load(), 1, 60000);
        // Anything that is not a list of channel objects is an empty list, not an error.
        QCOMPARE(channels.get(), 0);
        QVERIFY(log.contains(
            QStringLiteral("requestGetChannels(onComplete:onError:) - cannot convert data to JSON. "
                           "Proceeding with empty collection.")));
    }

    void fiftyMegabyteListStillDecodes() {
        m_server.setFault(QStringLiteral("/api/app/channel/channelsForUser"),
                          {{QStringLiteral("bodyKind"), QStringLiteral("huge")}});
        Outcome<int> channels;
        Lumora::sharedInstance().requestGetChannels(
            [&](const QList<Channel>& list) { channels.set(list.size()); },
            [&](const RequestError&) { channels.set(-1); });
        QTRY_COMPARE_WITH_TIMEOUT(channels.calls.load(), 1, 60000);
        QVERIFY(channels.get() >= 8);
    }

    void tlsIsVerified() {
        LumoraTest::DevServer::Options options;
        options.tls = true;
        LumoraTest::DevServer secure(options);
        QVERIFY(secure.isRunning());
        QVERIFY(secure.baseUrl().startsWith(QStringLiteral("https://")));
        const QString url = secure.baseUrl() + QStringLiteral("/api/app/channel/channelsForUser");

        Outcome<Result> untrusted;
        NetworkingService::sharedInstance().performGetRequest(url, std::nullopt, std::nullopt,
                                                              into(untrusted));
        QTRY_COMPARE(untrusted.calls.load(), 1);
        QVERIFY(!untrusted.get().response);
        QVERIFY(!untrusted.get().ok);

        QSslConfiguration config = QSslConfiguration::defaultConfiguration();
        config.addCaCertificates(QSslCertificate::fromPath(secure.caCertificatePath()));
        QSslConfiguration::setDefaultConfiguration(config);
        // Qt keeps the refused connection for that host name, so come back by the other name the
        // certificate carries.
        QString byName = url;
        byName.replace(QStringLiteral("127.0.0.1"), QStringLiteral("localhost"));
        Outcome<Result> trusted;
        NetworkingService::sharedInstance().performGetRequest(byName, std::nullopt, std::nullopt,
                                                              into(trusted));
        QTRY_COMPARE(trusted.calls.load(), 1);
        QVERIFY(trusted.get().response.has_value());
        QCOMPARE(trusted.get().response->statusCode,
                 401);  // reached the server: the key is not its key
    }

    void redirectsAreFollowedLikeTheUrlSession_data() {
        QTest::addColumn<QString>("route");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("location");  // "{cross}" stands for this server by another name
        QTest::addColumn<QByteArray>("method");
        QTest::addColumn<int>("sent");  // requests the server sees
        QTest::addColumn<QByteArray>("lastMethod");
        QTest::addColumn<bool>("lastHasCredentials");
        QTest::addColumn<int>("finalStatus");  // 0: no response at all
        const QString channels = QStringLiteral("/api/app/channel/channelsForUser");
        const QString activity = QStringLiteral("/api/app/activity/recordActivity");
        QTest::newRow("same origin 302: followed with key and token")
            << "/api/old" << 302 << channels << QByteArray("GET") << 2 << QByteArray("GET") << true
            << 200;
        QTest::newRow("same origin 308: the POST and its body go along")
            << "/api/old" << 308 << activity << QByteArray("POST") << 2 << QByteArray("POST")
            << true << 200;
        QTest::newRow("303 after a POST: a GET")
            << "/api/old" << 303 << channels << QByteArray("POST") << 2 << QByteArray("GET") << true
            << 200;
        QTest::newRow("cross origin 307: followed without key and token")
            << "/api/old" << 307 << "{cross}" + channels << QByteArray("GET") << 2
            << QByteArray("GET") << false << 401;
        QTest::newRow("a loop stops after ten hops")
            << "/api/loop" << 302 << "/api/loop" << QByteArray("GET") << 11 << QByteArray("GET")
            << true << 0;
        QTest::newRow("no Location: the 301 is the answer")
            << "/api/old" << 301 << QString() << QByteArray("GET") << 1 << QByteArray("GET") << true
            << 301;
    }

    void redirectsAreFollowedLikeTheUrlSession() {
        QFETCH(QString, route);
        QFETCH(int, status);
        QFETCH(QString, location);
        QFETCH(QByteArray, method);
        QFETCH(int, sent);
        QFETCH(QByteArray, lastMethod);
        QFETCH(bool, lastHasCredentials);
        QFETCH(int, finalStatus);
        QString cross = m_server.baseUrl();
        cross.replace(QStringLiteral("127.0.0.1"), QStringLiteral("localhost"));
        QJsonObject fault{{QStringLiteral("status"), status}};
        if (!location.isEmpty()) {
            fault.insert(QStringLiteral("location"),
                         QString(location).replace(QStringLiteral("{cross}"), cross));
        }
        m_server.setFault(route, fault);
        const QString token = issueToken();
        const int before = int(m_server.requests().size());

        Outcome<Result> outcome;
        const QJsonObject body{{QStringLiteral("activityItemType"), QStringLiteral("skipPage")},
                               {QStringLiteral("pageStoryId"), QStringLiteral("p")},
                               {QStringLiteral("channelStoryId"), QStringLiteral("c")}};
        if (method == "POST") {
            NetworkingService::sharedInstance().performPostRequest(m_server.baseUrl() + route, body,
                                                                   std::nullopt, into(outcome));
        } else {
            NetworkingService::sharedInstance().performGetRequest(
                m_server.baseUrl() + route, std::nullopt, std::nullopt, into(outcome));
        }
        QTRY_COMPARE(outcome.calls.load(), 1);
        QTRY_COMPARE(m_server.requests().size(), before + sent);
        QCOMPARE(outcome.calls.load(), 1);

        QCOMPARE(outcome.get().response.has_value(), finalStatus != 0);
        QCOMPARE(outcome.get().ok, finalStatus == 200);
        if (finalStatus != 0) {
            QCOMPARE(outcome.get().response->statusCode, finalStatus);
        }
        const QJsonObject last = m_server.requests().last().toObject();
        QCOMPARE(last.value(QStringLiteral("method")).toString().toLatin1(), lastMethod);
        const QJsonObject headers = last.value(QStringLiteral("headers")).toObject();
        QCOMPARE(headers.contains(QStringLiteral("x-lumora-api-key")), lastHasCredentials);
        QCOMPARE(headers.value(QStringLiteral("Authorization")).toString(),
                 lastHasCredentials ? QStringLiteral("Bearer ") + token : QString());
        QCOMPARE(headers.value(QStringLiteral("ClientPlatform")).toString(), QStringLiteral("iOS"));
        if (lastMethod == "POST") {
            QCOMPARE(QJsonDocument::fromJson(last.value(QStringLiteral("body")).toString().toUtf8())
                         .object(),
                     body);
        }
    }

    void redirectFromHttpsToHttpIsRefused() {
        LumoraTest::DevServer::Options options;
        options.tls = true;
        LumoraTest::DevServer secure(options);
        QVERIFY(secure.isRunning());
        QSslConfiguration config = QSslConfiguration::defaultConfiguration();
        config.addCaCertificates(QSslCertificate::fromPath(secure.caCertificatePath()));
        QSslConfiguration::setDefaultConfiguration(config);
        const QString channels = QStringLiteral("/api/app/channel/channelsForUser");
        secure.setFault(QStringLiteral("/api/old"),
                        {{QStringLiteral("status"), 302},
                         {QStringLiteral("location"), m_server.baseUrl() + channels}});

        LumoraTest::LogCapture log;
        Outcome<Result> outcome;
        NetworkingService::sharedInstance().performGetRequest(
            secure.baseUrl() + QStringLiteral("/api/old"), std::nullopt, std::nullopt,
            into(outcome));
        QTRY_COMPARE(outcome.calls.load(), 1);
        QVERIFY(!outcome.get().response);
        QVERIFY(!outcome.get().ok);
        QCOMPARE(secure.requests().size(), 1);
        QCOMPARE(m_server.requests().size(), 0);  // the plain server never heard of it
        QVERIFY(log.contains(
            QStringLiteral("GET response error: refused redirect from HTTPS to HTTP")));
    }

private:
    /// A token the server knows, stored where the standard headers take it from.
    QString issueToken() {
        Outcome<Result> auth;
        NetworkingService::sharedInstance().performPostRequest(
            m_server.baseUrl() + QStringLiteral("/api/auth"), QJsonObject{}, std::nullopt,
            into(auth));
        [&] { QTRY_COMPARE(auth.calls.load(), 1); }();
        const QString token = QJsonDocument::fromJson(auth.get().data.value_or(QByteArray()))
                                  .object()
                                  .value(QStringLiteral("access_token"))
                                  .toString();
        DatabaseService::sharedInstance().userDefaults().setValue(DatabaseService::Key::accessToken,
                                                                  token);
        return token;
    }

    QTemporaryDir m_dir;
    LumoraTest::DevServer m_server;
};

QTEST_GUILESS_MAIN(NetworkingTest)
#include "tst_networking.moc"
