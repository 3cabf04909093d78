#pragma once

#include <QList>
#include <QMutex>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QtGlobal>
#include <memory>

namespace LumoraTest {

/// Captures every line that reaches Qt's message handler while it lives, with its type.
/// Lines still go on to the previous handler.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    QList<QPair<QtMsgType, QString>> lines() const;
    QStringList messages() const;
    bool contains(const QString& text) const;
    /// Lines that contain `text`.
    int count(const QString& text) const;
    void clear();
};

/// Where tests write screenshots and other files for people to review.
QString artifactsDirectory();

/// Runs this test executable again as a child process with `arguments` and extra environment
/// variables, and returns its exit code, standard output and standard error.
struct ChildResult {
    int exitCode = -1;
    bool crashed = false;
    QString standardOutput;
    QString standardError;
};
ChildResult runSelf(const QStringList& arguments, const QStringList& environment = {},
                    int timeoutMs = 60000);

}  // namespace LumoraTest
