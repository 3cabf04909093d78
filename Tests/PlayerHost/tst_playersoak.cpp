// A long, seeded random session on a showcase-like screen (a row of the server's own channels
// and the player over it) with slow media: taps on both sides, holds, drags in every direction,
// arrows, Escape and opening from the row, each a real pointer or key event. After every event
// the player must hold together: one host at most, one page timer at most, nothing left over a
// closed host, the row knowing whether a host is up, and only well-formed activities sent.
//
// LUMORA_SOAK_SEED and LUMORA_SOAK_EVENTS choose another session; the default one is short
// enough for CI.

#include <QQuickItem>
#include <QTest>
#include <random>

#include "LiveObjects.h"
#include "Lumora.h"
#include "PlayerTestSupport.h"
#include "Services/Logger.h"
#include "ViewControllers/WebViewController.h"

using namespace LumoraSDK;
using namespace PlayerTest;

class PlayerSoakTest : public HostTestCase {
    Q_OBJECT

    std::mt19937 m_random;
    int m_events = 0;
    qint64 m_lastEvent = -1;
    QString m_problem;

    int pick(int below) { return std::uniform_int_distribution<int>(0, below - 1)(m_random); }
    QQuickWindow* window() { return &m_h->scene()->window; }
    QList<PresentableViewController*> presented() {
        return PresentationStack::forWindow(window())->presentedViewControllers();
    }

    /// Time in one step (every timer due meanwhile fires, in order), then the events it caused,
    /// with whatever host is up laid out.
    void advance(double seconds) {
        m_env->clock.advance(seconds);
        QCoreApplication::processEvents();
        for (PresentableViewController* screen : presented()) {
            if (auto* host = qobject_cast<ChannelsHostViewController*>(screen)) {
                host->channelsCollectionView()->layoutIfNeeded();
            }
        }
        m_env->animations.advanceBy(qint64(seconds * 1000));
    }

    /// The invariants, after each event; the first broken one is reported.
    QString broken() {
        const QList<PresentableViewController*> screens = presented();
        int hosts = 0;
        for (PresentableViewController* screen : screens) {
            hosts += qobject_cast<ChannelsHostViewController*>(screen) != nullptr;
        }
        int timers = 0;
        for (ChannelViewController* player : LumoraTest::LiveObjects::of<ChannelViewController>()) {
            const auto& progress = player->progressCollectionViewDataSource;
            timers += progress && progress->progressTimer && progress->progressTimer->isValid();
        }
        if (hosts > 1 || timers > 1) {
            return QStringLiteral("%1 hosts, %2 running page timers").arg(hosts).arg(timers);
        }
        if (!hosts && !screens.isEmpty()) {
            return QStringLiteral("a screen is left over a closed host");
        }
        if (m_h->scene()->row->isChannelHostActive() != bool(hosts)) {
            return QStringLiteral("the row thinks a host is %1").arg(hosts ? "closed" : "open");
        }
        static const QStringList wire{"openedChannel", "dismissedChannel",  "skipPage",
                                      "skipChannel",   "completePage",      "completeChannel",
                                      "swipeUpOnPage", "shareButtonTapped", "previousPage"};
        for (const QJsonValue& event : m_env->server().events(m_lastEvent)) {
            m_lastEvent = event["seq"].toInteger();
            const QJsonObject body = event["body"].toObject();
            const bool activity = event["kind"] == "activity";
            if ((activity && !wire.contains(body["activityItemType"].toString())) ||
                body[activity ? "channelStoryId" : "ChannelStoryId"].toString().isEmpty() ||
                body["pageStoryId"].toString().isEmpty()) {
                return QStringLiteral("the server got ") + QJsonDocument(body).toJson();
            }
        }
        return {};
    }

    /// Counts one real event and checks the invariants after it.
    bool sent() {
        ++m_events;
        m_problem = broken();
        return m_problem.isEmpty();
    }

