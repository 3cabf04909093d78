// The player's gestures: press-and-hold timing against clicks, what blocks a click, the pan that
// closes or springs back, the swipe up into the page's link, and real pointer and key events on
// the offscreen player checked through the page, the page timer and the server's events.

#include "PlayerTestSupport.h"
#include "ViewControllers/WebViewController.h"

using namespace LumoraSDK;
using namespace PlayerTest;
using Target = ChannelsHostViewController::HoldTarget;

Q_DECLARE_METATYPE(Target)

class HostGesturesTest : public HostTestCase {
    Q_OBJECT

    /// The player open on the second page of a fresh channel of three 10-second image pages
    /// (the second one unskippable unless `skippable`, with `link`), its timer running.
    bool openOnSecondPage(const QString& id, bool skippable = true, const QString& link = {}) {
        QJsonObject second{{"skippable", skippable}};
        if (!link.isEmpty()) {
            second.insert("swipeUpUrl", link);
            second.insert("swipeUpText", "More");
            second.insert("showSwipeUpUi", true);
        }
        return m_h->openRunning(
            QJsonArray{withPage(imageChannelJson(*m_env, id, "unread", 3, 10), 1, second)}, 0,
            true);
    }
    /// Holds for `ticks` ticks of the hold timer, the first of which counts at once.
    void hold(Target target, int ticks, const std::function<void()>& meanwhile = {}) {
        ChannelsHostViewController* host = m_h->host();
        host->onButtonHold(GestureState::Began, target);
        m_env->clock.runUntilIdle();
        for (int tick = 1; tick < ticks; ++tick) {
            m_env->clock.advance(ChannelsHostViewController::kHoldTimerInterval);
        }
        if (meanwhile) {
            meanwhile();
        }
        host->onButtonHold(GestureState::Ended, target);
        m_env->clock.runUntilIdle();
    }

private slots:
    void holdOrClick_data() {
        QTest::addColumn<Target>("target");
        QTest::addColumn<int>("ticks");
        QTest::addColumn<bool>("skippable");
        QTest::addColumn<QString>("flags");  // s: pager scrolled, p: panned, u: swiped up
        QTest::addColumn<int>("page");
        QTest::addColumn<QString>("logged");
        QTest::addColumn<bool>("resumed");
        const auto row = [](const char* name, Target target, int ticks, bool skippable,
                            const char* flags, int page, const char* logged, bool resumed) {
            QTest::newRow(name) << target << ticks << skippable << QString(flags) << page
                                << QString(logged) << resumed;
        };
        const char* click = "PASSED as click";
        row("59 ticks: click", Target::Next, 59, true, "", 2, click, true);
        row("60 ticks: hold", Target::Next, 60, true, "", 1, "PASSED as hold release", true);
        row("unskippable: next blocked", Target::Next, 1, false, "", 1,
            "BLOCKED (reason: page not skippable)", true);
        row("unskippable: previous passes", Target::Previous, 1, false, "", 0, click, true);
        row("pager moved: not resumed", Target::Next, 1, true, "s", 1,
            "BLOCKED (reason: channel collection view scrolled)", false);
        row("panned", Target::Next, 1, true, "p", 1, "BLOCKED (reason: panned vertically)", true);
        row("swiped up outranks both", Target::Next, 1, true, "spu", 1,
            "BLOCKED (reason: swiped up)", false);
    }
    void holdOrClick() {
        QFETCH(Target, target);
        QFETCH(int, ticks);
        QFETCH(bool, skippable);
        QFETCH(QString, flags);
        QFETCH(int, page);
        QFETCH(QString, logged);
        QFETCH(bool, resumed);
        QVERIFY(openOnSecondPage(QStringLiteral("h%1")
                                     .arg(QTest::currentDataTag())
                                     .left(20)
                                     .simplified()
                                     .replace(' ', '-'),
                                 skippable));
        ChannelsHostViewController* host = m_h->host();
        LumoraTest::LogCapture log;
        hold(target, ticks, [&] {
            // Held: the page's timer stands still.
            QVERIFY(!m_h->pageTimerRuns());
            host->channelCollectionViewDidScroll = flags.contains('s');
            host->hasPannedVertically = flags.contains('p');
            host->hasSwipedUp = flags.contains('u');
        });
        QVERIFY(log.contains(QStringLiteral("onButtonHold - UIGestureRecognizer.State.ended -> ") +
                             logged));
        QCOMPARE(m_h->player()->currentIndex(), page);
        if (page == 1) {
            QCOMPARE(m_h->pageTimerRuns(), resumed);
        }
        QVERIFY(!host->channelCollectionViewDidScroll && !host->hasPannedVertically &&
                !host->hasSwipedUp);
        QVERIFY(!host->longHoldTimer.isValid());
    }

