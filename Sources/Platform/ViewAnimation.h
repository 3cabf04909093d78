#pragma once

#include <QByteArray>
#include <QEasingCurve>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QVariant>
#include <functional>

#include "Scheduler.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// Animates properties of items over time: the grow, shrink, pop and fade animations of the
/// interface. Frames come from the Scheduler, so a test drives an animation to its end with
/// ManualScheduler::advance instead of waiting for it.
class LUMORASDK_EXPORT ViewAnimation {
public:
    /// One property of one object, animated from its current value to `to`. Numbers, points,
    /// sizes, rectangles and colours interpolate; anything else is set at the end.
    struct Change {
        QPointer<QObject> target;
        QByteArray property;
        QVariant to;
    };
    using Completion = std::function<void(bool finished)>;

    static constexpr double kFrameInterval = 1.0 / 60.0;

    /// Moves every change to its end value over `duration` seconds (ease in and out), then calls
    /// `completion(true)`. A duration of 0 applies the values at once and completes on the next
    /// turn of the main queue. Invalidating the returned timer stops the animation where it
    /// stands, without its completion.
    static Timer animate(double duration, const QList<Change>& changes, Completion completion = {});
    /// The same with a step function called with the eased progress, from 0 to 1.
    static Timer animate(double duration, std::function<void(double progress)> step,
                         Completion completion = {});

    /// The value `fraction` of the way from `from` to `to`.
    static QVariant interpolate(const QVariant& from, const QVariant& to, double fraction);
};

}  // namespace LumoraSDK
