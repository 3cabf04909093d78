// The full-screen player opened from a real row in an offscreen window, fed by lumora-devserver:
// a tapped cell grows into the player, pages advance on the timer, channels follow each other
// and the player shrinks back into the cell of the last channel. Time runs on ManualScheduler;
// only the real network I/O is waited for.

#include "PlayerTestSupport.h"
#include "Views/ChannelsCollectionViewCell.h"

using namespace LumoraSDK;
using namespace PlayerTest;
using RowTest::Fixture;

Q_DECLARE_METATYPE(NavigationDirection)

namespace {
QPointF centerOf(const QQuickItem* item) {
    return item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
}

constexpr char kChildVariable[] = "LUMORA_TEST_PLAYERHOST_CHILD";

// Child mode: a list with read channels ahead of an unread one, whose tap cannot be shown.
int openUnreadBehindReadChannels() {
    Fixture env;
    if (!QTest::qWaitFor([&] { return env.isReady(); }, 20000)) {
        return 2;
    }
    HostHarness harness(env);
    harness.reset();
    harness.openFromRow(
        QJsonArray{imageChannelJson(env, "r0", "read", 1), imageChannelJson(env, "r1", "read", 1),
                   imageChannelJson(env, "u2", "unread", 1)},
        2);
    return 0;
}
}  // namespace

