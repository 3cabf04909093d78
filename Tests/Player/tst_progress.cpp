#include <QQuickWindow>
#include <QTest>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>

#include "Platform/CollectionView/CollectionView.h"
#include "Platform/Scheduler.h"
#include "TestSupport.h"
#include "Views/ChannelProgressCollectionDataSource.h"
#include "Views/ChannelProgressCollectionViewCell.h"

using namespace LumoraSDK;

namespace {
constexpr double kTick = ChannelProgressCollectionDataSource::kTimerInterval;
constexpr double kInf = std::numeric_limits<double>::infinity();

/// What a run reported, in order.
struct RunLog {
    QList<double> fractions;
    QList<int> completedAfter;  // how many fractions had been reported at each completion

    std::function<void(qreal)> onUpdate() {
        return [this](qreal fraction) { fractions << fraction; };
    }
    std::function<void()> onComplete() {
        return [this] { completedAfter << int(fractions.size()); };
    }
};

bool sameFraction(double actual, double expected) {
    return std::isinf(expected) ? actual == expected : qFuzzyCompare(actual, expected);
}

using BarAction = std::function<void(ChannelProgressCollectionDataSource&, CollectionView&)>;
}  // namespace

Q_DECLARE_METATYPE(BarAction)

class ProgressTest : public QObject {
    Q_OBJECT

private slots:
    void init() { Scheduler::setCurrent(&m_clock); }
    void cleanup() { Scheduler::setCurrent(nullptr); }

    // A run of d seconds ticks d × 20 times, the first inside startNewTimer; the last tick
    // completes the run and only then reports its fraction. Paused (timer invalidated) and
    // resumed with the remainder, a run continues the fill against the page's whole length.
    void runs_data() {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<int>("pauseAfter");  // ticks; 0: no pause
        QTest::addColumn<double>("storedRemaining");
        QTest::addColumn<int>("ticks");
        QTest::addColumn<double>("first");
        QTest::addColumn<double>("last");
        QTest::newRow("5 s page") << 5.0 << 0 << 0.0 << 100 << 0.01 << 1.0;
        QTest::newRow("zero length: infinite at once") << 0.0 << 0 << 0.0 << 1 << kInf << kInf;
        QTest::newRow("paused at 260 of 500") << 5.0 << 48 << 260.0 << 52 << 0.49 << 1.0;
        QTest::newRow("remainder of 7 overshoots") << 5.0 << 48 << 7.0 << 2 << 0.996 << 1.006;
        QTest::newRow("resumed after the end") << 5.0 << 100 << 0.0 << 1 << 1.01 << 1.01;
    }
    void runs() {
        QFETCH(double, seconds);
        QFETCH(int, pauseAfter);
        QFETCH(double, storedRemaining);
        QFETCH(int, ticks);
        QFETCH(double, first);
        QFETCH(double, last);
        ChannelProgressCollectionDataSource bar(3);
        RunLog log;
        bar.startNewTimer(seconds, log.onUpdate(), log.onComplete());
        if (pauseAfter > 0) {
            m_clock.advance((pauseAfter - 1) * kTick);
            QCOMPARE(*bar.timerRemainingMs, 500.0 - 5 * pauseAfter);
            bar.progressTimer->invalidate();
            m_clock.advance(1.0);
            QCOMPARE(log.fractions.size(), pauseAfter);
            bar.timerRemainingMs = storedRemaining;
            log = RunLog();
            bar.isResumed = true;
            bar.startNewTimer(*bar.timerRemainingMs / 100, bar.onTimerUpdate, bar.onTimerComplete);
            QCOMPARE(*bar.timerStartingTotalMs, 500.0);
        }
        QCOMPARE(log.fractions.size(), 1);
        QVERIFY(sameFraction(log.fractions.first(), first));
        if (ticks > 1) {
            m_clock.advance((ticks - 2) * kTick);
            QCOMPARE(log.fractions.size(), ticks - 1);
            QVERIFY(log.completedAfter.isEmpty());
            m_clock.advance(kTick);
        }
        QCOMPARE(log.completedAfter, QList<int>{ticks - 1});
        QVERIFY(sameFraction(log.fractions.last(), last));
        m_clock.advance(1.0);
        QCOMPARE(log.fractions.size(), ticks);
        QCOMPARE(m_clock.pendingCount(), 0);
        QVERIFY(!bar.isResumed);
    }

