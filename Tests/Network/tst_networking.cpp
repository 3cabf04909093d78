// The SDK's network layer and its API calls against lumora-devserver: headers, statuses and
// bodies as the server receives and answers them, registration, channels and reports.

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QSslCertificate>
#include <QSslConfiguration>

#include "ApiTestCase.h"
#include "Models/Channel.h"
#include "Models/UserInput.h"
#include "Platform/NotificationCenter.h"
#include "Services/AnalyticsService.h"
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

UserDefaults& store() {
    return DatabaseService::sharedInstance().userDefaults();
}

QJsonObject lastBody(const LumoraTest::DevServer& server) {
    return QJsonDocument::fromJson(
               server.requests().last().toObject().value("body").toString().toUtf8())
        .object();
}
}  // namespace

class NetworkingTest : public QObject {
    Q_OBJECT

    LumoraTest::SdkOnDevServer m_sdk;
    LumoraTest::DevServer& m_server = m_sdk.server();

private slots:
    void init() {
        m_server.reset();
        Lumora::sharedInstance().logout([] {});
        Lumora::sharedInstance().initialize(m_server.apiKey(), [] {});
    }

    void standardHeadersCarryKeyAndTokenWhenHeld_data() {
        QTest::addColumn<QString>("apiKey");
        QTest::addColumn<QString>("token");
        QTest::newRow("key and token") << "test-api-key"
                                       << "tok-1";
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
        QCOMPARE(headers.value("Authorization").toString(),
                 token.isEmpty() ? QString() : QStringLiteral("Bearer ") + token);
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
    }

