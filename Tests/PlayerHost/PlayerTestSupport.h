#pragma once

// Scenes for the player's tests: the row's fixture (lumora-devserver, the SDK pointed at it, the
// hand-driven clocks) plus channels built in code and the server's recorded events.

#include <QJsonArray>
#include <QJsonObject>
#include <QPointer>
#include <QTest>

#include "../Row/RowTestSupport.h"
#include "Models/Channel.h"
#include "Models/Page.h"
#include "Services/DatabaseService.h"
#include "ViewControllers/ChannelViewController.h"
#include "ViewControllers/ChannelsHostViewController.h"
#include "ViewControllers/PresentationStack.h"
#include "Views/ChannelMediaCollectionDataSource.h"
#include "Views/ChannelProgressCollectionDataSource.h"

namespace PlayerTest {

using namespace LumoraSDK;

/// A channel "id" of image pages "id-1", "id-2", ... shown `duration` seconds each.
inline QJsonObject imageChannelJson(RowTest::Fixture& fixture, const QString& id,
                                    const QString& status, int pageCount, int duration = 1,
                                    const QString& imagePath = "avatars/hi.png") {
    QJsonObject channel = RowTest::channelJson(id, QStringLiteral("Channel ") + id, status,
                                               fixture.mediaUrl("avatars/welcome.png"));
    QJsonArray pages;
    for (int i = 1; i <= pageCount; ++i) {
        pages.append(QJsonObject{{"id", QStringLiteral("%1-%2").arg(id).arg(i)},
                                 {"type", "image"},
                                 {"duration", duration},
                                 {"sortOrder", i},
                                 {"url", fixture.mediaUrl(imagePath)}});
    }
    channel.insert("pages", pages);
    return channel;
}

/// `channel` with `fields` set on its page `index`.
inline QJsonObject withPage(QJsonObject channel, int index, const QJsonObject& fields) {
    QJsonArray pages = channel.value("pages").toArray();
    QJsonObject page = pages.at(index).toObject();
    for (auto field = fields.begin(); field != fields.end(); ++field) {
        page.insert(field.key(), field.value());
    }
    pages.replace(index, page);
    channel.insert("pages", pages);
    return channel;
}

/// The server's recorded events as "<activity or history> <channel> <page>" lines.
inline QStringList eventLines(RowTest::Fixture& fixture) {
    QStringList lines;
    for (const QJsonValue& value : fixture.server().events()) {
        const QJsonObject body = value.toObject().value("body").toObject();
        if (body.contains("activityItemType")) {
            lines << QStringLiteral("%1 %2 %3")
                         .arg(body.value("activityItemType").toString(),
                              body.value("channelStoryId").toString(),
                              body.value("pageStoryId").toString());
        } else {
            lines << QStringLiteral("history %1 %2")
                         .arg(body.value("ChannelStoryId").toString(),
                              body.value("pageStoryId").toString());
        }
    }
    return lines;
}

/// A row in a phone-sized window with the player opened from one of its cells by a real click;
/// time runs on the fixture's ManualScheduler, in timer-sized steps.
class HostHarness {
public:
    explicit HostHarness(RowTest::Fixture& env) : m_env(env) {}

    /// The window the player opens in; phone-sized unless a test asks for another.
    QSize windowSize{360, 640};
    /// Server events accounted for by openRunning.
    int eventsSeen = 0;

    RowTest::Scene* scene() { return m_scene.get(); }
    ChannelsHostViewController* host() const { return m_host; }
    ChannelViewController* player() const {
        return m_host ? m_host->currentChannelViewController() : nullptr;
    }

    /// Clears what the last test left in the store; the first-use instructions count as seen.
    void reset() {
        windowSize = QSize(360, 640);
        ChannelsHostViewController::installAsChannelPresenter();
        DatabaseService& database = DatabaseService::sharedInstance();
        database.setChannelInitialPageMapping({});
        database.setChannelIsReadMapping({});
        database.userDefaults().setValue(DatabaseService::Key::hasShownInstructions, true);
        m_env.server().clearFaults();
    }

    /// A row over `channels`, with `properties` set in QML, and the player opened by a click on
    /// cell `tap` once the row has loaded and `readyToTap` holds.
    bool openFromRow(const QJsonArray& channels, int tap,
                     const std::function<bool()>& readyToTap = {}, const QString& properties = {}) {
        // A row strip along the top of a phone-sized window.
        m_scene = m_env.loadedScene(channels, properties, QSize(360, 120));
        if (!m_scene) {
            return false;
        }
        LumoraRowView* row = m_scene->row.get();
        m_scene->window.resize(windowSize);
        m_env.settle(row);
        if (!m_env.settleUntil(row, [&] {
                return DatabaseService::sharedInstance().allChannelsData().size() ==
                           channels.size() &&
                       m_scene->visibleCells().size() > tap &&
                       row->cellCenters().value(tap).has_value() && (!readyToTap || readyToTap());
            })) {
            qWarning("the row did not load: %d channels, %d cells",
                     int(DatabaseService::sharedInstance().allChannelsData().size()),
                     int(m_scene->visibleCells().size()));
            return false;
        }
        return reopen(tap);
    }

