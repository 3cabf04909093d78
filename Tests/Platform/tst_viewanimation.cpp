#include <QColor>
#include <QPointF>
#include <QTest>

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

class ViewAnimationTest : public QObject {
    Q_OBJECT

private slots:
    void init() { Scheduler::setCurrent(&m_clock); }
    void cleanup() { Scheduler::setCurrent(nullptr); }

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

QTEST_GUILESS_MAIN(ViewAnimationTest)
#include "tst_viewanimation.moc"
