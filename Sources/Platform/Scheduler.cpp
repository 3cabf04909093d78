#include "Scheduler.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMutexLocker>
#include <QPointer>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <cmath>

namespace LumoraSDK {

namespace detail {
struct TimerRecord {
    std::function<void()> fn;
    bool repeats = false;
    std::atomic<bool> valid{true};

    void run() {
        if (!valid.load()) {
            return;
        }
        if (!repeats) {
            valid = false;
        }
        // Keep the callback alive even if it invalidates or replaces this timer.
        auto keep = fn;
        keep();
    }
};
}  // namespace detail

namespace {
std::atomic<Scheduler*> g_installed{nullptr};

qint64 toMicros(double seconds) {
    return seconds <= 0 ? 0 : static_cast<qint64>(std::llround(seconds * 1e6));
}
}  // namespace

Timer::Timer(std::shared_ptr<detail::TimerRecord> record) : m_record(std::move(record)) {}

void Timer::invalidate() {
    if (m_record) {
        m_record->valid = false;
    }
}

bool Timer::isValid() const {
    return m_record && m_record->valid.load();
}

void Timer::fire() {
    if (m_record) {
        m_record->run();
    }
}

Scheduler::~Scheduler() = default;

Scheduler& Scheduler::current() {
    if (Scheduler* installed = g_installed.load()) {
        return *installed;
    }
    static QtScheduler production;
    return production;
}

void Scheduler::setCurrent(Scheduler* scheduler) {
    g_installed = scheduler;
}

double QtScheduler::now() const {
    static QElapsedTimer clock = [] {
        QElapsedTimer started;
        started.start();
        return started;
    }();
    return static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

Timer QtScheduler::after(double seconds, std::function<void()> fn) {
    return start(seconds, false, std::move(fn));
}

Timer QtScheduler::repeating(double interval, std::function<void()> fn) {
    return start(interval, true, std::move(fn));
}

Timer QtScheduler::start(double seconds, bool repeats, std::function<void()> fn) {
    auto record = std::make_shared<detail::TimerRecord>();
    record->fn = std::move(fn);
    record->repeats = repeats;
    QCoreApplication* app = QCoreApplication::instance();
    if (!app) {
        return Timer(record);
    }
    const int millis = static_cast<int>(std::llround(std::max(0.0, seconds) * 1000.0));
    // The QTimer lives on the application thread whatever thread asked for it.
    QMetaObject::invokeMethod(
        app,
        [record, millis, repeats, app] {
            if (!record->valid) {
                return;
            }
            auto* timer = new QTimer(app);
            timer->setTimerType(Qt::PreciseTimer);
            timer->setSingleShot(!repeats);
            QObject::connect(timer, &QTimer::timeout, timer, [record, timer] {
                record->run();
                if (!record->valid) {
                    timer->stop();
                    timer->deleteLater();
                }
            });
            timer->start(millis);
        },
        Qt::QueuedConnection);
    return Timer(record);
}

double ManualScheduler::now() const {
    QMutexLocker lock(&m_mutex);
    return static_cast<double>(m_nowMicros) / 1e6;
}

Timer ManualScheduler::after(double seconds, std::function<void()> fn) {
    return schedule(seconds, 0, std::move(fn));
}

Timer ManualScheduler::repeating(double interval, std::function<void()> fn) {
    return schedule(interval, interval, std::move(fn));
}

Timer ManualScheduler::schedule(double seconds, double interval, std::function<void()> fn) {
    auto record = std::make_shared<detail::TimerRecord>();
    record->fn = std::move(fn);
    record->repeats = interval > 0;
    QMutexLocker lock(&m_mutex);
    const qint64 intervalMicros = record->repeats ? std::max<qint64>(1, toMicros(interval)) : 0;
    m_entries.push_back({m_nowMicros + toMicros(seconds), intervalMicros, m_sequence++, record});
    return Timer(record);
}

void ManualScheduler::advance(double seconds) {
    qint64 target;
    {
        QMutexLocker lock(&m_mutex);
        target = m_nowMicros + toMicros(seconds);
    }
    for (;;) {
        Entry next;
        {
            QMutexLocker lock(&m_mutex);
            std::erase_if(m_entries, [](const Entry& e) { return !e.record->valid.load(); });
            auto earliest = m_entries.end();
            for (auto it = m_entries.begin(); it != m_entries.end(); ++it) {
                if (it->dueMicros <= target &&
                    (earliest == m_entries.end() || it->dueMicros < earliest->dueMicros ||
                     (it->dueMicros == earliest->dueMicros && it->sequence < earliest->sequence))) {
                    earliest = it;
                }
            }
            if (earliest == m_entries.end()) {
                m_nowMicros = target;
                return;
            }
            next = *earliest;
            m_entries.erase(earliest);
            m_nowMicros = std::max(m_nowMicros, next.dueMicros);
        }
        if (next.intervalMicros > 0) {
            // Reschedule before running, so the callback may invalidate its own timer.
            QMutexLocker lock(&m_mutex);
            m_entries.push_back({next.dueMicros + next.intervalMicros, next.intervalMicros,
                                 m_sequence++, next.record});
        }
        next.record->run();
    }
}

int ManualScheduler::pendingCount() const {
    QMutexLocker lock(&m_mutex);
    return static_cast<int>(std::count_if(m_entries.begin(), m_entries.end(),
                                          [](const Entry& e) { return e.record->valid.load(); }));
}

namespace MainQueue {
Timer async(std::function<void()> fn) {
    return Scheduler::current().after(0, std::move(fn));
}

Timer asyncAfter(double seconds, std::function<void()> fn) {
    return Scheduler::current().after(seconds, std::move(fn));
}
}  // namespace MainQueue

}  // namespace LumoraSDK
