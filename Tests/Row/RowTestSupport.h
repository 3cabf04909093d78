#pragma once

// Scenes for the row's tests: a lumora-devserver with the SDK pointed at it, a window holding one
// LumoraRowView declared in QML, and hand-driven clocks for the main queue and for animations.

#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTest>
#include <functional>
#include <memory>

#include "../Network/ApiTestCase.h"
#include "Models/UserInput.h"
#include "Platform/Scheduler.h"
#include "Services/NetworkingService.h"
#include "TestSupport.h"
#include "Views/LumoraRowCollectionView.h"
#include "Views/LumoraRowView.h"
#include "Views/LumoraRowViewCell/LumoraRowViewCell.h"
#include "Views/LumoraRowViewDataSource.h"

namespace RowTest {

using namespace LumoraSDK;

/// One channel as the API sends it; an empty status leaves the field out.
inline QJsonObject channelJson(const QString& id, const QString& title, const QString& status,
                               const QString& pictureUrl) {
    QJsonObject channel{{"id", id}, {"title", title}, {"profilePictureUrl", pictureUrl}};
    if (!status.isEmpty()) {
        channel.insert("status", status);
    }
    return channel;
}

/// A window showing one row declared in QML as `LumoraRowView { <properties> }`.
struct Scene {
    QQmlEngine engine;
    QQuickWindow window;
    std::unique_ptr<LumoraRowView> row;

    LumoraRowCollectionView& strip() const { return *row->collectionView(); }
    QList<LumoraRowViewCell*> visibleCells() const {
        QList<LumoraRowViewCell*> cells;
        for (CollectionViewCell* cell : strip().visibleCells()) {
            cells.append(qobject_cast<LumoraRowViewCell*>(cell));
        }
        return cells;
    }
    QStringList visibleTitles() const {
        QStringList titles;
        for (LumoraRowViewCell* cell : visibleCells()) {
            titles.append(cell->label()->property("text").toString().trimmed());
        }
        return titles;
    }
};

/// The server, the SDK pointed at it with a registered user, and the clocks: one per test case.
/// The main queue runs on a ManualScheduler (programmatic scrolls and pops too).
class Fixture {
public:
    static constexpr const char* kChannelsRoute = "/api/app/channel/channelsForUser";

    /// Registers a user with the server; wait for isReady() before loading channels.
    Fixture() {
        Lumora::sharedInstance().setUserDetails(
            UserInput{"row-viewer"}, [this] { m_registered.set(true); },
            [this](const RequestError&) { m_registered.set(false); });
        Scheduler::setCurrent(&clock);
    }
    ~Fixture() { Scheduler::setCurrent(nullptr); }

    bool isReady() { return m_registered.calls.load() == 1 && m_registered.get(); }
    LumoraTest::DevServer& server() { return m_server; }
    QString mediaUrl(const QString& path) const {
        return m_server.baseUrl() + QStringLiteral("/media/") + path;
    }
    /// The next channel list (only the next one) is `channels`.
    void answerChannelsOnce(const QJsonArray& channels) {
        m_server.setFault(
            kChannelsRoute,
            {{"body", QString::fromUtf8(QJsonDocument(channels).toJson())}, {"times", 1}});
    }
    /// The next channel list fails with `status`.
    void failChannelsOnce(int status) {
        m_server.setFault(kChannelsRoute, {{"status", status}, {"times", 1}});
    }

    /// Runs the main queue and the events it causes, and moves both clocks on by `seconds`.
    void settle(LumoraRowView* row = nullptr, double seconds = 1.0) {
        for (int round = 0; round < 3; ++round) {
            clock.advance(seconds);
            QCoreApplication::processEvents();
            if (row && row->collectionView()) {
                row->collectionView()->layoutIfNeeded();
            }
            if (m_animationsInstalled) {
                animations.advanceBy(qint64(seconds * 1000));
            }
        }
    }
    /// Waits (for real network I/O) until `condition` holds, running the main queue meanwhile.
    template <typename Condition>
    bool settleUntil(LumoraRowView* row, Condition condition) {
        const QDeadlineTimer deadline(20000);
        while (!deadline.hasExpired()) {
            settle(row, 0);
            if (condition()) {
                return true;
            }
            QTest::qWait(10);
        }
        return false;
    }