    void panClosesOrSpringsBack_data() {
        QTest::addColumn<QList<qreal>>("path");  // translations as fractions of the height
        QTest::addColumn<bool>("closes");
        QTest::newRow("10% down springs back") << QList<qreal>{0.05, 0.1} << false;
        QTest::newRow("25% down closes") << QList<qreal>{0.1, 0.25} << true;
        QTest::newRow("up: no lift") << QList<qreal>{-0.05, -0.1} << false;
    }
    void panClosesOrSpringsBack() {
        QFETCH(QList<qreal>, path);
        QFETCH(bool, closes);
        QVERIFY(openOnSecondPage("pan"));
        ChannelsHostViewController* host = m_h->host();
        const qreal height = host->view()->height();
        host->onPan(GestureState::Began, 0);
        for (qreal fraction : path) {
            host->onPan(GestureState::Changed, fraction * height);
        }
        QVERIFY(host->channelsCollectionContainerView()->y() >= 0);
        host->onPan(GestureState::Ended, path.last() * height);
        m_h->advance(0.5);
        QTRY_COMPARE(!m_h->host(), closes);
        if (!closes) {
            QCOMPARE(host->channelsCollectionContainerView()->y(), 0.0);
            QCOMPARE(host->channelsCollectionContainerView()->scale(), 1.0);
        }
    }

    // A swipe up over a page with a web link opens it once: tst_playerraces, with real events.
    void swipeUpWithoutAUsableLinkResumes_data() {
        QTest::addColumn<QString>("link");
        QTest::newRow("no link") << "";
        QTest::newRow("script link refused") << "javascript:alert(1)";
    }
    void swipeUpWithoutAUsableLinkResumes() {
        QFETCH(QString, link);
        QVERIFY(openOnSecondPage("up", true, link));
        ChannelsHostViewController* host = m_h->host();
        host->onButtonHold(GestureState::Began, Target::Next);
        host->onPan(GestureState::Began, 0);
        for (qreal y : {-20.0, -120.0, -200.0, -300.0}) {
            host->onPan(GestureState::Changed, y);
        }
        host->onPan(GestureState::Ended, -300);
        host->onButtonHold(GestureState::Ended, Target::Next);
        m_env->clock.runUntilIdle();
        const auto presented =
            PresentationStack::forWindow(&m_h->scene()->window)->presentedViewControllers();
        QCOMPARE(int(presented.size()), 1);
        QCOMPARE(m_h->player()->currentIndex(), 1);
        QVERIFY(m_h->pageTimerRuns());
    }

