#pragma once

#include <QMutex>
#include <QtGlobal>
#include <functional>
#include <memory>
#include <vector>

#include "lumorasdk_export.h"

namespace LumoraSDK {

namespace detail {
struct TimerRecord;
}

/// Handle to a scheduled callback. Copies share the same timer. A default-constructed
/// handle is invalid and its operations do nothing.
class LUMORASDK_EXPORT Timer {
public:
    Timer() = default;
    explicit Timer(std::shared_ptr<detail::TimerRecord> record);

    /// Stops the timer for good; pending and future fires are dropped.
    void invalidate();
    bool isValid() const;
    /// Runs the callback now, without changing the schedule. A one-shot timer that is
    /// fired is spent (as if it had come due); a repeating timer keeps its rhythm.
    void fire();

private:
    std::shared_ptr<detail::TimerRecord> m_record;
};

/// Source of time and delayed work for the whole SDK. Production code runs on Qt timers on
/// the GUI thread; tests install a ManualScheduler and drive time by hand.
class LUMORASDK_EXPORT Scheduler {
public:
    virtual ~Scheduler();

    /// The scheduler in force: the one installed with setCurrent, else the Qt scheduler.
    static Scheduler& current();
    /// Installs a scheduler (nullptr restores the Qt one). The caller keeps ownership.
    static void setCurrent(Scheduler* scheduler);

    /// Seconds since an arbitrary origin.
    virtual double now() const = 0;
    /// Runs fn once after `seconds` (0: on the next turn of the GUI thread). Thread-safe.
    virtual Timer after(double seconds, std::function<void()> fn) = 0;
    /// Runs fn every `interval` seconds until invalidated. Thread-safe.
    virtual Timer repeating(double interval, std::function<void()> fn) = 0;
};

/// Scheduler on QTimer: callbacks run on the thread of the QCoreApplication.
class LUMORASDK_EXPORT QtScheduler final : public Scheduler {
public:
    double now() const override;
    Timer after(double seconds, std::function<void()> fn) override;
    Timer repeating(double interval, std::function<void()> fn) override;

private:
    Timer start(double seconds, bool repeats, std::function<void()> fn);
};

/// Virtual time for tests: nothing fires until advance() is called; due timers then fire in
/// order of due time (ties in order of scheduling), including work they schedule themselves
/// that falls due within the advanced span. Time is kept in whole microseconds, so ticks
/// of 0.01 s add up exactly.
class LUMORASDK_EXPORT ManualScheduler final : public Scheduler {
public:
    double now() const override;
    Timer after(double seconds, std::function<void()> fn) override;
    Timer repeating(double interval, std::function<void()> fn) override;

    /// Moves time forward by `seconds`, firing everything that falls due on the way.
    void advance(double seconds);
    /// Fires what is due now (work posted with a zero delay, for instance).
    void runUntilIdle() { advance(0); }
    /// Number of live timers waiting to fire.
    int pendingCount() const;

private:
    struct Entry {
        qint64 dueMicros;
        qint64 intervalMicros;  // 0 for one-shot work
        quint64 sequence;
        std::shared_ptr<detail::TimerRecord> record;
    };
    Timer schedule(double seconds, double interval, std::function<void()> fn);

    mutable QMutex m_mutex;
    qint64 m_nowMicros = 0;
    quint64 m_sequence = 0;
    std::vector<Entry> m_entries;
};

/// Work for the GUI thread, the stand-in for the main dispatch queue.
namespace MainQueue {
/// Runs fn on the GUI thread on a later turn, after the current work item.
LUMORASDK_EXPORT Timer async(std::function<void()> fn);
/// Runs fn on the GUI thread after `seconds`; the returned timer cancels it.
LUMORASDK_EXPORT Timer asyncAfter(double seconds, std::function<void()> fn);
}  // namespace MainQueue

}  // namespace LumoraSDK
