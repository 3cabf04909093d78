// The player under real timing: input that lands in one turn or across turns, videos that load
// late or under unusual addresses, a web page over the player, the window leaving the viewer's
// sight, and what is left behind once the player has closed. Real pointer and key events,
// real videos from lumora-devserver; page timers on ManualScheduler.

#include <QMediaPlayer>
#include <QQuickItem>
#include <QTest>

#include "LiveObjects.h"
#include "Lumora.h"
#include "Platform/Layers/Layer.h"
#include "Platform/VideoNode.h"
#include "Platform/VideoPlayerItem.h"
#include "PlayerTestSupport.h"
#include "Services/VideoPrefetchService.h"
#include "ViewControllers/WebViewController.h"

using namespace LumoraSDK;
using namespace PlayerTest;

class PlayerRacesTest : public HostTestCase {
    Q_OBJECT

    QQuickWindow* window() { return &m_h->scene()->window; }
    QList<PresentableViewController*> presented() {
        return PresentationStack::forWindow(window())->presentedViewControllers();
    }
    /// Waits until the host's video node plays `url`.
    bool waitForVideo(const QString& url) {
        return m_h->waitFor([&] {
            VideoNode* node = m_h->host() ? m_h->host()->videoNode.get() : nullptr;
            return node && node->assetUrl() == url && node->isPlaying();
        });
    }
    /// A press, a drag to `to` in steps of separate turns, and a release.
    void drag(QPoint from, QPoint to) {
        QTest::mousePress(window(), Qt::LeftButton, {}, from);
        for (int step = 1; step <= 10; ++step) {
            QTest::mouseMove(window(), from + (to - from) * step / 10);
            m_h->advance(0.05);
        }
        QTest::mouseRelease(window(), Qt::LeftButton, {}, to);
    }

private slots:
    void aLateVideoLoadLeavesTheVideoOnScreen() {
        // The first page's video is slow to come; the viewer moves on to the second one.
        const QString slow = m_env->mediaUrl("fitness/page-3.mp4");
        const QString fast = m_env->mediaUrl("music/page-1.mp4");
        m_env->server().setFault("/media/fitness/page-3.mp4", {{"delayMs", 1500}});
        const QJsonObject channel =
            withPage(withPage(imageChannelJson(*m_env, "late", "unread", 2, 5), 0,
                              {{"type", "video"}, {"url", slow}}),
                     1, {{"type", "video"}, {"url", fast}});
        QVERIFY(m_h->openFromRow(QJsonArray{channel}, 0));
        m_h->advance(0.3);
        QTest::mouseClick(window(), Qt::LeftButton, {}, QPoint(300, 320));
        m_h->advance(0.1);
        QVERIFY(waitForVideo(fast));
        // Every player of the slow video has finished preparing and handed it over.
        QVERIFY(m_h->waitFor([&] {
            for (VideoPlayerItem* item : LumoraTest::LiveObjects::of<VideoPlayerItem>()) {
                if (item->url().toString() == slow &&
                    item->state() == VideoPlayerItem::State::Loading) {
                    return false;
                }
            }
            return VideoPrefetchService::cachedVideoUrls().contains(slow);
        }));
        m_h->advance(0.2);
        QCOMPARE(m_h->host()->videoNode->assetUrl(), fast);
        QVERIFY(m_h->host()->videoNode->isPlaying());
    }

    void aVideoEndsItsPageWhateverTheAddressLooksLike_data() {
        QTest::addColumn<QString>("address");
        QTest::newRow("scheme in capitals") << "HTTP://127.0.0.1:%1/media/music/page-1.mp4";
        QTest::newRow("escaped dash") << "http://127.0.0.1:%1/media/music/page%2D1.mp4";
    }
    void aVideoEndsItsPageWhateverTheAddressLooksLike() {
        QFETCH(QString, address);
        const QString url = address.arg(QUrl(m_env->server().baseUrl()).port());
        QVERIFY(
            m_h->openFromRow(QJsonArray{withPage(imageChannelJson(*m_env, "addr", "unread", 2, 5),
                                                 0, {{"type", "video"}, {"url", url}})},
                             0));
        m_h->advance(0.3);
        QVERIFY(waitForVideo(url));
        QMediaPlayer* player = m_h->host()->videoNode->player();
        player->setPosition(player->duration() - 300);
        QVERIFY(m_h->waitFor([&] { return m_h->player()->currentIndex() == 1; }));
    }

    void aReleaseInThePressTurnKeepsAnUnskippablePageRunning_data() {
        QTest::addColumn<bool>("key");
        QTest::newRow("right arrow") << true;
        QTest::newRow("fast click") << false;
    }
    void aReleaseInThePressTurnKeepsAnUnskippablePageRunning() {
        QFETCH(bool, key);
        QVERIFY(
            m_h->openRunning(QJsonArray{withPage(imageChannelJson(*m_env, "stay", "unread", 2, 2),
                                                 0, {{"skippable", false}})},
                             0));
        if (key) {
            QTest::keyClick(window(), Qt::Key_Right);
        } else {
            QTest::mouseClick(window(), Qt::LeftButton, {}, QPoint(300, 320));
        }
        m_h->advance(0.1);
        QCOMPARE(m_h->player()->currentIndex(), 0);
        QVERIFY(m_h->pageTimerRuns());
        m_h->advance(2.0);
        QVERIFY(m_h->waitForPageTimer(0, 1));
    }