    // A new run silences the one before; a bar that goes away takes its ticks with it.
    void newRunReplacesTheRunningOne() {
        auto bar = std::make_unique<ChannelProgressCollectionDataSource>(2);
        RunLog first;
        RunLog second;
        bar->startNewTimer(5, first.onUpdate(), first.onComplete());
        m_clock.advance(1.0);
        bar->startNewTimer(2, second.onUpdate(), second.onComplete());
        m_clock.advance(1.95);
        QCOMPARE(first.fractions.size(), 21);
        QCOMPARE(second.fractions.size(), 40);
        QCOMPARE(second.completedAfter, QList<int>{39});
        bar->startNewTimer(5, second.onUpdate(), second.onComplete());
        bar.reset();
        m_clock.advance(1.0);
        QCOMPARE(second.fractions.size(), 41);
        QCOMPARE(m_clock.pendingCount(), 0);
    }

    // What the bar shows, sampled from the rendered window: a full segment is white, an empty
    // one shows the 0.3 white track, a recycled one a doubled (brighter) track.
    void renderedFill_data() {
        QTest::addColumn<BarAction>("action");
        QTest::addColumn<QList<double>>("fills");
        QTest::addColumn<QList<int>>("tracks");
        QTest::newRow("complete until 2 of 4")
            << BarAction([](auto& bar, auto& view) { bar.completeProgress(view, 2); })
            << QList<double>{1, 1, 0, 0} << QList<int>{1, 1, 1, 1};
        QTest::newRow("half of segment 1") << BarAction([](auto& bar, auto& view) {
            bar.completeProgress(view, 1);
            bar.updateProgress(view, 1, 0.5);
        }) << QList<double>{1, 0.5, 0, 0} << QList<int>{1, 1, 1, 1};
        QTest::newRow("recycled segment 2") << BarAction([](auto& bar, auto& view) {
            bar.completeProgress(view, 2);
            view.reloadItems({IndexPath{2, 0}});
        }) << QList<double>{1, 1, 0, 0} << QList<int>{1, 1, 2, 1};
        QTest::newRow("infinite fill runs to the end") << BarAction([](auto& bar, auto& view) {
            bar.completeProgress(view, 3);
            bar.updateProgress(view, 3, kInf);
        }) << QList<double>{1, 1, 1, kInf} << QList<int>{1, 1, 1, 1};
    }
    void renderedFill() {
        QFETCH(BarAction, action);
        QFETCH(QList<double>, fills);
        QFETCH(QList<int>, tracks);
        Bar bar;
        // Segments share the bar: (375 ÷ 4) − 4 points wide, 4 points apart.
        const QList<CollectionViewCell*> cells = bar.view.visibleCells();
        QCOMPARE(cells.size(), 4);
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(qobject_cast<ChannelProgressCollectionViewCell*>(cells[i])->progressIndex, i);
            QCOMPARE(cells[i]->mapRectToItem(&bar.view, cells[i]->boundingRect()),
                     QRectF(i * 93.75, 0, 89.75, 20));
        }
        action(bar.dataSource, bar.view);
        const QImage shot = bar.window.grabWindow();
        LumoraTest::saveArtifact(shot, QStringLiteral("progress-") + QTest::currentDataTag());
        // Sample the middle of each segment's filled and empty parts, and the end of the bar.
        QList<QPair<qreal, int>> samples;  // x, expected grey
        for (int i = 0; i < 4; ++i) {
            const qreal x0 = i * 93.75;
            const qreal filled = std::min(fills[i], 1.0);
            if (filled > 0) {
                samples.append({x0 + 89.75 * filled / 2, 255});
            }
            if (filled < 1) {  // the track: 0.3 of white, or 0.3 over 0.3
                samples.append({x0 + 89.75 * (filled + 1) / 2, tracks[i] == 1 ? 77 : 130});
            }
        }
        samples.append({373, std::isinf(fills.last()) ? 255 : 0});
        for (const auto& [x, expected] : samples) {
            const int seen = qRed(shot.pixel(int(x), 10));
            QVERIFY2(std::abs(seen - expected) <= 8,
                     qPrintable(QStringLiteral("x %1: %2, not %3").arg(x).arg(seen).arg(expected)));
        }
    }

private:
    /// A progress bar of 4 segments, 375 by 20 points, in an offscreen window with a black
    /// background.
    struct Bar {
        Bar() : dataSource(4) {
            window.setColor(Qt::black);
            window.resize(375, 20);
            view.setParentItem(window.contentItem());
            view.setSize(QSizeF(375, 20));
            ChannelProgressCollectionViewCell::registerIn(view);
            view.setDataSource(&dataSource);
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
            view.layoutIfNeeded();
        }
        QQuickWindow window;
        ChannelProgressCollectionDataSource dataSource;
        CollectionView view;
    };

    ManualScheduler m_clock;
};

QTEST_MAIN(ProgressTest)
#include "tst_progress.moc"