    void statusTable_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("error");  // -1: success
        const int unknown = int(RequestStatusError::Unknown);
        for (int status : {200, 201, 204}) {
            QTest::addRow("%d", status) << status << -1;
        }
        for (int status : {202, 203, 206, 301, 304, 402, 405, 422, 424, 501, 503}) {
            QTest::addRow("%d", status) << status << unknown;
        }
        QTest::newRow("400") << 400 << int(RequestStatusError::BadRequest);
        QTest::newRow("401") << 401 << int(RequestStatusError::Unauthorized);
        QTest::newRow("403") << 403 << int(RequestStatusError::Forbidden);
        QTest::newRow("404") << 404 << int(RequestStatusError::NotFound);
        QTest::newRow("423") << 423 << int(RequestStatusError::Locked);
        QTest::newRow("500") << 500 << int(RequestStatusError::InternalServerError);
    }

    void statusTable() {
        QFETCH(int, status);
        QFETCH(int, error);
        m_server.setFault("/api/app/viewingHistory/recordViewingHistory",
                          {{"status", status}, {"body", "{}"}});
        Outcome<int> mapped;
        Lumora::sharedInstance().requestRecordViewingHistory(
            "p", "c", [&] { mapped.set(-1); },
            [&](const RequestError& e) { mapped.set(int(std::get<RequestStatusError>(e))); });
        QTRY_COMPARE(mapped.calls.load(), 1);
        QCOMPARE(mapped.get(), error);
    }

    void unusablePostUrlAnswersAtOnce() {
        // A POST that cannot form a URL answers at once, on the calling thread, with no response.
        Outcome<Result> post;
        NetworkingService::sharedInstance().performPostRequest("not a url", QJsonObject{},
                                                               std::nullopt, into(post));
        QCOMPARE(post.calls.load(), 1);
        QVERIFY(post.onMainThread);
        QVERIFY(!post.get().response);
    }

    // What a channel list answer becomes: anything that is not a list of channel objects is an
    // empty list, not an error; a dropped connection and a refused token are errors.
    void channelListAnswers_data() {
        QTest::addColumn<QJsonObject>("fault");
        QTest::addColumn<int>("result");  // channels (at least, if any), or -1 - the error
        for (const char* kind :
             {"truncated", "malformed", "nested", "invalid-utf8", "wrong-type"}) {
            QTest::addRow("%s", kind) << QJsonObject{{"bodyKind", kind}} << 0;
        }
        QTest::newRow("empty 204") << QJsonObject{{"status", 204}, {"body", ""}} << 0;
        QTest::newRow("fifty megabytes still decode") << QJsonObject{{"bodyKind", "huge"}} << 8;
        QTest::newRow("dropped connection: no response, unknown error")
            << QJsonObject{{"drop", true}} << -1 - int(RequestStatusError::Unknown);
        QTest::newRow("no valid token: an error, not an empty list")
            << QJsonObject() << -1 - int(RequestStatusError::Unauthorized);
    }

    void channelListAnswers() {
        QFETCH(QJsonObject, fault);
        QFETCH(int, result);
        if (!fault.isEmpty()) {
            m_server.setFault("/api/app/channel/channelsForUser", fault);
        }
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
    }

    void tlsIsVerifiedAndNeverDowngraded() {
        LumoraTest::DevServer::Options options;
        options.tls = true;
        LumoraTest::DevServer secure(options);
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
        const QString byName = QString(secure.baseUrl()).replace("127.0.0.1", "localhost");
        Outcome<Result> trusted;
        NetworkingService::sharedInstance().performGetRequest(
            byName + "/api/app/channel/channelsForUser", std::nullopt, std::nullopt, into(trusted));
        QTRY_COMPARE(trusted.calls.load(), 1);
        QVERIFY(trusted.get().response.has_value());
        QCOMPARE(trusted.get().response->statusCode,
                 401);  // reached the server: the key is not its key

        // A redirect from HTTPS to HTTP is refused: the plain server never hears of it.
        secure.setFault("/api/old", {{"status", 302}, {"location", m_server.baseUrl() + "/a"}});
        LumoraTest::LogCapture log;
        Outcome<Result> downgraded;
        NetworkingService::sharedInstance().performGetRequest(byName + "/api/old", std::nullopt,
                                                              std::nullopt, into(downgraded));
        QTRY_COMPARE(downgraded.calls.load(), 1);
        QVERIFY(!downgraded.get().response);
        QCOMPARE(m_server.requests().size(), 0);
        QVERIFY(log.contains("refused redirect from HTTPS to HTTP"));
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
        if (finalStatus != 0) {
            QCOMPARE(outcome.get().response->statusCode, finalStatus);
        }
        const QJsonObject last = m_server.requests().last().toObject();
        QCOMPARE(last.value(QStringLiteral("method")).toString().toLatin1(), lastMethod);
        const QJsonObject headers = last.value(QStringLiteral("headers")).toObject();
        QCOMPARE(headers.contains(QStringLiteral("x-lumora-api-key")), lastHasCredentials);
        QCOMPARE(headers.value(QStringLiteral("Authorization")).toString(),
                 lastHasCredentials ? QStringLiteral("Bearer ") + token : QString());
        if (lastMethod == "POST") {
            QCOMPARE(QJsonDocument::fromJson(last.value(QStringLiteral("body")).toString().toUtf8())
                         .object(),
                     body);
        }
    }

    void registrationStoresTheTokenAndPostsTheUserChangeFirst() {
        QStringList order;
        int observer = 0;
        NotificationCenter::defaultCenter().addObserver(
            &observer, Lumora::userIdDidChange, [&](const Notification&) {
                order << QStringLiteral("user changed, %1 requests sent")
                             .arg(m_server.requests().size());
            });
        Outcome<bool> done;
        Lumora::sharedInstance().setUserDetails(
            UserInput{"viewer-1"}, [&] { done.set(true); },
            [&](const RequestError&) { done.set(false); });
        NotificationCenter::defaultCenter().removeObserver(&observer);
        QTRY_COMPARE(done.calls.load(), 1);
        QVERIFY(done.get());
        QCOMPARE(order, QStringList({"user changed, 0 requests sent"}));

        const QJsonObject request = m_server.requests().last().toObject();
        QCOMPARE(request.value("path").toString(), "/api/auth");
        QCOMPARE(lastBody(m_server), QJsonObject({{"externalId", "viewer-1"}}));
        QVERIFY(!store().string(DatabaseService::Key::accessToken).value_or(QString()).isEmpty());
        QCOMPARE(Lumora::currentUserId(), std::optional<QString>("viewer-1"));

        // With a token held, a second call only updates the external id and reports nothing.
        Outcome<bool> second;
        Lumora::sharedInstance().setUserDetails(
            UserInput{"viewer-2"}, [&] { second.set(true); },
            [&](const RequestError&) { second.set(false); });
        QTRY_COMPARE(m_server.requests().size(), 2);
        QCOMPARE(m_server.requests().last().toObject().value("path").toString(),
                 "/api/app/user/updateExternalId");
        QCOMPARE(lastBody(m_server), QJsonObject({{"externalId", "viewer-2"}}));
        QTRY_VERIFY(m_server.requests().last().toObject().value(QStringLiteral("status")).toInt() ==
                    200);
        QCoreApplication::processEvents();
        QCOMPARE(second.calls.load(), 0);
    }

    void registrationAnswers_data() {
        QTest::addColumn<QJsonObject>("fault");
        QTest::addColumn<bool>("succeeds");
        QTest::addColumn<bool>("tokenKept");
        QTest::newRow("answer without access_token removes the token")
            << QJsonObject{{"body", QStringLiteral(R"({"expires_in": 10})")}} << true << false;
        QTest::newRow("204 without a body")
            << QJsonObject{{"status", 204}, {"body", QString()}} << false << true;
    }

    void registrationAnswers() {
        QFETCH(QJsonObject, fault);
        QFETCH(bool, succeeds);
        QFETCH(bool, tokenKept);
        store().setValue(DatabaseService::Key::accessToken, "old-token");
        m_server.setFault("/api/auth", fault);
        Outcome<QString> outcome;
        Lumora::sharedInstance().requestSetUserDetails(
            UserInput{}, [&] { outcome.set("ok"); },
            [&](const RequestError& e) { outcome.set(errorDescription(e).value_or(QString())); });
        QTRY_COMPARE(outcome.calls.load(), 1);
        QCOMPARE(outcome.get() == QLatin1String("ok"), succeeds);
        if (!succeeds) {
            QCOMPARE(outcome.get(), "Cannot convert json to Authorization entity.");
        }
        QCOMPARE(store().string(DatabaseService::Key::accessToken),
                 tokenKept ? std::optional<QString>(QStringLiteral("old-token")) : std::nullopt);
        QCOMPARE(lastBody(m_server), QJsonObject());  // no external id: an empty object
    }

    // The list comes decoded in the server's order; viewing the last page of an unread channel
    // makes the next list say it is read.
    void channelsArriveDecodedInServerOrder() {
        registerUser("viewer-3");
        const QList<Channel> channels = getChannels();
        QVERIFY(channels.size() >= 8);
        const QJsonArray served =
            QJsonDocument::fromJson(fetch("/api/app/channel/channelsForUser")).array();
        QCOMPARE(channels.size(), served.size());
        for (int i = 0; i < channels.size(); ++i) {
            QCOMPARE(channels[i].id, std::optional<QString>(served[i]["id"].toString()));
            QVERIFY(!channels[i].pages.isEmpty());
        }

        const auto unread = std::find_if(channels.begin(), channels.end(),
                                         [](const Channel& c) { return !c.isRead(); });
        QVERIFY(unread != channels.end());
        Outcome<bool> viewed;
        Lumora::sharedInstance().requestRecordViewingHistory(
            *unread->pages.last().id, *unread->id, [&] { viewed.set(true); },
            [&](const RequestError&) { viewed.set(false); });
        QTRY_COMPARE(viewed.calls.load(), 1);
        QVERIFY(viewed.get());
        const QList<Channel> after = getChannels();
        const auto again = std::find_if(after.begin(), after.end(),
                                        [&](const Channel& c) { return c.id == unread->id; });
        QVERIFY(again != after.end() && again->isRead());
    }

    void reportsCarryTheirExactKeys() {
        registerUser("viewer-4");
        Outcome<bool> history;
        Lumora::sharedInstance().requestRecordViewingHistory(
            "page-1", "chan-1", [&] { history.set(true); },
            [&](const RequestError&) { history.set(false); });
        QTRY_COMPARE(history.calls.load(), 1);
        QVERIFY(history.get());
        AnalyticsService::sharedInstance().trackActivity(ActivityType::SwipedUp, std::nullopt,
                                                         std::nullopt);
        AnalyticsService::sharedInstance().trackActivity(ActivityType::SkippedPage, "chan-1",
                                                         "page-1");
        QTRY_COMPARE(m_server.events().size(), 3);
        const QJsonArray events = m_server.events();
        QCOMPARE(events[0]["body"].toObject(),
                 QJsonObject({{"pageStoryId", "page-1"}, {"ChannelStoryId", "chan-1"}}));
        // Activities may arrive in either order; each is recorded once.
        QSet<QString> activities;
        for (int i = 1; i < 3; ++i) {
            activities << QString::fromUtf8(
                QJsonDocument(events[i]["body"].toObject()).toJson(QJsonDocument::Compact));
        }
        QVERIFY(activities.contains(
            R"({"activityItemType":"swipeUpOnPage","channelStoryId":"","pageStoryId":""})"));
        QVERIFY(activities.contains(
            R"({"activityItemType":"skipPage","channelStoryId":"chan-1","pageStoryId":"page-1"})"));
    }

    void failedActivityIsLoggedAndDropped() {
        registerUser("viewer-5");
        m_server.setFault("/api/app/activity/recordActivity", {{"status", 500}});
        LumoraTest::LogCapture log;
        AnalyticsService::sharedInstance().trackActivity(ActivityType::OpenedChannel, "c", "p");
        QTRY_VERIFY(log.contains("openedChannel RequestStatusError.InternalServerError"));
        QCOMPARE(m_server.events().size(), 0);
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

    void registerUser(const QString& id) {
        Outcome<bool> done;
        Lumora::sharedInstance().requestSetUserDetails(
            UserInput{id}, [&] { done.set(true); }, [&](const RequestError&) { done.set(false); });
        QTRY_COMPARE(done.calls.load(), 1);
        QVERIFY(done.get());
    }

    QList<Channel> getChannels() {
        Outcome<QList<Channel>> outcome;
        Lumora::sharedInstance().requestGetChannels(
            [&](const QList<Channel>& list) { outcome.set(list); }, [](const RequestError&) {});
        [&] { QTRY_COMPARE(outcome.calls.load(), 1); }();
        return outcome.calls.load() ? outcome.get() : QList<Channel>();
    }

    QByteArray fetch(const QString& path) {
        Outcome<Result> answer;
        NetworkingService::sharedInstance().performGetRequest(
            m_server.baseUrl() + path, std::nullopt, std::nullopt, into(answer));
        [&] { QTRY_COMPARE(answer.calls.load(), 1); }();
        return answer.calls.load() ? answer.get().data.value_or(QByteArray()) : QByteArray();
    }
};

QTEST_GUILESS_MAIN(NetworkingTest)
#include "tst_networking.moc"
