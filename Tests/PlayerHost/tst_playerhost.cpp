// The full-screen player opened from a real row in an offscreen window, fed by lumora-devserver:
// a tapped cell grows into the player, pages advance on the timer, channels follow each other
// and the player shrinks back into the cell of the last channel. Time runs on ManualScheduler;
// only the real network I/O is waited for.

#include <QDir>
#include <QRegularExpression>
#include <QTest>

#include "Extensions/ViewExtensions.h"
#include "PlayerTestSupport.h"
#include "TestSupport.h"
#include "ViewControllers/ChannelViewController.h"
#include "ViewControllers/ChannelsHostViewController.h"
#include "ViewControllers/PresentationStack.h"
#include "Views/ChannelMediaCollectionDataSource.h"
#include "Views/ChannelMediaCollectionViewCell.h"
#include "Views/ChannelProgressCollectionDataSource.h"
#include "Views/ChannelsCollectionViewCell.h"

using namespace LumoraSDK;
using namespace PlayerTest;
using RowTest::Fixture;

Q_DECLARE_METATYPE(NavigationDirection)

namespace {
void saveArtifact(const QImage& image, const QString& name) {
    QVERIFY(image.save(QDir(LumoraTest::artifactsDirectory()).filePath(name + ".png")));
}

QPointF centerOf(const QQuickItem* item) {
    return item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
}
}  // namespace

class PlayerHostTest : public QObject {
    Q_OBJECT

    std::unique_ptr<Fixture> m_env;
    std::unique_ptr<RowTest::Scene> m_scene;
    QPointer<ChannelsHostViewController> m_host;
    QList<int> m_dismissed;

