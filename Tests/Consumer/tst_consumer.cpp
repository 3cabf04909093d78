// The README's host (built by the consumer_build test against an installed SDK) run offscreen
// against lumora-devserver: its row must report the viewer's channels.
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include "DevServer.h"

namespace {
// The key the README's host sends.
const QString kReadmeApiKey = QStringLiteral("your-api-key");
constexpr int kNetworkTimeoutMs = 20000;
constexpr int kHostTimeoutMs = 60000;

QByteArray send(QNetworkAccessManager& network, QNetworkRequest request, const QByteArray& verb,
                const QByteArray& body = {}) {
    request.setRawHeader("x-lumora-api-key", kReadmeApiKey.toUtf8());
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    std::unique_ptr<QNetworkReply> reply(network.sendCustomRequest(request, verb, body));
    QSignalSpy finished(reply.get(), &QNetworkReply::finished);
    if (!reply->isFinished() && !finished.wait(kNetworkTimeoutMs)) {
        return {};
    }
    return reply->readAll();
}

/// How many channels the server gives a newly registered viewer.
qsizetype channelCount(const LumoraTest::DevServer& server) {
    QNetworkAccessManager network;
    const QJsonObject auth =
        QJsonDocument::fromJson(
            send(network, QNetworkRequest(QUrl(server.baseUrl() + QStringLiteral("/api/auth"))),
                 "POST", "{}"))
            .object();
    QNetworkRequest channels(
        QUrl(server.baseUrl() + QStringLiteral("/api/app/channel/channelsForUser")));
    channels.setRawHeader(
        "Authorization",
        "Bearer " + auth.value(QStringLiteral("access_token")).toString().toUtf8());
    return QJsonDocument::fromJson(send(network, channels, "GET")).array().size();
}
}  // namespace

class tst_Consumer : public QObject {
    Q_OBJECT

private slots:
    void readmeHostShowsTheViewersChannels() {
        LumoraTest::DevServer::Options options;
        options.apiKey = kReadmeApiKey;
        LumoraTest::DevServer server(options);
        const qsizetype expected = channelCount(server);
        QVERIFY(expected > 0);

        // The SDK bundle on disk next to the host points it at this server.
        const QString host = QStringLiteral(LUMORA_README_HOST);
        const QString bundle = QFileInfo(host).absolutePath() +
                               QStringLiteral("/Frameworks/LumoraSDK.framework/LumoraSDK.bundle");
        QVERIFY(QDir().mkpath(bundle));
        QFile properties(bundle + QStringLiteral("/Info-iOS.json"));
        QVERIFY(properties.open(QIODevice::WriteOnly | QIODevice::Truncate));
        properties.write(QJsonDocument(QJsonObject{{"CFBundleName", "LumoraSDK"},
                                                   {"ApiBaseUrl", server.baseUrl()}})
                             .toJson());
        properties.close();

        QTemporaryDir home;  // a fresh installation: the host's stored state goes here
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.path());
        environment.insert(QStringLiteral("HOME"), home.path());
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(host);
        QVERIFY2(process.waitForStarted(), qPrintable(process.errorString()));

        // The README's row logs "<count> channels" after each load.
        const QRegularExpression loaded(QStringLiteral("\\b%1 channels\\b").arg(expected));
        QString output;
        QTRY_VERIFY2_WITH_TIMEOUT(
            (output += QString::fromUtf8(process.readAll()),
             output.contains(loaded) || process.state() == QProcess::NotRunning),
            "waiting for the host's row", kHostTimeoutMs);
        process.terminate();
        process.waitForFinished();
        QVERIFY2(output.contains(loaded), qPrintable(output));
    }
};

QTEST_GUILESS_MAIN(tst_Consumer)
#include "tst_consumer.moc"
