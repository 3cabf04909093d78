// The main queue's scheduler on a hand-driven clock, and the view animations that run on it.

#include <QColor>
#include <QCoreApplication>
#include <QPointF>
#include <QTest>
#include <QThread>

#include "Platform/Scheduler.h"
#include "Platform/ViewAnimation.h"

using namespace LumoraSDK;

/// Something with animatable properties.
class Target : public QObject {
    Q_OBJECT
    Q_PROPERTY(double opacity MEMBER opacity)
    Q_PROPERTY(QPointF center MEMBER center)
    Q_PROPERTY(QColor color MEMBER color)
    Q_PROPERTY(QString text MEMBER text)

public:
    double opacity = 0;
    QPointF center{0, 0};
    QColor color{Qt::black};
    QString text{"before"};
};

class SchedulerTest : public QObject {
    Q_OBJECT

private slots:
    void init() { Scheduler::setCurrent(&m_clock); }
    void cleanup() {
        Scheduler::setCurrent(nullptr);
        m_clock.advance(3600);  // drain whatever a test left behind
    }

    void firesInOrderOfDueTimeThenScheduling() {
        QStringList fired;
        MainQueue::asyncAfter(0.3, [&] { fired << "c"; });
        MainQueue::asyncAfter(0.1, [&] { fired << "a"; });
        MainQueue::async([&] { fired << "first"; });
        MainQueue::asyncAfter(0.1, [&] { fired << "b"; });
        QVERIFY(fired.isEmpty());  // nothing runs until time moves
        m_clock.advance(0.1);
        QCOMPARE(fired, QStringList({"first", "a", "b"}));
        m_clock.advance(0.2);
        QCOMPARE(fired, QStringList({"first", "a", "b", "c"}));
        QCOMPARE(m_clock.pendingCount(), 0);
    }

    void workScheduledWhileAdvancingFiresWithinTheSpan() {
        QList<double> times;
        const double start = m_clock.now();
        MainQueue::asyncAfter(0.05, [&] {
            times << m_clock.now() - start;
            MainQueue::asyncAfter(0.05, [&] { times << m_clock.now() - start; });
            MainQueue::asyncAfter(0.5, [&] { times << m_clock.now() - start; });
        });
        m_clock.advance(0.2);
        QCOMPARE(times.size(), 2);
        QCOMPARE(std::llround(times[0] * 1e6), 50000LL);
        QCOMPARE(std::llround(times[1] * 1e6), 100000LL);
        m_clock.advance(0.35);
        QCOMPARE(times.size(), 3);
        QCOMPARE(std::llround(times[2] * 1e6), 550000LL);
    }

    void repeatingTimerCountsTicksExactly_data() {
        QTest::addColumn<double>("interval");
        QTest::addColumn<double>("span");
        QTest::addColumn<bool>("fireAtOnce");
        QTest::addColumn<int>("ticks");
        QTest::newRow("hold timer: 60 ticks in 0.59 s plus the immediate one")
            << 0.01 << 0.59 << true << 60;
        QTest::newRow("without firing at once") << 0.05 << 1.0 << false << 20;
        QTest::newRow("just short of the first interval") << 0.05 << 0.049999 << false << 0;
    }

    void repeatingTimerCountsTicksExactly() {
        QFETCH(double, interval);
        QFETCH(double, span);
        QFETCH(bool, fireAtOnce);
        QFETCH(int, ticks);
        int count = 0;
        Timer timer = Scheduler::current().repeating(interval, [&] { ++count; });
        if (fireAtOnce) {
            timer.fire();
        }
        m_clock.advance(span);
        QCOMPARE(count, ticks);
        QVERIFY(timer.isValid());
        timer.invalidate();
        m_clock.advance(10);
        QCOMPARE(count, ticks);
    }

    void timerInvalidatedFromItsOwnCallbackStops() {
        int count = 0;
        Timer timer;
        timer = Scheduler::current().repeating(0.05, [&] {
            if (++count == 3) {
                timer.invalidate();
            }
        });
        m_clock.advance(1);
        QCOMPARE(count, 3);
        QCOMPARE(m_clock.pendingCount(), 0);
    }

    void cancelledWorkNeverRunsAndFiredOneShotIsSpent() {
        int runs = 0;
        Timer cancelled = MainQueue::asyncAfter(0.35, [&] { ++runs; });
        cancelled.invalidate();
        Timer fired = MainQueue::asyncAfter(0.35, [&] { runs += 10; });
        fired.fire();
        QVERIFY(!fired.isValid());
        m_clock.advance(1);
        QCOMPARE(runs, 10);
    }

    void productionSchedulerRunsOnTheApplicationThread() {
        Scheduler::setCurrent(nullptr);
        QThread* ranOn = nullptr;
        std::atomic<bool> done{false};
        QThread* worker = QThread::create([&] {
            MainQueue::async([&] {
                ranOn = QThread::currentThread();
                done = true;
            });
        });
        worker->start();
        QTRY_VERIFY(done.load());
        worker->wait();
        delete worker;
        QCOMPARE(ranOn, QCoreApplication::instance()->thread());
    }

    void reachesEveryEndValueAndCompletesOnce() {
        Target target;
        QList<bool> completions;
        ViewAnimation::animate(0.2,
                               {{&target, "opacity", 1.0},
                                {&target, "center", QPointF(100, 40)},
                                {&target, "color", QColor(Qt::white)},
                                {&target, "text", "after"}},
                               [&](bool finished) { completions << finished; });
        m_clock.advance(0.1);
        QVERIFY(target.opacity > 0.3 && target.opacity < 0.7);  // eased, halfway through
        QCOMPARE(target.text, "before");                        // not interpolated: set at the end
        QVERIFY(completions.isEmpty());
        m_clock.advance(0.1);  // the end lands exactly on time, whatever the frame rhythm
        QCOMPARE(target.opacity, 1.0);
        QCOMPARE(target.center, QPointF(100, 40));
        QCOMPARE(target.color, QColor(Qt::white));
        QCOMPARE(target.text, "after");
        QCOMPARE(completions, QList<bool>{true});
        m_clock.advance(1);
        QCOMPARE(completions.size(), 1);
        QCOMPARE(m_clock.pendingCount(), 0);
    }

    void zeroDurationAppliesAtOnceAndCompletesLater() {
        Target target;
        int completions = 0;
        ViewAnimation::animate(0, {{&target, "opacity", 0.5}}, [&](bool) { ++completions; });
        QCOMPARE(target.opacity, 0.5);
        QCOMPARE(completions, 0);
        m_clock.runUntilIdle();
        QCOMPARE(completions, 1);
    }

    void stoppedAnimationStaysWhereItIs() {
        Target target;
        int completions = 0;
        Timer running =
            ViewAnimation::animate(1.0, {{&target, "opacity", 1.0}}, [&](bool) { ++completions; });
        m_clock.advance(0.5);
        running.invalidate();
        const double reached = target.opacity;
        m_clock.advance(2);
        QCOMPARE(target.opacity, reached);
        QCOMPARE(completions, 0);
    }

    void deletedTargetIsSkipped() {
        auto* target = new Target;
        bool finished = false;
        ViewAnimation::animate(0.1, {{target, "opacity", 1.0}}, [&](bool f) { finished = f; });
        delete target;
        m_clock.advance(0.2);
        QVERIFY(finished);
    }

private:
    ManualScheduler m_clock;
};

QTEST_GUILESS_MAIN(SchedulerTest)
#include "tst_scheduler.moc"
