#include "TestSupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QMutexLocker>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>

namespace LumoraTest {

namespace {
QMutex g_mutex;
QList<QPair<QtMsgType, QString>> g_lines;
QtMessageHandler g_previous = nullptr;
int g_captures = 0;

void captureHandler(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    {
        QMutexLocker lock(&g_mutex);
        g_lines.append({type, message});
    }
    if (g_previous) {
        g_previous(type, context, message);
    }
}
}  // namespace

LogCapture::LogCapture() {
    QMutexLocker lock(&g_mutex);
    if (g_captures++ == 0) {
        g_lines.clear();
        g_previous = qInstallMessageHandler(captureHandler);
    }
}

LogCapture::~LogCapture() {
    QMutexLocker lock(&g_mutex);
    if (--g_captures == 0) {
        qInstallMessageHandler(g_previous);
        g_previous = nullptr;
    }
}

QList<QPair<QtMsgType, QString>> LogCapture::lines() const {
    QMutexLocker lock(&g_mutex);
    return g_lines;
}

QStringList LogCapture::messages() const {
    QStringList result;
    for (const auto& line : lines()) {
        result.append(line.second);
    }
    return result;
}

bool LogCapture::contains(const QString& text) const {
    return count(text) > 0;
}

int LogCapture::count(const QString& text) const {
    int n = 0;
    for (const auto& line : lines()) {
        n += line.second.contains(text) ? 1 : 0;
    }
    return n;
}

bool saveArtifact(const QImage& image, const QString& name) {
    QString dir = qEnvironmentVariable("LUMORA_TEST_ARTIFACTS");
    if (dir.isEmpty()) {
        dir = QCoreApplication::applicationDirPath() + QStringLiteral("/artifacts");
    }
    QDir().mkpath(dir);
    const QString file = QString(name).replace(QRegularExpression("[^A-Za-z0-9-]+"), "-");
    return image.save(QDir(dir).filePath(file + QStringLiteral(".png")));
}

ChildResult runSelf(const QStringList& arguments, const QStringList& environment, int timeoutMs) {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const QString& pair : environment) {
        const int eq = pair.indexOf(QLatin1Char('='));
        env.insert(pair.left(eq), pair.mid(eq + 1));
    }
    process.setProcessEnvironment(env);
    process.start(QCoreApplication::applicationFilePath(), arguments);
    ChildResult result;
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
    }
    result.crashed = process.exitStatus() == QProcess::CrashExit;
    result.exitCode = process.exitCode();
    result.standardOutput = QString::fromUtf8(process.readAllStandardOutput());
    result.standardError = QString::fromUtf8(process.readAllStandardError());
    return result;
}

}  // namespace LumoraTest
