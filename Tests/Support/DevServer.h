#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <memory>

namespace LumoraTest {

/// A lumora-devserver child process on a free loopback port, for the lifetime of this object.
class DevServer {
public:
    struct Options {
        bool tls = false;
        QString apiKey = QStringLiteral("test-api-key");
        QString contentDir;  // empty: the server's built-in demo content
        QStringList extraArguments;
    };

    DevServer();
    explicit DevServer(const Options& options);
    ~DevServer();

    bool isRunning() const;
    /// "http://127.0.0.1:<port>" or "https://127.0.0.1:<port>".
    QString baseUrl() const;
    QString apiKey() const;
    /// PEM file of the CA that signed the TLS certificate (with Options::tls).
    QString caCertificatePath() const;

    /// GET /dev/events: the recorded viewing-history and activity requests, oldest first; with
    /// `after`, only those whose "seq" is greater.
    QJsonArray events(qint64 after = -1) const;
    /// GET /dev/requests: every API request received (method, path, headers, body), oldest first;
    /// with a prefix such as "/media/", the requests under it instead.
    QJsonArray requests(const QString& prefix = QString()) const;
    /// POST /dev/reset: forget events, requests, users, tokens and faults.
    void reset();
    /// POST /dev/faults: inject a fault on one route (see lumora-devserver --help).
    void setFault(const QString& route, const QJsonObject& fault);
    /// DELETE /dev/faults.
    void clearFaults();

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}  // namespace LumoraTest