    bool press(QPoint at) { return QTest::mousePress(window(), Qt::LeftButton, {}, at), sent(); }
    bool release(QPoint at) {
        return QTest::mouseRelease(window(), Qt::LeftButton, {}, at), sent();
    }
    bool key(Qt::Key key) {
        QTest::keyPress(window(), key);
        if (!sent()) {
            return false;
        }
        return QTest::keyRelease(window(), key), sent();
    }
    /// A press, moves towards `to` a turn apart, and a release.
    bool drag(QPoint from, QPoint to, int steps) {
        if (!press(from)) {
            return false;
        }
        for (int step = 1; step <= steps; ++step) {
            QTest::mouseMove(window(), from + (to - from) * step / steps);
            advance(0.05);
            if (!sent()) {
                return false;
            }
        }
        return release(to);
    }

    /// One random gesture of the viewer.
    bool act() {
        const QPoint middle(180, 320);
        switch (pick(10)) {
            case 0:
            case 1: {
                const QPoint at(pick(2) ? 40 : 300, 200 + pick(300));
                return press(at) && release(at);
            }
            case 2:
                if (!press(middle)) {
                    return false;
                }
                advance(0.4 + 0.1 * pick(6));
                return release(middle);
            case 3:
                return drag(middle, middle + QPoint(0, 40 + pick(250)), 2 + pick(8));
            case 4:
                return drag(middle, middle - QPoint(0, 100 + pick(150)), 2 + pick(8));
            case 5:
                return drag(middle, middle + QPoint(pick(2) ? 150 : -150, 0), 2 + pick(8));
            case 6:
                return key(pick(2) ? Qt::Key_Right : Qt::Key_Left);
            case 7:
                return key(Qt::Key_Escape);
            default: {
                // A row cell when the row shows, the web page's close button when one is up.
                const QList<PresentableViewController*> screens = presented();
                auto* web =
                    screens.isEmpty() ? nullptr : qobject_cast<WebViewController*>(screens.last());
                QQuickItem* target = web ? web->closeButton() : nullptr;
                const QList<LumoraRowViewCell*> cells = m_h->scene()->visibleCells();
                if (!target && screens.isEmpty() && !cells.isEmpty()) {
                    target = cells.at(pick(int(cells.size())));
                }
                const QPoint center =
                    target ? target->mapToScene(QPointF(target->width() / 2, target->height() / 2))
                                 .toPoint()
                           : middle;
                // A cell half off the strip is pressed where it shows.
                const QPoint at(qBound(1, center.x(), window()->width() - 1), center.y());
                return press(at) && release(at);
            }
        }
    }

private slots:
    void aLongRandomSessionKeepsThePlayerWhole() {
        const int seed = qEnvironmentVariableIntValue("LUMORA_SOAK_SEED");
        const int events = qEnvironmentVariableIsSet("LUMORA_SOAK_EVENTS")
                               ? qEnvironmentVariableIntValue("LUMORA_SOAK_EVENTS")
                               : 5000;
        m_random.seed(seed);
        // As an application runs: errors only (the fixture asks for every line).
        if (auto* sdkLogger = dynamic_cast<Logger*>(&logger())) {
            sdkLogger->setLogLevel(LogLevel::error);
        }
        QVERIFY(m_h->openFromRow(m_env->serverChannels(), 0));
        // Every picture and video comes late.
        m_env->server().setFault("/media/*", {{"delayMs", 150}});
        while (m_events < events) {
            QVERIFY2(act(), qPrintable(QStringLiteral("seed %1, event %2: %3")
                                           .arg(seed)
                                           .arg(m_events)
                                           .arg(m_problem)));
            advance(0.05 * pick(30));
        }
        qInfo("%d events, seed %d", m_events, seed);
    }
};

int main(int argc, char** argv) {
    LumoraTest::LiveObjects::install();
    Lumora::prepareApplication();
    QGuiApplication app(argc, argv);
    PlayerSoakTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_playersoak.moc"
