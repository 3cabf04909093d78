#pragma once

#include <QByteArray>
#include <QString>
#include <atomic>

#include "lumorasdk_export.h"

namespace LumoraSDK {

/// Severity of a log line, ordered by raw value: a line is written when the
/// logger's threshold is at or below the line's level.
enum class LogLevel : int { info = 0, debug = 1, error = 2, fault = 3 };

/// The one interface through which the SDK writes diagnostics.
class LUMORASDK_EXPORT LoggerType {
public:
    virtual ~LoggerType();
    virtual void log(const QString& message, LogLevel level) = 0;
};

/// Filters lines by a threshold taken from LUMORA_SDK_LOG_LEVEL (default: error)
/// and hands the survivors, unchanged, to Qt's message handler:
/// info -> qInfo, debug -> qDebug, error -> qWarning, fault -> qCritical.
class LUMORASDK_EXPORT Logger final : public LoggerType {
public:
    static constexpr const char* kLevelVariable = "LUMORA_SDK_LOG_LEVEL";

    /// Reads the threshold from the process environment.
    Logger();

    /// The threshold an environment value selects: a strict base-10 integer
    /// (optional sign, digits only) from 0 to 3 names a level; anything else,
    /// including an absent or empty value, gives `error`.
    static LogLevel levelFromEnvironmentValue(const QByteArray& value);

    LogLevel logLevel() const { return m_logLevel.load(std::memory_order_relaxed); }
    void setLogLevel(LogLevel level) { m_logLevel.store(level, std::memory_order_relaxed); }

    void log(const QString& message, LogLevel level) override;

private:
    std::atomic<LogLevel> m_logLevel{LogLevel::error};
};

/// The process-wide logger, created once on first use; safe from any thread.
LUMORASDK_EXPORT LoggerType& logger();

/// Writes `message` through the process-wide logger, at debug level unless told otherwise: the
/// level of most of the SDK's progress lines.
inline void log(const QString& message, LogLevel level = LogLevel::debug) {
    logger().log(message, level);
}

}  // namespace LumoraSDK