class PlayerHostTest : public HostTestCase {
    Q_OBJECT

private slots:
    void wholeRunFromATappedCell() {
        const QJsonArray channels{imageChannelJson(*m_env, "run-a", "unread", 2),
                                  imageChannelJson(*m_env, "run-b", "unread", 1)};
        LumoraTest::LogCapture log;
        int seen = int(eventLines(*m_env).size());
        QVERIFY(m_h->openFromRow(channels, 0));
        LumoraRowView* row = m_h->scene()->row.get();
        QVERIFY(row->isChannelHostActive());
        const QPointF cellCenter = *row->cellCenters().at(0);

        // Grows out of the tapped cell: starts there, tiny, over a clear background.
        m_env->clock.runUntilIdle();
        QQuickItem* container = m_h->host()->channelsCollectionContainerView();
        QCOMPARE(container->scale(), ChannelsHostViewController::kClosedScale);
        QVERIFY((centerOf(container) - cellCenter).manhattanLength() < 1);
        m_h->advance(0.25);
        QCOMPARE(container->scale(), 1.0);
        QCOMPARE(centerOf(container), QPointF(180, 320));
        QCOMPARE(m_h->host()->view()->property("color").value<QColor>().alphaF(), 1.0f);

        QVERIFY(m_h->waitForPageTimer(0, 0));
        QCOMPARE(m_h->eventsSince(seen, 2),
                 QStringList({"history run-a run-a-1", "openedChannel run-a run-a-1"}));
        // One timer runs the page: a tick every 0.05 s takes 5 of the page's 100 hundredths.
        const double remaining =
            m_h->player()->progressCollectionViewDataSource->timerRemainingMs.value();
        m_h->advance(0.5);
        QCOMPARE(m_h->player()->progressCollectionViewDataSource->timerRemainingMs.value(),
                 remaining - 50);
        m_h->advance(0.5);
        QVERIFY(m_h->waitForPageTimer(0, 1));
        QCOMPARE(m_h->eventsSince(seen, 2),
                 QStringList({"completePage run-a run-a-2", "history run-a run-a-2"}));

        // The last page ends: the pager turns to the next channel.
        m_h->advance(1.5);
        QVERIFY(m_h->waitForPageTimer(1, 0));
        QCOMPARE(row->currentlyOpenChannelIndex(), 1);
        QCOMPARE(m_h->eventsSince(seen, 4),
                 QStringList({"completeChannel run-a run-a-2", "completePage run-a run-a-2",
                              "history run-b run-b-1", "openedChannel run-b run-b-1"}));

        // Past the last channel the player shrinks into that channel's cell and closes.
        m_h->advance(1.0);
        const QPointF target = *row->cellCenters().at(1);
        QVERIFY(log.contains(
            QStringLiteral("LumoraSDK.ChannelsHostViewController dismissToCellCenter - to (%1, %2)")
                .arg(target.x())
                .arg(target.y())));
        m_h->advance(0.5);
        QTRY_VERIFY(!m_h->host());
        QVERIFY(!row->isChannelHostActive());
        QCOMPARE(m_h->eventsSince(seen, 3),
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
        QVERIFY(m_h->openFromRow(channels, tap));
        QStringList ids;
        for (ChannelViewController* player : m_h->host()->contentViewControllers()) {
            ids << player->channel->id.value();
        }
        QCOMPARE(ids, expected);
        QCOMPARE(m_h->host()->startingIndex, tap);

        // A second open while this one is up is refused.
        LumoraRowView* row = m_h->scene()->row.get();
        QVERIFY(!ChannelsHostViewController::presentChannel(0, row, {}, {}));
        QCOMPARE(
            PresentationStack::forWindow(&m_h->scene()->window)->presentedViewControllers().size(),
            1);
    }

    void unreadTapPastTheChannelsLeftStops() {
        const auto child =
            LumoraTest::runSelf({}, {QString(kChildVariable) + "=1", "QT_FORCE_STDERR_LOGGING=1"});
        QVERIFY2(child.crashed, qPrintable(child.standardError.right(2000)));
        QVERIFY2(child.standardError.contains("starting index 2 out of range of 1 channels left"),
                 qPrintable(child.standardError.right(2000)));
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
        QVERIFY(m_h->openRunning(channels, 0));
        QVariantMap read;
        if (!flag.isEmpty()) {
            read.insert("s0", flag == "true");
        }
        DatabaseService::sharedInstance().setChannelIsReadMapping(read);
        int seen = int(eventLines(*m_env).size());
        m_h->host()->channelsCollectionDataSource->onScrollViewDidEndDecelerating(direction);
        m_env->clock.runUntilIdle();
        // The new rest records the channel on screen as opened again; a skip comes first.
        const QStringList lines = m_h->eventsSince(seen, skipped ? 3 : 2);
        QCOMPARE(lines.contains("skipChannel s0 s0-1"), skipped);
        QCOMPARE(lines.contains("openedChannel s0 s0-1"), true);
    }

    void previousOnTheFirstPageRestartsTheChannel() {
        QVERIFY(m_h->openRunning(QJsonArray{imageChannelJson(*m_env, "p0", "unread", 2, 2)}, 0));
        m_h->advance(0.5);
        ChannelProgressCollectionDataSource& progress =
            *m_h->player()->progressCollectionViewDataSource;
        m_h->host()->onPrevButtonPressed();
        m_env->clock.runUntilIdle();
        QVERIFY(!progress.progressTimer->isValid());
        const double remaining = progress.timerRemainingMs.value();
        // Restarts where it paused, after a short delay, on the same page.
        m_h->advance(ChannelsHostViewController::kShortDelay);
        QVERIFY(progress.progressTimer->isValid());
        QVERIFY(progress.isResumed);
        QCOMPARE(m_h->player()->currentIndex(), 0);
        QCOMPARE(progress.timerRemainingMs.value(), remaining - progress.timerUpdateIntervalMs);
        QCOMPARE(m_h->host()->currentVisibleChannelIndex(), std::optional<int>(0));
    }

    void dragPastAnEndClosesOnlyAtThatEnd_data() {
        QTest::addColumn<int>("tap");
        QTest::addColumn<NavigationDirection>("direction");
        QTest::addColumn<bool>("closes");
        QTest::newRow("last channel, onwards") << 1 << NavigationDirection::forward << true;
        QTest::newRow("first channel, back") << 0 << NavigationDirection::reverse << true;
        QTest::newRow("first channel, onwards") << 0 << NavigationDirection::forward << false;
    }
    void dragPastAnEndClosesOnlyAtThatEnd() {
        QFETCH(int, tap);
        QFETCH(NavigationDirection, direction);
        QFETCH(bool, closes);
        // Pages long enough not to end by themselves meanwhile.
        const QJsonArray channels{imageChannelJson(*m_env, "e0", "unread", 1, 10),
                                  imageChannelJson(*m_env, "e1", "unread", 1, 10)};
        QVERIFY(m_h->openFromRow(channels, tap));
        m_h->advance(0.25);
        ChannelsCollectionDataSource& pager = *m_h->host()->channelsCollectionDataSource;
        // Letting go without having passed an end does nothing.
        pager.onScrollViewDidEndDraggingPastLimit();
        m_h->advance(0.5);
        QVERIFY(m_h->host());
        QVERIFY(m_h->scene()->row->isChannelHostActive());
        QCOMPARE(m_h->host()->currentVisibleChannelIndex(), std::optional<int>(tap));
        pager.onDragLimitExceeded(direction);
        pager.onScrollViewDidEndDraggingPastLimit();
        m_h->advance(0.5);
        QCOMPARE(m_h->scene()->row->isChannelHostActive(), !closes);
        QTRY_COMPARE(!m_h->host(), closes);
    }
};

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    if (qEnvironmentVariableIsSet(kChildVariable)) {
        return openUnreadBehindReadChannels();
    }
    PlayerHostTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_playerhost.moc"
