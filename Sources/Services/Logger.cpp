#include "Logger.h"

#include <QMessageLogger>
#include <QRegularExpression>
#include <QtGlobal>

namespace LumoraSDK {

LoggerType::~LoggerType() = default;

Logger::Logger() {
    m_logLevel = levelFromEnvironmentValue(qgetenv(kLevelVariable));
}

LogLevel Logger::levelFromEnvironmentValue(const QByteArray& value) {
    if (value.isEmpty()) {
        return LogLevel::error;
    }
    // Strict parse: no blanks, no other characters; a value that overflows does not parse.
    static const QRegularExpression strictInteger(QStringLiteral("^[+-]?[0-9]+$"));
    const QString text = QString::fromLatin1(value);
    if (!strictInteger.match(text).hasMatch()) {
        return LogLevel::error;
    }
    bool ok = false;
    const qlonglong parsed = text.toLongLong(&ok);
    // Negative values taken as unsigned are huge, so only 0...3 select a level.
    if (!ok || parsed < 0 || parsed > 3) {
        return LogLevel::error;
    }
    return static_cast<LogLevel>(parsed);
}

void Logger::log(const QString& message, LogLevel level) {
    if (logLevel() > level) {
        return;
    }
    const QByteArray text = message.toUtf8();
    QMessageLogger sink;
    switch (level) {
        case LogLevel::info:
            sink.info("%s", text.constData());
            break;
        case LogLevel::debug:
            sink.debug("%s", text.constData());
            break;
        case LogLevel::error:
            sink.warning("%s", text.constData());
            break;
        case LogLevel::fault:
            sink.critical("%s", text.constData());
            break;
    }
}

LoggerType& logger() {
    static Logger instance;
    return instance;
}

}  // namespace LumoraSDK