    /// A row over `channels` with the player opened by a click on cell `tap`.
    bool openFromRow(const QJsonArray& channels, int tap) {
        // A row strip along the top of a phone-sized window.
        m_scene = m_env->loadedScene(channels, QString(), QSize(360, 120));
        if (!m_scene) {
            return false;
        }
        LumoraRowView* row = m_scene->row.get();
        m_scene->window.resize(360, 640);
        m_env->settle(row);
        if (!m_env->settleUntil(row, [&] {
                return DatabaseService::sharedInstance().allChannelsData().size() ==
                           channels.size() &&
                       m_scene->visibleCells().size() > tap &&
                       row->cellCenters().value(tap).has_value();
            })) {
            qWarning("the row did not load: %d channels, %d cells",
                     int(DatabaseService::sharedInstance().allChannelsData().size()),
                     int(m_scene->visibleCells().size()));
            return false;
        }
        LumoraRowViewCell* cell = m_scene->visibleCells().at(tap);
        QTest::mouseClick(&m_scene->window, Qt::LeftButton, {},
                          cell->contentCenterInWindow().toPoint());
        const QList<PresentableViewController*> presented =
            PresentationStack::forWindow(&m_scene->window)->presentedViewControllers();
        m_host = presented.isEmpty() ? nullptr
                                     : qobject_cast<ChannelsHostViewController*>(presented.last());
        return m_host;
    }
    /// Moves time on in timer-sized steps, with the events and animations each step causes.
    void advance(double seconds) {
        for (double done = 0; done < seconds - 1e-9; done += 0.05) {
            m_env->clock.advance(0.05);
            QCoreApplication::processEvents();
            if (m_host) {
                m_host->channelsCollectionView()->layoutIfNeeded();
            }
            m_env->animations.advanceBy(50);
        }
    }
    ChannelViewController* player() const {
        return m_host ? m_host->currentChannelViewController() : nullptr;
    }
    /// Waits (for the image download) until page `page` of channel `channel` runs its timer.
    bool waitForPageTimer(int channel, int page) {
        return m_env->settleUntil(m_scene->row.get(), [&] {
            ChannelViewController* p = player();
            return m_host && m_host->currentVisibleChannelIndex() == channel && p &&
                   p->currentIndex() == page && p->progressCollectionViewDataSource &&
                   p->progressCollectionViewDataSource->progressTimer &&
                   p->progressCollectionViewDataSource->progressTimer->isValid();
        });
    }
    QStringList eventsSince(int& seen, int expected) {
        if (!QTest::qWaitFor([&] { return eventLines(*m_env).size() >= seen + expected; }, 20000)) {
            return eventLines(*m_env).mid(seen);
        }
        QStringList lines = eventLines(*m_env).mid(seen, expected);
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

private slots:
    void initTestCase() {
        m_env = std::make_unique<Fixture>();
        QTRY_VERIFY_WITH_TIMEOUT(m_env->isReady(), 20000);
    }
    void init() {
        ChannelsHostViewController::installAsChannelPresenter();
        DatabaseService::sharedInstance().setChannelInitialPageMapping({});
        DatabaseService::sharedInstance().setChannelIsReadMapping({});
        m_env->server().clearFaults();
    }
    void cleanup() {
        if (m_host) {
            closeHost();
        }
        m_scene.reset();
        m_env->settle();
    }
    void cleanupTestCase() { m_env.reset(); }

    void wholeRunFromATappedCell() {
        const QJsonArray channels{imageChannelJson(*m_env, "run-a", "unread", 2),
                                  imageChannelJson(*m_env, "run-b", "unread", 1)};
        LumoraTest::LogCapture log;
        AudioSession& audio = AudioSession::sharedInstance();
        audio.setCategory(AudioSession::Category::Ambient, AudioSession::Mode::MoviePlayback, 0);
        int seen = int(eventLines(*m_env).size());
        QVERIFY(openFromRow(channels, 0));
        LumoraRowView* row = m_scene->row.get();
        QVERIFY(row->isChannelHostActive());
        const QPointF cellCenter = *row->cellCenters().at(0);

        // Grows out of the tapped cell: starts there, tiny, over a clear background.
        m_env->clock.runUntilIdle();
        QQuickItem* container = m_host->channelsCollectionContainerView();
        QCOMPARE(container->scale(), ChannelsHostViewController::kClosedScale);
        QVERIFY2(
            (centerOf(container) - cellCenter).manhattanLength() < 1,
            qPrintable(
                QStringLiteral("%1,%2").arg(centerOf(container).x()).arg(centerOf(container).y())));
        advance(0.1);
        QVERIFY(container->scale() > 0.1 && container->scale() < 0.95);
        advance(0.15);
        QCOMPARE(container->scale(), 1.0);
        QCOMPARE(centerOf(container), QPointF(180, 320));
        QCOMPARE(m_host->view()->property("color").value<QColor>().alphaF(), 1.0f);

        QVERIFY(waitForPageTimer(0, 0));
        QCOMPARE(eventsSince(seen, 2),
                 QStringList({"history run-a run-a-1", "openedChannel run-a run-a-1"}));
        // One timer runs the page: a tick every 0.05 s takes 5 of the page's 100 hundredths.
        const double remaining =
            player()->progressCollectionViewDataSource->timerRemainingMs.value();
        advance(0.5);
        QCOMPARE(player()->progressCollectionViewDataSource->timerRemainingMs.value(),
                 remaining - 50);
        saveArtifact(m_scene->window.grabWindow(), QStringLiteral("player-mid-page"));
        advance(0.5);
        QVERIFY(waitForPageTimer(0, 1));
        QCOMPARE(eventsSince(seen, 2),
                 QStringList({"completePage run-a run-a-2", "history run-a run-a-2"}));

        // The last page ends: the pager turns to the next channel like a cube.
        for (int step = 0; step < 60; ++step) {
            const qreal x = m_host->channelsCollectionView()->contentOffset().x();
            if (x > 120 && x < 240) {
                break;
            }
            advance(0.05);
        }
        const qreal offset = m_host->channelsCollectionView()->contentOffset().x();
        QVERIFY2(offset > 36 && offset < 324, qPrintable(QString::number(offset)));
        const QList<ChannelsCollectionViewCell*> turning = m_host->getVisibleChannelCells(true);
        QCOMPARE(turning.size(), 2);
        QVERIFY(perspectiveMultiplier(turning.first()->contentView()) < 0);
        QVERIFY(perspectiveMultiplier(turning.last()->contentView()) > 0);
        saveArtifact(m_scene->window.grabWindow(), QStringLiteral("player-mid-cube-turn"));
        QCOMPARE(eventsSince(seen, 2),
                 QStringList({"completeChannel run-a run-a-2", "completePage run-a run-a-2"}));
        advance(0.3);
        QVERIFY(waitForPageTimer(1, 0));
        QCOMPARE(row->currentlyOpenChannelIndex(), 1);
        QCOMPARE(eventsSince(seen, 2),
                 QStringList({"history run-b run-b-1", "openedChannel run-b run-b-1"}));

        // Past the last channel the player shrinks into that channel's cell and closes.
        advance(1.0);
        const QPointF target = *row->cellCenters().at(1);
        QVERIFY(log.contains(
            QStringLiteral("LumoraSDK.ChannelsHostViewController dismissToCellCenter - to (%1, %2)")
                .arg(target.x())
                .arg(target.y())));
        advance(0.5);
        QTRY_VERIFY(!m_host);
        QVERIFY(!row->isChannelHostActive());
        QCOMPARE(audio.category(), AudioSession::Category::Ambient);
        QCOMPARE(audio.mode(), AudioSession::Mode::MoviePlayback);
        QCOMPARE(audio.categoryOptions(), 0);
        QCOMPARE(eventsSince(seen, 3),
                 QStringList({"completeChannel run-b run-b-1", "completePage run-b run-b-1",
                              "dismissedChannel run-b run-b-1"}));
        // Viewing remembered the channels as read.
        const QVariantMap read = DatabaseService::sharedInstance().channelIsReadMapping();
        QCOMPARE(read.value("run-a").toBool(), true);
        QCOMPARE(read.value("run-b").toBool(), true);
    }

    void unreadTapDropsReadChannels_data() {
        QTest::addColumn<int>("tap");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("unread tapped: read ones dropped") << 1 << QStringList({"d1", "d3"});
        QTest::newRow("read tapped: all stay") << 0 << QStringList({"d0", "d1", "d2", "d3"});
    }
    void unreadTapDropsReadChannels() {
        QFETCH(int, tap);
        QFETCH(QStringList, expected);
        const QJsonArray channels{
            imageChannelJson(*m_env, "d0", "read", 1), imageChannelJson(*m_env, "d1", "unread", 1),
            imageChannelJson(*m_env, "d2", "read", 1), imageChannelJson(*m_env, "d3", "", 1)};
        LumoraTest::LogCapture log;
        QVERIFY(openFromRow(channels, tap));
        QStringList ids;
        for (ChannelViewController* player : m_host->contentViewControllers()) {
            ids << player->channel->id.value();
        }
        QCOMPARE(ids, expected);
        QCOMPARE(m_host->startingIndex, tap);
        QCOMPARE(log.contains(QStringLiteral(
                     "ChannelsHostViewController - starting from unread channel,\ndropping read "
                     "channels [d0, d2]")),
                 tap == 1);

        // A second open while this one is up is refused.
        LumoraRowView* row = m_scene->row.get();
        QVERIFY(!ChannelsHostViewController::presentChannel(0, row, {}, {}));
        QVERIFY(
            log.contains(QStringLiteral("ChannelsHostViewController - will not present channel -  "
                                        "already has an active host!")));
        QCOMPARE(PresentationStack::forWindow(&m_scene->window)->presentedViewControllers().size(),
                 1);
    }

    void imageThatNeverLoadsStillPlays() {
        QJsonObject broken = imageChannelJson(*m_env, "nl", "unread", 2, 1, "avatars/nobody.png");
        QVERIFY(openFromRow(QJsonArray{broken}, 0));
        advance(0.25);
        QVERIFY(waitForPageTimer(0, 0));
        QVERIFY(player()->getVisibleMediaCell(0)->mediaReady());
        advance(1.0);
        QVERIFY(waitForPageTimer(0, 1));
    }

    void leavingForwardSkipsOnlyUnreadChannels_data() {
        QTest::addColumn<QString>("flag");
        QTest::addColumn<NavigationDirection>("direction");
        QTest::addColumn<bool>("skipped");
        QTest::newRow("unread, forward") << "false" << NavigationDirection::forward << true;
        QTest::newRow("unread, back") << "false" << NavigationDirection::reverse << false;
        QTest::newRow("read, forward") << "true" << NavigationDirection::forward << false;
        QTest::newRow("no flag, forward") << "" << NavigationDirection::forward << false;
    }
    void leavingForwardSkipsOnlyUnreadChannels() {
        QFETCH(QString, flag);
        QFETCH(NavigationDirection, direction);
        QFETCH(bool, skipped);
        const QJsonArray channels{imageChannelJson(*m_env, "s0", "unread", 3),
                                  imageChannelJson(*m_env, "s1", "unread", 1)};
        QVERIFY(openFromRow(channels, 0));
        advance(0.25);
        QVERIFY(waitForPageTimer(0, 0));
        QVariantMap read;
        if (!flag.isEmpty()) {
            read.insert("s0", flag == "true");
        }
        DatabaseService::sharedInstance().setChannelIsReadMapping(read);
        int seen = int(eventLines(*m_env).size());
        m_host->channelsCollectionDataSource->onScrollViewDidEndDecelerating(direction);
        m_env->clock.runUntilIdle();
        // The new rest records the channel on screen as opened again; a skip comes first.
        const QStringList lines = eventsSince(seen, skipped ? 3 : 2);
        QCOMPARE(lines.contains("skipChannel s0 s0-1"), skipped);
        QCOMPARE(lines.contains("openedChannel s0 s0-1"), true);
    }

    void previousOnTheFirstPageRestartsTheChannel() {
        QVERIFY(openFromRow(QJsonArray{imageChannelJson(*m_env, "p0", "unread", 2, 2)}, 0));
        advance(0.25);
        QVERIFY(waitForPageTimer(0, 0));
        advance(0.5);
        ChannelProgressCollectionDataSource& progress = *player()->progressCollectionViewDataSource;
        m_host->onPrevButtonPressed();
        m_env->clock.runUntilIdle();
        QVERIFY(!progress.progressTimer->isValid());
        const double remaining = progress.timerRemainingMs.value();
        // Restarts where it paused, after a short delay, on the same page.
        m_env->clock.advance(ChannelsHostViewController::kShortDelay);
        QVERIFY(progress.progressTimer->isValid());
        QVERIFY(progress.isResumed);
        QCOMPARE(player()->currentIndex(), 0);
        QCOMPARE(progress.timerRemainingMs.value(), remaining - progress.timerUpdateIntervalMs);
        QCOMPARE(m_host->currentVisibleChannelIndex(), std::optional<int>(0));
    }

    void dragPastAnEndClosesOnlyAtThatEnd_data() {
        QTest::addColumn<int>("tap");
        QTest::addColumn<NavigationDirection>("direction");
        QTest::addColumn<bool>("closes");
        QTest::newRow("last channel, onwards") << 1 << NavigationDirection::forward << true;
        QTest::newRow("first channel, back") << 0 << NavigationDirection::reverse << true;
        QTest::newRow("first channel, onwards") << 0 << NavigationDirection::forward << false;
        QTest::newRow("last channel, back") << 1 << NavigationDirection::reverse << false;
    }
    void dragPastAnEndClosesOnlyAtThatEnd() {
        QFETCH(int, tap);
        QFETCH(NavigationDirection, direction);
        QFETCH(bool, closes);
        // Pages long enough not to end by themselves meanwhile.
        const QJsonArray channels{imageChannelJson(*m_env, "e0", "unread", 1, 10),
                                  imageChannelJson(*m_env, "e1", "unread", 1, 10)};
        QVERIFY(openFromRow(channels, tap));
        advance(0.25);
        ChannelsCollectionDataSource& pager = *m_host->channelsCollectionDataSource;
        // Letting go without having passed an end does nothing.
        pager.onScrollViewDidEndDraggingPastLimit();
        advance(0.5);
        QVERIFY(m_host);
        QVERIFY(m_scene->row->isChannelHostActive());
        QCOMPARE(m_host->currentVisibleChannelIndex(), std::optional<int>(tap));
        pager.onDragLimitExceeded(direction);
        pager.onScrollViewDidEndDraggingPastLimit();
        advance(0.5);
        QCOMPARE(m_scene->row->isChannelHostActive(), !closes);
        QTRY_COMPARE(m_host.isNull(), closes);
    }

    void backgroundOpacityFadesTheHeaderGradient_data() {
        QTest::addColumn<qreal>("alpha");
        QTest::addColumn<qreal>("gradient");
        QTest::newRow("opaque") << 1.0 << 1.0;
        QTest::newRow("half: a quarter of it") << 0.5 << 0.125;
        QTest::newRow("0.4: below 0.12, gone") << 0.4 << 0.0;
        QTest::newRow("0.48: exactly 0.12 stays") << 0.48 << 0.12;
    }
    void backgroundOpacityFadesTheHeaderGradient() {
        QFETCH(qreal, alpha);
        QFETCH(qreal, gradient);
        QVERIFY(openFromRow(QJsonArray{imageChannelJson(*m_env, "g0", "unread", 1)}, 0));
        advance(0.25);
        m_host->setBackgroundOpacity(alpha);
        QVERIFY(qAbs(player()->topGradient()->opacity() - gradient) < 1e-6);
        QVERIFY(qAbs(m_host->view()->property("color").value<QColor>().alphaF() - alpha) < 0.01);
    }
};

QTEST_MAIN(PlayerHostTest)
#include "tst_playerhost.moc"
