#include "ViewAnimation.h"

#include <QColor>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <algorithm>
#include <memory>

namespace LumoraSDK {

namespace {
double lerp(double a, double b, double t) {
    return a + (b - a) * t;
}

struct Run {
    double duration = 0;
    double start = 0;
    std::function<void(double)> step;
    ViewAnimation::Completion completion;
    Timer timer;
    Timer endTimer;
    bool done = false;

    void finish(bool finished) {
        if (done) {
            return;
        }
        done = true;
        timer.invalidate();
        endTimer.invalidate();
        // Lets the scheduler release the last references to this run.
        timer = Timer();
        endTimer = Timer();
        if (completion) {
            completion(finished);
        }
    }
};
}  // namespace

QVariant ViewAnimation::interpolate(const QVariant& from, const QVariant& to, double t) {
    switch (to.typeId()) {
        case QMetaType::Double:
        case QMetaType::Float:
        case QMetaType::Int:
            return lerp(from.toDouble(), to.toDouble(), t);
        case QMetaType::QPointF: {
            const QPointF a = from.toPointF();
            const QPointF b = to.toPointF();
            return QPointF(lerp(a.x(), b.x(), t), lerp(a.y(), b.y(), t));
        }
        case QMetaType::QSizeF: {
            const QSizeF a = from.toSizeF();
            const QSizeF b = to.toSizeF();
            return QSizeF(lerp(a.width(), b.width(), t), lerp(a.height(), b.height(), t));
        }
        case QMetaType::QRectF: {
            const QRectF a = from.toRectF();
            const QRectF b = to.toRectF();
            return QRectF(lerp(a.x(), b.x(), t), lerp(a.y(), b.y(), t),
                          lerp(a.width(), b.width(), t), lerp(a.height(), b.height(), t));
        }
        case QMetaType::QColor: {
            const QColor a = from.value<QColor>();
            const QColor b = to.value<QColor>();
            return QColor::fromRgbF(
                float(lerp(a.redF(), b.redF(), t)), float(lerp(a.greenF(), b.greenF(), t)),
                float(lerp(a.blueF(), b.blueF(), t)), float(lerp(a.alphaF(), b.alphaF(), t)));
        }
        default:
            return t >= 1 ? to : from;
    }
}

Timer ViewAnimation::animate(double duration, const QList<Change>& changes, Completion completion) {
    QList<QVariant> starts;
    for (const Change& change : changes) {
        starts.append(change.target ? change.target->property(change.property) : QVariant());
    }
    return animate(
        duration,
        [changes, starts](double progress) {
            for (qsizetype i = 0; i < changes.size(); ++i) {
                if (changes[i].target) {
                    changes[i].target->setProperty(changes[i].property,
                                                   interpolate(starts[i], changes[i].to, progress));
                }
            }
        },
        std::move(completion));
}

Timer ViewAnimation::animate(double duration, std::function<void(double)> step,
                             Completion completion) {
    auto run = std::make_shared<Run>();
    run->duration = duration;
    run->step = std::move(step);
    run->completion = std::move(completion);
    if (duration <= 0) {
        run->step(1.0);
        run->timer = MainQueue::async([run] { run->finish(true); });
        return run->timer;
    }
    static const QEasingCurve curve(QEasingCurve::InOutQuad);
    run->start = Scheduler::current().now();
    run->timer = Scheduler::current().repeating(kFrameInterval, [run] {
        if (run->done) {
            return;
        }
        if (!run->endTimer.isValid()) {  // stopped by the caller
            run->timer.invalidate();
            return;
        }
        const double linear = (Scheduler::current().now() - run->start) / run->duration;
        if (linear < 1.0) {
            run->step(curve.valueForProgress(linear));
        }
    });
    // The last frame lands exactly at the end, whatever the frame rhythm.
    Timer end = Scheduler::current().after(duration, [run] {
        if (!run->done) {
            run->step(1.0);
            run->finish(true);
        }
    });
    run->endTimer = end;
    return end;
}

}  // namespace LumoraSDK
