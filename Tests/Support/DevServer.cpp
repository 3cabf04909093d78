#include "DevServer.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslConfiguration>
#include <QTemporaryDir>
#include <QTimer>

#ifndef LUMORA_DEVSERVER_PATH
#error "LUMORA_DEVSERVER_PATH must name the lumora-devserver executable"
#endif

namespace LumoraTest {

namespace {
// Generous: the server starts in milliseconds, but sanitizer builds and busy machines are slow.
constexpr int kStartTimeoutMs = 20000;
constexpr int kControlTimeoutMs = 20000;
}  // namespace

struct DevServer::Private {
    Options options;
    QTemporaryDir directory;
    QProcess process;
    QString baseUrl;
    QString caPath;
    std::unique_ptr<QNetworkAccessManager> network;

    QString logPath() const { return directory.filePath(QStringLiteral("lumora-devserver.log")); }

    QString log() const {
        QFile file(logPath());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    void start() {
        if (!directory.isValid()) {
            qFatal("DevServer: cannot create a temporary directory");
        }
        // The server goes when this process does, also when a test aborts it.
        QStringList arguments{
            QStringLiteral("--port"),       QStringLiteral("0"),
            QStringLiteral("--api-key"),    options.apiKey,
            QStringLiteral("--parent-pid"), QString::number(QCoreApplication::applicationPid())};
        if (options.tls) {
            caPath = directory.filePath(QStringLiteral("ca.pem"));
            arguments << QStringLiteral("--tls") << QStringLiteral("--ca-out") << caPath;
        }
        if (!options.contentDir.isEmpty()) {
            arguments << QStringLiteral("--content") << options.contentDir;
        }
        arguments << options.extraArguments;

        process.setProgram(QStringLiteral(LUMORA_DEVSERVER_PATH));
        process.setArguments(arguments);
        process.setStandardErrorFile(logPath());
        process.start();

        // The first line of standard output is the base URL; everything else goes to stderr.
        QElapsedTimer elapsed;
        elapsed.start();
        while (!process.canReadLine() && elapsed.elapsed() < kStartTimeoutMs &&
               process.waitForReadyRead(int(kStartTimeoutMs - elapsed.elapsed()))) {
        }
        const QString line = QString::fromUtf8(process.readLine()).trimmed();
        if (!line.startsWith(QLatin1String("http"))) {
            qFatal("DevServer: lumora-devserver %s did not start within %d ms (%s); its log:\n%s",
                   qPrintable(arguments.join(QLatin1Char(' '))), kStartTimeoutMs,
                   qPrintable(process.errorString()), qPrintable(log()));
        }
        baseUrl = line;
    }

    /// A blocking request to the server, for the control routes; failures are fatal.
    QByteArray send(const QByteArray& verb, const QString& path, const QByteArray& body = {}) {
        if (!network) {
            network = std::make_unique<QNetworkAccessManager>();
        }
        QNetworkRequest request(QUrl(baseUrl + path));
        request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
        request.setTransferTimeout(kControlTimeoutMs);
        if (options.tls) {
            QSslConfiguration ssl = QSslConfiguration::defaultConfiguration();
            ssl.addCaCertificates(caPath);
            request.setSslConfiguration(ssl);
        }
        std::unique_ptr<QNetworkReply> reply(network->sendCustomRequest(request, verb, body));
        QEventLoop loop;
        QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
        if (!reply->isFinished()) {
            loop.exec();
        }
        const QByteArray answer = reply->readAll();
        if (reply->error() != QNetworkReply::NoError) {
            qFatal("DevServer: %s %s failed: %s\n%s\nserver log:\n%s", verb.constData(),
                   qPrintable(path), qPrintable(reply->errorString()), answer.constData(),
                   qPrintable(log()));
        }
        return answer;
    }

    QJsonArray getArray(const QString& path) {
        return QJsonDocument::fromJson(send("GET", path)).array();
    }
};

DevServer::DevServer() : DevServer(Options{}) {}

DevServer::DevServer(const Options& options) : d(std::make_unique<Private>()) {
    d->options = options;
    d->start();
}

DevServer::~DevServer() {
    d->network.reset();
    if (d->process.state() != QProcess::NotRunning) {
        d->process.kill();
        d->process.waitForFinished();
    }
}

bool DevServer::isRunning() const {
    return d->process.state() == QProcess::Running;
}

QString DevServer::baseUrl() const {
    return d->baseUrl;
}

QString DevServer::apiKey() const {
    return d->options.apiKey;
}

QString DevServer::caCertificatePath() const {
    return d->caPath;
}

QJsonArray DevServer::events(qint64 after) const {
    return d->getArray(QStringLiteral("/dev/events?after=%1").arg(after));
}

QJsonArray DevServer::requests(const QString& prefix) const {
    return d->getArray(prefix.isEmpty() ? QStringLiteral("/dev/requests")
                                        : QStringLiteral("/dev/requests?prefix=") + prefix);
}

void DevServer::reset() {
    d->send("POST", QStringLiteral("/dev/reset"));
}

void DevServer::setFault(const QString& route, const QJsonObject& fault) {
    QJsonObject body = fault;
    body.insert(QStringLiteral("route"), route);
    d->send("POST", QStringLiteral("/dev/faults"), QJsonDocument(body).toJson());
}

void DevServer::clearFaults() {
    d->send("DELETE", QStringLiteral("/dev/faults"));
}

}  // namespace LumoraTest
