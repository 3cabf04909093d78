#include <QJsonArray>
#include <QJsonObject>
#include <QSet>

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
UserDefaults& store() {
    return DatabaseService::sharedInstance().userDefaults();
}

QJsonObject lastBody(const LumoraTest::DevServer& server) {
    return QJsonDocument::fromJson(
               server.requests().last().toObject().value("body").toString().toUtf8())
        .object();
}
}  // namespace

class ApiTest : public QObject {
    Q_OBJECT

    LumoraTest::SdkOnDevServer m_sdk;
    LumoraTest::DevServer& m_server = m_sdk.server();

private slots:
    void init() {
        m_server.reset();
        Lumora::sharedInstance().logout([] {});
        Lumora::sharedInstance().initialize(m_server.apiKey(), [] {});
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
        QVERIFY(!done.onMainThread);
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
        QTest::newRow("empty object") << QJsonObject{{"body", "{}"}} << false << true;
        QTest::newRow("a list") << QJsonObject{{"body", "[]"}} << false << true;
    }

    void registrationAnswers() {
        QFETCH(QJsonObject, fault);
        QFETCH(bool, succeeds);
        QFETCH(bool, tokenKept);
        store().setValue(DatabaseService::Key::accessToken, "old-token");
        m_server.setFault("/api/auth", fault);
        LumoraTest::LogCapture log;
        Outcome<QString> outcome;
        Lumora::sharedInstance().requestSetUserDetails(
            UserInput{}, [&] { outcome.set("ok"); },
            [&](const RequestError& e) { outcome.set(errorDescription(e).value_or(QString())); });
        QTRY_COMPARE(outcome.calls.load(), 1);
        QCOMPARE(outcome.get() == QLatin1String("ok"), succeeds);
        if (!succeeds) {
            QCOMPARE(outcome.get(), "Cannot convert json to Authorization entity.");
            QVERIFY(
                log.contains(QStringLiteral("requestSetUserDetails(_:onComplete:onError:) - cannot "
                                            "convert data to Authorization.")));
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
        QVERIFY(std::any_of(channels.begin(), channels.end(),
                            [](const Channel& c) { return c.isRead(); }));
        QVERIFY(std::any_of(channels.begin(), channels.end(),
                            [](const Channel& c) { return c.pages.size() == 12; }));

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
            const QJsonObject body = events[i]["body"].toObject();
            QCOMPARE(body.keys(),
                     QStringList({"activityItemType", "channelStoryId", "pageStoryId"}));
            activities << QString::fromUtf8(QJsonDocument(body).toJson(QJsonDocument::Compact));
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
        QTRY_VERIFY(log.contains(
            QStringLiteral("LumoraSDK.AnalyticsService - trackActivity - requestRecordActivity "
                           "openedChannel RequestStatusError.InternalServerError")));
        QCOMPARE(m_server.events().size(), 0);
    }

private:
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
        Outcome<QByteArray> body;
        NetworkingService::sharedInstance().performGetRequest(
            m_server.baseUrl() + path, std::nullopt, std::nullopt,
            [&](const std::optional<HttpResponse>&, const std::optional<QByteArray>& data, bool) {
                body.set(data.value_or(QByteArray()));
            });
        [&] { QTRY_COMPARE(body.calls.load(), 1); }();
        return body.get();
    }
};

QTEST_GUILESS_MAIN(ApiTest)
#include "tst_api.moc"