    /// A new row; `configure` runs on it before QML completes it, that is before its set-up.
    std::unique_ptr<Scene> scene(const QString& properties, QSize size,
                                 const QColor& background = Qt::white,
                                 const std::function<void(LumoraRowView*)>& configure = {}) {
        auto scene = std::make_unique<Scene>();
        scene->window.resize(size);
        scene->window.setColor(background);
        QQmlComponent component(&scene->engine);
        component.setData("import LumoraSDK\nLumoraRowView { " + properties.toUtf8() + " }",
                          QUrl());
        scene->row.reset(
            qobject_cast<LumoraRowView*>(component.beginCreate(scene->engine.rootContext())));
        if (!scene->row) {
            qWarning("%s", qPrintable(component.errorString()));
            return nullptr;
        }
        scene->row->setSize(size);
        scene->row->setParentItem(scene->window.contentItem());
        if (configure) {
            configure(scene->row.get());
        }
        component.completeCreate();
        scene->window.show();
        if (!QTest::qWaitForWindowExposed(&scene->window)) {
            return nullptr;
        }
        // Installed once a window exists, so that the window's render loop does not replace it.
        if (!std::exchange(m_animationsInstalled, true)) {
            animations.install();
        }
        settle(scene->row.get());
        return scene;
    }

    /// A new row once it has loaded `channels` (the server's own list when empty) and every
    /// picture request for them has finished, whatever its outcome.
    std::unique_ptr<Scene> loadedScene(QJsonArray channels, const QString& properties, QSize size,
                                       const QColor& background = Qt::white,
                                       const std::function<void(LumoraRowView*)>& configure = {}) {
        if (channels.isEmpty()) {
            channels = serverChannels();
        } else {
            answerChannelsOnce(channels);
        }
        // A row whose style or cell type is written in QML loads by itself once set up.
        std::unique_ptr<QSignalSpy> started;
        std::unique_ptr<QSignalSpy> complete;
        auto scene = this->scene(properties, size, background, [&](LumoraRowView* row) {
            started = std::make_unique<QSignalSpy>(row, &LumoraRowView::channelsDataLoadStarted);
            complete = std::make_unique<QSignalSpy>(row, &LumoraRowView::channelsDataLoadComplete);
            if (configure) {
                configure(row);
            }
        });
        if (!scene) {
            return nullptr;
        }
        if (started->isEmpty()) {
            scene->row->reloadData();
        }
        // The image manager answers requests for one address in the order they came.
        int pending = 0;
        FrameButtonView probe;
        for (const QJsonValue& value : channels) {
            const QString url = value[QStringLiteral("profilePictureUrl")].toString();
            if (!url.isEmpty() && pending < 20) {
                ++pending;
                NetworkingService::sharedInstance().loadRemoteImage(
                    &probe, ControlState::Normal, url, [&] { --pending; },
                    [&](const RequestError&) { --pending; });
            }
        }
        if (!settleUntil(scene->row.get(), [&] { return complete->count() == 1 && !pending; })) {
            return nullptr;
        }
        settle(scene->row.get());
        return scene;
    }

    /// The channel list the server gives this test's user, fetched past the SDK.
    QJsonArray serverChannels() {
        QNetworkAccessManager network;
        QNetworkRequest request(QUrl(m_server.baseUrl() + QLatin1String(kChannelsRoute)));
        request.setRawHeader("x-lumora-api-key", m_server.apiKey().toUtf8());
        const auto token = DatabaseService::sharedInstance().userDefaults().string(
            DatabaseService::Key::accessToken);
        request.setRawHeader("Authorization", "Bearer " + token.value_or(QString()).toUtf8());
        std::unique_ptr<QNetworkReply> reply(network.get(request));
        QSignalSpy finished(reply.get(), &QNetworkReply::finished);
        finished.wait(20000);
        return QJsonDocument::fromJson(reply->readAll()).array();
    }

    /// `count` channels "c00", "c01", ... titled "Channel 0", ..., every third one read.
    QJsonArray numberedChannels(int count) const {
        static const QStringList avatars{"welcome", "hi", "travel", "recipes", "fitness", "music"};
        QJsonArray channels;
        for (int i = 0; i < count; ++i) {
            channels.append(channelJson(
                QStringLiteral("c%1").arg(i, 2, 10, QLatin1Char('0')),
                QStringLiteral("Channel %1").arg(i), i % 3 == 2 ? "read" : "unread",
                mediaUrl(QStringLiteral("avatars/%1.png").arg(avatars[i % avatars.size()]))));
        }
        return channels;
    }

    ManualScheduler clock;
    LumoraTest::ManualAnimationDriver animations;

private:
    LumoraTest::SdkOnDevServer m_sdk;
    LumoraTest::DevServer& m_server = m_sdk.server();
    LumoraTest::Outcome<bool> m_registered;
    bool m_animationsInstalled = false;
};

inline QStringList idsOf(const QList<Channel>& channels) {
    QStringList ids;
    for (const Channel& channel : channels) {
        ids.append(channel.id.value_or("-"));
    }
    return ids;
}

}  // namespace RowTest
