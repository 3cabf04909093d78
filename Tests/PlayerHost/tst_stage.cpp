// The player in desktop windows: the card the channels play in, the neighbours and pointer
// controls around it, the play/pause and sound buttons, and resizes while a page plays. Real
// clicks on offscreen windows; the server's events show what was recorded.

#include <QScopeGuard>

#include "Platform/AudioSession.h"
#include "PlayerTestSupport.h"
#include "ViewControllers/ChannelsHostStage.h"
#include "Views/ChannelMediaCollectionViewCell.h"
#include "Views/ChannelsCollectionViewCell.h"

using namespace LumoraSDK;
using namespace PlayerTest;

namespace {
QRectF sceneRect(const QQuickItem* item) {
    return item->mapRectToScene(QRectF(QPointF(), item->size()));
}

bool near(const QRectF& a, const QRectF& b) {
    const QRectF d(a.topLeft() - b.topLeft(), a.size() - b.size());
    return qAbs(d.x()) < 0.5 && qAbs(d.y()) < 0.5 && qAbs(d.width()) < 0.5 &&
           qAbs(d.height()) < 0.5;
}
}  // namespace

class StageTest : public HostTestCase {
    Q_OBJECT

    QQuickWindow* window() { return &m_h->scene()->window; }
    QQuickItem* item(const char* name) {
        return m_h->host()->view()->findChild<QQuickItem*>(QLatin1String(name));
    }
    QRectF card() { return sceneRect(m_h->host()->stage()->card()); }
    void click(QPointF at) { QTest::mouseClick(window(), Qt::LeftButton, {}, at.toPoint()); }
    void click(const char* name) { click(sceneRect(item(name)).center()); }

    /// Channels a, b and c of three 10-second image pages, the player open on b in a window of
    /// `size` with the page's timer running (on the second page with `secondPage`).
    bool openOnB(QSize size, bool secondPage = false) {
        m_h->windowSize = size;
        const auto channel = [this](const char* id) {
            return imageChannelJson(*m_env, id, QStringLiteral("unread"), 3, 10);
        };
        return m_h->openRunning(QJsonArray{channel("a"), channel("b"), channel("c")}, 1,
                                secondPage);
    }

private slots:
    // Opened in one window size and resized to another while the second page plays, the card
    // fits the new window with the page and its controls, and the page's timer runs on.
    void theCardFitsTheWindowThroughAResize_data() {
        QTest::addColumn<QSize>("from");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<bool>("pointer");
        QTest::newRow("desktop to phone 390x844") << QSize(1280, 800) << QSize(390, 844) << true;
        QTest::newRow("desktop to low 844x390") << QSize(1280, 800) << QSize(844, 390) << true;
        QTest::newRow("phone to desktop 1280x800") << QSize(390, 844) << QSize(1280, 800) << true;
        QTest::newRow("touch only 1280x800") << QSize(1280, 800) << QSize(1280, 800) << false;
    }
    void theCardFitsTheWindowThroughAResize() {
        QFETCH(QSize, from);
        QFETCH(QSize, size);
        QFETCH(bool, pointer);
        ChannelsHostStage::pointerInputOverride = pointer;
        const auto restore = qScopeGuard([] { ChannelsHostStage::pointerInputOverride.reset(); });
        QVERIFY(openOnB(from, true));
        m_h->advance(2);
        ChannelProgressCollectionDataSource& progress =
            *m_h->player()->progressCollectionViewDataSource;
        const double remaining = *progress.timerRemainingMs;
        this->window()->resize(size);
        QTRY_COMPARE(m_h->host()->view()->size(), QSizeF(size));
        m_h->host()->channelsCollectionView()->layoutIfNeeded();
        m_h->player()->mediaCollectionView()->layoutIfNeeded();
        const QRectF window(QPointF(), size);
        const bool phone = size.width() < size.height();
        if (phone) {
            QCOMPARE(card(), window);
        } else {
            QVERIFY(qAbs(card().width() - card().height() * 9 / 16) <= 1);
            QVERIFY(window.contains(card()));
            QVERIFY((card().center() - window.center()).manhattanLength() <= 1);
        }
        // The same channel and page fill the card: picture, bar, header, pill.
        ChannelViewController* player = m_h->player();
        const QList<ChannelsCollectionViewCell*> cells = m_h->host()->getVisibleChannelCells(true);
        QCOMPARE(cells.size(), 1);
        QCOMPARE(cells.first()->channelIndex, 1);
        QCOMPARE(player->currentIndex(), 1);
        QVERIFY(near(sceneRect(m_h->host()->channelsCollectionContainerView()), card()));
        QVERIFY(near(sceneRect(player->getVisibleMediaCell(1)), card()));
        for (const QQuickItem* part : std::initializer_list<const QQuickItem*>{
                 player->progressCollectionView(), player->channelTitle(),
                 player->learnMoreContainerView()}) {
            QVERIFY(card().contains(sceneRect(part)));
        }
        // Neighbours beside the card, controls on screen where there is a pointer.
        const QRectF previous = sceneRect(item("previousNeighbour"));
        const QRectF next = sceneRect(item("nextNeighbour"));
        QCOMPARE(item("previousNeighbour")->isVisible(), !phone);
        QCOMPARE(item("nextNeighbour")->isVisible(), !phone);
        if (!phone) {
            QCOMPARE(item("previousNeighbour")->property("title").toString(), "Channel a");
            QVERIFY(window.contains(previous) && previous.right() < card().left());
            QVERIFY(window.contains(next) && next.left() > card().right());
        }
        for (const char* control : {"previousArrowButton", "nextArrowButton", "stageCloseButton"}) {
            QCOMPARE(item(control)->isVisible(), pointer && !phone);
            QVERIFY(!item(control)->isVisible() || window.contains(sceneRect(item(control))));
        }
        QCOMPARE(item("playPauseButton")->isVisible(), pointer);
        QVERIFY(!pointer || card().contains(sceneRect(item("playPauseButton"))));
        // The timer runs on where it was, and the page ends when it says, not started over.
        QVERIFY(m_h->pageTimerRuns());
        QCOMPARE(*progress.timerRemainingMs, remaining);
        m_h->advance(remaining / 100 - 0.2);
        QCOMPARE(player->currentIndex(), 1);
        m_h->advance(0.3);
        QCOMPARE(player->currentIndex(), 2);
        QCOMPARE(m_h->eventsSince(m_h->eventsSeen, 2),
                 QStringList({"completePage b b-3", "history b b-3"}));
    }

