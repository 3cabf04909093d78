#include <QFile>
#include <QJsonArray>
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

    LumoraTest::SdkOnDevServer m_sdk;
    LumoraTest::DevServer& m_server = m_sdk.server();

private slots:
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
            m_server.baseUrl() + "/api/app/channel/channelsForUser", HttpHeaders{{"a", "1"}},
            std::nullopt, into(outcome));
        QTRY_COMPARE(outcome.calls.load(), 1);
        QVERIFY(!outcome.onMainThread);  // completions arrive on the network thread

        const QJsonObject request = m_server.requests().last().toObject();
        QCOMPARE(request.value("query").toString(), "a=1");
        const QJsonObject headers = request.value("headers").toObject();
        const QString version = *Lumora::version();
        QCOMPARE(headers.value("ClientPlatform").toString(), "iOS");
        QCOMPARE(headers.value("accept").toString(), "application/json");
        QCOMPARE(headers.value("Content-Type").toString(), "application/json");
        QCOMPARE(headers.value("ClientVersion").toString(), version);
        QCOMPARE(headers.value("User-Agent").toString(),
                 QStringLiteral("Lumora Stories SDK - Client [iOS] - Version [%1]").arg(version));
        QCOMPARE(headers.value("x-lumora-api-key").toString(), apiKey);
        QCOMPARE(headers.contains("x-lumora-api-key"), !apiKey.isEmpty());
        QCOMPARE(headers.value("Authorization").toString(),
                 token.isEmpty() ? QString() : QStringLiteral("Bearer ") + token);
        store.setValue(DatabaseService::Key::apiKey, m_server.apiKey());
    }

    void callerHeadersReplaceTheStandardSet() {
        DatabaseService::sharedInstance().userDefaults().setValue(DatabaseService::Key::accessToken,
                                                                  "tok");
        Outcome<Result> outcome;
        NetworkingService::sharedInstance().performPostRequest(
            m_server.baseUrl() + "/api/app/activity/recordActivity", QJsonObject{},
            HttpHeaders{{"X-Only", "this"}}, into(outcome));
        QTRY_COMPARE(outcome.calls.load(), 1);
        const QJsonObject headers =
            m_server.requests().last().toObject().value("headers").toObject();
        QCOMPARE(headers.value("X-Only").toString(), "this");
        for (const char* standard :
             {"x-lumora-api-key", "Authorization", "ClientPlatform", "ClientVersion"}) {
            QVERIFY2(!headers.contains(QLatin1String(standard)), standard);
        }
        QVERIFY(!headers.value("User-Agent").toString().contains("Lumora"));
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
        m_server.setFault(route, {{"status", status}, {"body", "{}"}});
        Outcome<Result> transport;
        NetworkingService::sharedInstance().performPostRequest(
            m_server.baseUrl() + route, QJsonObject{}, std::nullopt, into(transport));
        QTRY_COMPARE(transport.calls.load(), 1);
        QCOMPARE(transport.get().ok, ok);
        QCOMPARE(transport.get().response->statusCode, status);

        Outcome<int> mapped;
        Lumora::sharedInstance().requestRecordViewingHistory(
            "p", "c", [&] { mapped.set(-1); },
            [&](const RequestError& e) { mapped.set(int(std::get<RequestStatusError>(e))); });
        QTRY_COMPARE(mapped.calls.load(), 1);
        QCOMPARE(mapped.get(), error);
    }

    void unusablePaths() {
        // A POST that cannot form a URL answers at once, on the calling thread, with no response.
        Outcome<Result> post;
        NetworkingService::sharedInstance().performPostRequest("not a url", QJsonObject{},
                                                               std::nullopt, into(post));
        QCOMPARE(post.calls.load(), 1);
        QVERIFY(post.onMainThread);
        QVERIFY(!post.get().response);

        // A GET that cannot form a URL is dropped silently: a later request completes, it never
        // does.
        Outcome<Result> silent;
        NetworkingService::sharedInstance().performGetRequest("::", std::nullopt, std::nullopt,
                                                              into(silent));
        Outcome<Result> later;
        NetworkingService::sharedInstance().performGetRequest(
            m_server.baseUrl() + "/dev/events", std::nullopt, std::nullopt, into(later));
        QTRY_COMPARE(later.calls.load(), 1);
        QCoreApplication::processEvents();
        QCOMPARE(silent.calls.load(), 0);
        QCOMPARE(m_server.requests().size(), 0);
    }

    // What a channel list answer becomes: anything that is not a list of channel objects is an
    // empty list, not an error; a dropped connection and a refused token are errors.
    void channelListAnswers_data() {
        QTest::addColumn<QJsonObject>("fault");
        QTest::addColumn<int>("result");  // channels (at least, if any), or -1 - the error
        QTest::addColumn<QString>("logLine");
        const QString notJson = QStringLiteral(
            "requestGetChannels(onComplete:onError:) - cannot convert data to JSON. Proceeding "
            "with empty collection.");
        for (const char* kind :
             {"truncated", "malformed", "nested", "invalid-utf8", "wrong-type"}) {
            QTest::addRow("%s", kind) << QJsonObject{{"bodyKind", kind}} << 0 << notJson;
        }
        QTest::newRow("HTML") << QJsonObject{{"body", "<html><body>oops</body></html>"},
                                             {"contentType", "text/html"}}
                              << 0 << notJson;
        QTest::newRow("empty 204") << QJsonObject{{"status", 204}, {"body", ""}} << 0 << notJson;
        QTest::newRow("fifty megabytes still decode")
            << QJsonObject{{"bodyKind", "huge"}} << 8 << QString();
        QTest::newRow("dropped connection: no response, unknown error")
            << QJsonObject{{"drop", true}} << -1 - int(RequestStatusError::Unknown)
            << "GET response error: ";
        QTest::newRow("no valid token: an error, not an empty list")
            << QJsonObject() << -1 - int(RequestStatusError::Unauthorized) << QString();
    }

    void channelListAnswers() {
        QFETCH(QJsonObject, fault);
        QFETCH(int, result);
        QFETCH(QString, logLine);
        if (!fault.isEmpty()) {
            m_server.setFault("/api/app/channel/channelsForUser", fault);
        }
        LumoraTest::LogCapture log;
        Outcome<int> channels;
        Lumora::sharedInstance().requestGetChannels(
            [&](const QList<Channel>& list) { channels.set(int(list.size())); },
            [&](const RequestError& e) {
                channels.set(-1 - int(std::get<RequestStatusError>(e)));
            });
        QTRY_COMPARE_WITH_TIMEOUT(channels.calls.load(), 1, 60000);
        if (result > 0) {
            QVERIFY2(channels.get() >= result, qPrintable(QString::number(channels.get())));
        } else {
            QCOMPARE(channels.get(), result);
        }
        QVERIFY(logLine.isEmpty() || log.contains(logLine));
    }

    void tlsIsVerified() {
        LumoraTest::DevServer::Options options;
        options.tls = true;
        LumoraTest::DevServer secure(options);
        QVERIFY(secure.isRunning());
        QVERIFY(secure.baseUrl().startsWith("https://"));
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
        byName.replace("127.0.0.1", "localhost");
        Outcome<Result> trusted;
        NetworkingService::sharedInstance().performGetRequest(byName, std::nullopt, std::nullopt,
                                                              into(trusted));
        QTRY_COMPARE(trusted.calls.load(), 1);
        QVERIFY(trusted.get().response.has_value());
        QCOMPARE(trusted.get().response->statusCode,
                 401);  // reached the server: the key is not its key
        // The server's certificate holds for 127.0.0.1 too, where its control routes are asked.
        QCOMPARE(secure.requests().last()["status"].toInt(), 401);
    }
};

QTEST_GUILESS_MAIN(NetworkingTest)
#include "tst_networking.moc"
