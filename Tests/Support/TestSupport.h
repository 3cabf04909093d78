#pragma once

#include <QAnimationDriver>
#include <QImage>
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
};

/// Keeps `image` among the screenshots people review, as `<name>.png` with anything but letters,
/// digits and dashes in the name turned into dashes.
bool saveArtifact(const QImage& image, const QString& name);

/// Moves Qt Quick's animation clock (list transitions, scroll animations) by hand.
class ManualAnimationDriver : public QAnimationDriver {
public:
    void advanceBy(qint64 ms) {
        m_elapsed += ms;
        advance();
    }
    qint64 elapsed() const override { return m_elapsed; }

private:
    qint64 m_elapsed = 0;
};

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