    void aFinishedChannelCompletesAtOnceWhenShownAgain() {
        QVERIFY(m_h->openRunning(QJsonArray{imageChannelJson(*m_env, "done", "unread", 1, 3),
                                            imageChannelJson(*m_env, "next", "unread", 2, 3)},
                                 0));
        m_h->advance(3.5);
        QVERIFY(m_h->waitForPageTimer(1, 0));
        int seen = int(eventLines(*m_env).size());
        // Back to the first channel, whose run is over: it hands over to the next at once.
        QTest::mouseClick(window(), Qt::LeftButton, {}, QPoint(30, 320));
        m_h->advance(1.0);
        QCOMPARE(m_h->host()->currentVisibleChannelIndex(), 1);
        QVERIFY(m_h->eventsSince(seen, 4).contains("completeChannel done done-1"));
    }

    void thePageHoldsUnderAWebPageAndTheHostClosesWhole() {
        const QJsonObject channel =
            withPage(imageChannelJson(*m_env, "web", "unread", 1, 2), 0,
                     {{"swipeUpUrl", m_env->server().baseUrl() + "/pages/offers.html"}});
        for (const bool closeViewer : {true, false}) {
            QVERIFY(m_h->openRunning(QJsonArray{channel}, 0));
            drag(QPoint(180, 400), QPoint(180, 200));
            m_h->advance(3.0);
            QCOMPARE(presented().size(), 2);
            QVERIFY(!m_h->pageTimerRuns());
            QVERIFY(m_h->scene()->row->isChannelHostActive());
            auto* viewer = qobject_cast<WebViewController*>(presented().last());
            if (closeViewer) {
                QTest::mouseClick(window(), Qt::LeftButton, {},
                                  viewer->closeButton()->mapToScene({10, 10}).toPoint());
                m_h->advance(0.5);
                QVERIFY(m_h->pageTimerRuns());
                m_h->advance(2.5);
            } else {
                m_h->host()->dismissToCellCenter();
                m_h->advance(0.5);
            }
            QTRY_VERIFY(presented().isEmpty());
            QVERIFY(!m_h->scene()->row->isChannelHostActive());
        }
    }

    void theMediaPausesOutOfSight_data() {
        QTest::addColumn<QString>("leave");
        QTest::newRow("another window active") << "activate";
        QTest::newRow("minimised") << "minimise";
        QTest::newRow("hidden") << "hide";
    }
    void theMediaPausesOutOfSight() {
        QFETCH(QString, leave);
        QVERIFY(m_h->openRunning(QJsonArray{imageChannelJson(*m_env, "sight", "unread", 2, 5)}, 0));
        QWindow other;
        if (leave == "activate") {
            other.show();
            other.requestActivate();
        } else if (leave == "minimise") {
            window()->showMinimized();
        } else {
            window()->hide();
        }
        QTRY_VERIFY(!m_h->pageTimerRuns());
        const double remaining = *m_h->player()->progressCollectionViewDataSource->timerRemainingMs;
        m_h->advance(1.0);
        QCOMPARE(*m_h->player()->progressCollectionViewDataSource->timerRemainingMs, remaining);
        other.hide();
        window()->showNormal();
        window()->requestActivate();
        QTRY_VERIFY(m_h->pageTimerRuns());
    }

    void closingLeavesNoLayerOrPlayerBehind() {
        // Images, a video and a web page: every kind of drawing layer the player makes.
        QVERIFY(m_h->openRunning(
            QJsonArray{withPage(imageChannelJson(*m_env, "layers", "unread", 2, 5), 1,
                                {{"type", "video"}, {"url", m_env->mediaUrl("music/page-1.mp4")}})},
            0));
        QTest::keyClick(window(), Qt::Key_Right);
        m_h->advance(0.3);
        QVERIFY(waitForVideo(m_env->mediaUrl("music/page-1.mp4")));
        QTest::keyClick(window(), Qt::Key_Escape);
        m_h->advance(0.5);
        QTRY_VERIFY(presented().isEmpty());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        for (Layer* layer : LumoraTest::LiveObjects::of<Layer>()) {
            QVERIFY2(layer->parentItem(), layer->metaObject()->className());
        }
        // The video went back to the cache, without anything to draw into.
        for (QMediaPlayer* player : LumoraTest::LiveObjects::of<QMediaPlayer>()) {
            QVERIFY(!player->videoOutput());
            QVERIFY(player->playbackState() != QMediaPlayer::PlayingState);
        }
    }
};

int main(int argc, char** argv) {
    LumoraTest::LiveObjects::install();
    Lumora::prepareApplication();
    QGuiApplication app(argc, argv);
    PlayerRacesTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_playerraces.moc"
