#include <QTest>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>

#include "Platform/Scheduler.h"
#include "Views/ChannelProgressCollectionDataSource.h"

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
}  // namespace

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

private:
    ManualScheduler m_clock;
};

QTEST_MAIN(ProgressTest)
#include "tst_progress.moc"