    void stageControls_data() {
        QTest::addColumn<QString>("action");
        QTest::addColumn<int>("channel");  // -1: closed
        QTest::addColumn<int>("page");
        QTest::addColumn<QStringList>("events");  // sorted
        QTest::newRow("next arrow")
            << "nextArrowButton" << 1 << 2 << QStringList{"history b b-3", "skipPage b b-3"};
        QTest::newRow("previous arrow") << "previousArrowButton" << 1 << 0
                                        << QStringList{"history b b-1", "previousPage b b-1"};
        QTest::newRow("tap on the card's right")
            << "card" << 1 << 2 << QStringList{"history b b-3", "skipPage b b-3"};
        QTest::newRow("tab to the previous arrow, space")
            << "tab" << 1 << 0 << QStringList{"history b b-1", "previousPage b b-1"};
        QTest::newRow("next neighbour")
            << "nextNeighbour" << 2 << 0
            << QStringList{"history c c-1", "openedChannel c c-1", "skipChannel b b-2"};
        QTest::newRow("previous neighbour")
            << "previousNeighbour" << 0 << 0 << QStringList{"history a a-1", "openedChannel a a-1"};
        QTest::newRow("close button")
            << "stageCloseButton" << -1 << 0 << QStringList{"dismissedChannel b b-2"};
        QTest::newRow("backdrop") << "backdrop" << -1 << 0 << QStringList{"dismissedChannel b b-2"};
    }
    void stageControls() {
        QFETCH(QString, action);
        QFETCH(int, channel);
        QFETCH(int, page);
        QFETCH(QStringList, events);
        QVERIFY(openOnB(QSize(1280, 800), true));
        if (action == "card") {
            click(QPointF(card().right() - 40, card().center().y()));
        } else if (action == "backdrop") {
            click(QPointF(30, 400));
        } else if (action == "tab") {
            // The page's own buttons are tab stops too; the arrow is among the first few.
            const auto focused = [this] {
                QQuickItem* item = window()->activeFocusItem();
                return item ? item->objectName() : QString();
            };
            for (int stop = 0; stop < 8 && focused() != "previousArrowButton"; ++stop) {
                QTest::keyClick(window(), Qt::Key_Tab);
            }
            QCOMPARE(focused(), QStringLiteral("previousArrowButton"));
            QTest::keyClick(window(), Qt::Key_Space);
        } else {
            click(qPrintable(action));
        }
        m_h->advance(1.0);
        if (channel < 0) {
            QTRY_VERIFY(!m_h->host());
        } else {
            QVERIFY(m_h->waitForPageTimer(channel, page));
        }
        QCOMPARE(m_h->eventsSince(m_h->eventsSeen, int(events.size())), events);
    }