    /// Opens the player with a real click on cell `tap` of the row already shown.
    bool reopen(int tap) {
        LumoraRowViewCell* cell = m_scene->visibleCells().at(tap);
        QTest::mouseClick(&m_scene->window, Qt::LeftButton, {},
                          cell->contentCenterInWindow().toPoint());
        const QList<PresentableViewController*> presented =
            PresentationStack::forWindow(&m_scene->window)->presentedViewControllers();
        m_host = presented.isEmpty() ? nullptr
                                     : qobject_cast<ChannelsHostViewController*>(presented.first());
        return m_host;
    }

    /// openFromRow, then waits until the tapped channel's first page runs its timer and the two
    /// events of opening it are in; with `secondPage`, moves on to its second page likewise.
    bool openRunning(const QJsonArray& channels, int tap, bool secondPage = false) {
        eventsSeen = int(eventLines(m_env).size());
        if (!openFromRow(channels, tap)) {
            return false;
        }
        advance(0.25);
        if (!waitForPageTimer(tap, 0) || eventsSince(eventsSeen, 2).size() != 2) {
            return false;
        }
        if (!secondPage) {
            return true;
        }
        m_host->onNextButtonPressed(true);
        m_env.clock.runUntilIdle();
        return waitForPageTimer(tap, 1) && eventsSince(eventsSeen, 2).size() == 2;
    }

    /// Moves time on in timer-sized steps, with the events and animations each step causes.
    void advance(double seconds) {
        for (double done = 0; done < seconds - 1e-9; done += 0.05) {
            m_env.clock.advance(0.05);
            QCoreApplication::processEvents();
            if (m_host) {
                m_host->channelsCollectionView()->layoutIfNeeded();
            }
            m_env.animations.advanceBy(50);
        }
    }

    /// Waits (for real I/O) until `condition` holds, running the main queue meanwhile.
    template <typename Condition>
    bool waitFor(Condition condition) {
        return m_env.settleUntil(m_scene ? m_scene->row.get() : nullptr, condition);
    }

    /// Whether the page on screen runs its timer.
    bool pageTimerRuns() const {
        ChannelViewController* p = player();
        return p && p->progressCollectionViewDataSource &&
               p->progressCollectionViewDataSource->progressTimer &&
               p->progressCollectionViewDataSource->progressTimer->isValid();
    }

    /// Waits (for the image download) until page `page` of channel `channel` runs its timer.
    bool waitForPageTimer(int channel, int page) {
        return waitFor([&] {
            return pageTimerRuns() && m_host->currentVisibleChannelIndex() == channel &&
                   player()->currentIndex() == page;
        });
    }

    /// The next `expected` server events after the first `seen`, sorted (requests race).
    QStringList eventsSince(int& seen, int expected) {
        if (!QTest::qWaitFor([&] { return eventLines(m_env).size() >= seen + expected; }, 20000)) {
            return eventLines(m_env).mid(seen);
        }
        QStringList lines = eventLines(m_env).mid(seen, expected);
        seen += expected;
        lines.sort();
        return lines;
    }

    void closeHost() {
        if (m_host) {
            advance(0.3);
            m_host->dismissToCellCenter();
            advance(0.5);
        }
        QTRY_VERIFY(!m_host);
    }

    /// Closes the player if a test left it open and drops the scene.
    void tearDown() {
        if (m_host) {
            closeHost();
        }
        m_scene.reset();
        m_env.settle();
    }

private:
    RowTest::Fixture& m_env;
    std::unique_ptr<RowTest::Scene> m_scene;
    QPointer<ChannelsHostViewController> m_host;
};

/// A test case whose functions share one server and one harness: each starts with no player
/// open and nothing read, and closes what it opened.
class HostTestCase : public QObject {
    Q_OBJECT

protected:
    std::unique_ptr<RowTest::Fixture> m_env;
    std::unique_ptr<HostHarness> m_h;

private slots:
    void initTestCase() {
        m_env = std::make_unique<RowTest::Fixture>();
        QTRY_VERIFY_WITH_TIMEOUT(m_env->isReady(), 20000);
        m_h = std::make_unique<HostHarness>(*m_env);
    }
    void init() { m_h->reset(); }
    void cleanup() { m_h->tearDown(); }
    void cleanupTestCase() {
        m_h.reset();
        m_env.reset();
    }
};

}  // namespace PlayerTest