    void pointerAndKeys_data() {
        QTest::addColumn<QString>("action");
        QTest::addColumn<int>("page");
        QTest::addColumn<QString>("event");
        QTest::newRow("tap right") << "tap 300" << 2 << "skipPage pk-tap-right pk-tap-right-3";
        QTest::newRow("tap left") << "tap 40" << 0 << "previousPage pk-tap-left pk-tap-left-1";
        QTest::newRow("touch right")
            << "touch 300" << 2 << "skipPage pk-touch-right pk-touch-right-3";
        QTest::newRow("hold") << "hold" << 1 << "";
        QTest::newRow("tap learn more")
            << "pill" << 1 << "swipeUpOnPage pk-tap-learn-more pk-tap-learn-more-2";
        QTest::newRow("drag down")
            << "drag" << -1 << "dismissedChannel pk-drag-down pk-drag-down-2";
        QTest::newRow("right arrow")
            << "key right" << 2 << "skipPage pk-right-arrow pk-right-arrow-3";
        QTest::newRow("escape") << "key escape" << -1 << "dismissedChannel pk-escape pk-escape-2";
    }
    void pointerAndKeys() {
        QFETCH(QString, action);
        QFETCH(int, page);
        QFETCH(QString, event);
        const QString id =
            QStringLiteral("pk-") + QString::fromLatin1(QTest::currentDataTag()).replace(' ', '-');
        QVERIFY(openOnSecondPage(id, true, action == "pill" ? "http://127.0.0.1:9/p" : ""));
        QQuickWindow* window = &m_h->scene()->window;
        const QPoint middle(180, 320);
        if (action.startsWith("tap")) {
            const QStringList at = action.split(' ');
            QTest::mouseClick(window, Qt::LeftButton, {},
                              QPoint(at.value(1).toInt(), at.value(2, "320").toInt()));
        } else if (action == "pill") {
            m_h->advance(1.0);  // the pill shows after its delay
            QTest::mouseClick(window, Qt::LeftButton, {}, QPoint(180, 600));
        } else if (action.startsWith("touch")) {
            static QPointingDevice* finger = QTest::createTouchDevice();
            const QPoint at(action.mid(6).toInt(), 320);
            QTest::touchEvent(window, finger).press(0, at);
            QTest::touchEvent(window, finger).release(0, at);
        } else if (action == "hold") {
            QTest::mousePress(window, Qt::LeftButton, {}, middle);
            const double remaining =
                *m_h->player()->progressCollectionViewDataSource->timerRemainingMs;
            m_h->advance(1.0);
            QCOMPARE(*m_h->player()->progressCollectionViewDataSource->timerRemainingMs, remaining);
            QVERIFY(!m_h->player()->isInteractiveLayoutVisible);
            QTest::mouseRelease(window, Qt::LeftButton, {}, middle);
        } else if (action == "drag") {
            QTest::mousePress(window, Qt::LeftButton, {}, middle);
            for (int y = 330; y <= 520; y += 10) {
                QTest::mouseMove(window, QPoint(180, y));
            }
            QTest::mouseRelease(window, Qt::LeftButton, {}, QPoint(180, 520));
        } else {
            QTest::keyClick(window, action == "key right" ? Qt::Key_Right : Qt::Key_Escape);
        }
        m_h->advance(0.6);
        const bool opensViewer = action == "pill";
        if (page < 0) {
            QTRY_VERIFY(!m_h->host());
        } else {
            QCOMPARE(m_h->player()->currentIndex(), page);
            QCOMPARE(m_h->pageTimerRuns(), !opensViewer);
            QVERIFY(m_h->player()->isInteractiveLayoutVisible);
        }
        if (!event.isEmpty()) {
            // Moving a page also records the new page's history; closing or opening the link
            // records only itself.
            const QStringList events =
                m_h->eventsSince(m_h->eventsSeen, page < 0 || opensViewer ? 1 : 2);
            QVERIFY2(events.contains(event), qPrintable(events.join(", ")));
        }
        if (opensViewer) {
            const auto presented =
                PresentationStack::forWindow(&m_h->scene()->window)->presentedViewControllers();
            auto* viewer = qobject_cast<WebViewController*>(presented.last());
            QVERIFY(viewer);
            viewer->onCloseButtonPressed();
            m_h->advance(1.0);
            QVERIFY(m_h->pageTimerRuns());
        }
    }
};

QTEST_MAIN(HostGesturesTest)
#include "tst_hostgestures.moc"