    void playPauseHoldsAcrossPageTimers() {
        QVERIFY(openOnB(QSize(1280, 800)));
        ChannelProgressCollectionDataSource& progress =
            *m_h->player()->progressCollectionViewDataSource;
        click("playPauseButton");
        m_h->advance(0.5);
        QVERIFY(!m_h->pageTimerRuns());
        QCOMPARE(item("playPauseButton")->property("name").toString(), "Play");
        const double remaining = *progress.timerRemainingMs;
        // Longer than the page, a held press and its release: nothing moves.
        m_h->advance(12);
        QTest::mousePress(window(), Qt::LeftButton, {}, card().center().toPoint());
        m_h->advance(1);
        QTest::mouseRelease(window(), Qt::LeftButton, {}, card().center().toPoint());
        m_h->advance(0.5);
        QCOMPARE(m_h->player()->currentIndex(), 0);
        QCOMPARE(*progress.timerRemainingMs, remaining);
        QVERIFY(!m_h->pageTimerRuns());
        // The next page stays paused too, at its very start.
        click("nextArrowButton");
        m_h->advance(12);
        QCOMPARE(m_h->player()->currentIndex(), 1);
        QVERIFY(!m_h->pageTimerRuns());
        // Pressed again, the page runs on from where it stood and ends on time.
        click("playPauseButton");
        QVERIFY(m_h->pageTimerRuns());
        const double left = *progress.timerRemainingMs / 100;
        m_h->advance(left - 0.2);
        QCOMPARE(m_h->player()->currentIndex(), 1);
        m_h->advance(0.3);
        QCOMPARE(m_h->player()->currentIndex(), 2);
    }

    void videoPageControls() {
        AudioSession& audio = AudioSession::sharedInstance();
        audio.setCategory(AudioSession::Category::SoloAmbient, AudioSession::Mode::Default, 0);
        const QJsonObject b =
            withPage(imageChannelJson(*m_env, "b", QStringLiteral("unread"), 2, 5), 0,
                     {{"type", "video"},
                      {"url", m_env->mediaUrl("music/page-1.mp4")},
                      {"playcardUrl", m_env->mediaUrl("music/page-1-playcard.png")}});
        m_h->windowSize = QSize(1280, 800);
        QVERIFY(m_h->openFromRow(QJsonArray{b}, 0));
        QVERIFY(m_h->waitFor([&] {
            VideoNode* node = m_h->host()->videoNode.get();
            return node && node->isPlaying() && node->existingView() &&
                   node->existingView()->parentItem() == m_h->player()->videoContainerView();
        }));
        VideoNode& node = *m_h->host()->videoNode;
        // Sound: off as with the ringer off, on as a volume key does, and off again.
        QVERIFY(item("soundButton")->isVisible() && node.isMuted());
        click("soundButton");
        QVERIFY(!node.isMuted() && item("soundButton")->property("soundOn").toBool());
        QCOMPARE(audio.category(), AudioSession::Category::Playback);
        click("soundButton");
        QVERIFY(node.isMuted() && !item("soundButton")->property("soundOn").toBool());
        QCOMPARE(audio.category(), AudioSession::Category::SoloAmbient);
        // Paused, the video stays paused through a resize, which refits it.
        click("playPauseButton");
        m_env->clock.runUntilIdle();
        QVERIFY(!node.isPlaying());
        window()->resize(844, 390);
        m_h->advance(0.5);
        QVERIFY(!node.isPlaying());
        QCOMPARE(node.existingView()->size(), card().size());
        click("playPauseButton");
        QVERIFY(node.isPlaying());
        // An image page has no sound to turn on.
        click("nextArrowButton");
        m_h->advance(0.5);
        QVERIFY(!item("soundButton")->isVisible());
    }
};

QTEST_MAIN(StageTest)
#include "tst_stage.moc"
