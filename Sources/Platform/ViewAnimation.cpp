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
    bool done = false;

    void finish(bool finished) {
        if (done) {
            return;
        }
        done = true;
        timer.invalidate();
        timer = Timer();  // lets the scheduler release the last reference to this run
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
        const double linear =
            std::min(1.0, (Scheduler::current().now() - run->start) / run->duration);
        run->step(curve.valueForProgress(linear));
        if (linear >= 1.0) {
            run->finish(true);
        }
    });
    return run->timer;
}

}  // namespace LumoraSDK
