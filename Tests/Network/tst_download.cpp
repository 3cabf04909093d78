// Media downloads into the caches directory, from lumora-devserver over HTTP and HTTPS: progress,
// the file's name, no overwriting, and failed transfers that leave nothing behind.

#include <QDir>
#include <QFile>
#include <QSslCertificate>
#include <QSslConfiguration>

#include "ApiTestCase.h"
#include "Services/NetworkingService.h"
#include "TestSupport.h"

using namespace LumoraSDK;
using LumoraTest::DevServer;
using LumoraTest::Outcome;

namespace {

struct Download {
    bool success = false;
    QString error;
    std::optional<QUrl> file;
    QList<double> progress;
};

/// Downloads `url` and waits for its completion.
Download download(const QUrl& url) {
    auto progress = std::make_shared<QList<double>>();
    auto mutex = std::make_shared<QMutex>();
    Outcome<Download> outcome;
    const bool started = NetworkingService::sharedInstance().performDownloadToCacheRequest(
        url,
        [progress, mutex](double fraction) {
            QMutexLocker lock(mutex.get());
            progress->append(fraction);
        },
        [&](bool success, const std::optional<RequestError>& error,
            const std::optional<QUrl>& file) {
            const auto* custom = error ? std::get_if<CustomRequestError>(&*error) : nullptr;
            outcome.set({success,
                         custom ? custom->customMessage.value_or(QString()) : QString(),
                         file,
                         {}});
        });
    if (!started || !QTest::qWaitFor([&] { return outcome.calls.load() == 1; }, 20000)) {
        return {};
    }
    Download result = outcome.get();
    QMutexLocker lock(mutex.get());
    result.progress = *progress;
    return result;
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

class DownloadTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        qputenv("LUMORA_SDK_LOG_LEVEL", "0");
        QSslConfiguration config = QSslConfiguration::defaultConfiguration();
        config.addCaCertificates(QSslCertificate::fromPath(m_https.caCertificatePath()));
        QSslConfiguration::setDefaultConfiguration(config);
    }

    void init() {
        m_caches = std::make_unique<QTemporaryDir>();
        m_folder = m_caches->filePath(QStringLiteral("caches"));
        QVERIFY(NetworkingService::sharedInstance().setCachesDirectory(m_folder));
        m_http.clearFaults();
    }

    void downloadsIntoTheCachesDirectory_data() {
        QTest::addColumn<bool>("tls");
        QTest::addColumn<bool>("chunked");
        QTest::newRow("http, sized") << false << false;
        QTest::newRow("http, chunked") << false << true;
        QTest::newRow("https, sized") << true << false;
    }
    void downloadsIntoTheCachesDirectory() {
        QFETCH(bool, tls);
        QFETCH(bool, chunked);
        // The demo's largest kind of file, so that it arrives in several pieces.
        QUrl url((tls ? m_https : m_http).baseUrl() + QStringLiteral("/media/music/page-1.mp4"));
        if (chunked) {
            url.setQuery(QStringLiteral("chunked=1"));
        }
        const Download result = download(url);

        QVERIFY2(result.success, qPrintable(result.error));
        const QString expected = m_folder + QStringLiteral("/-media-music-page-1.mp4");
        QCOMPARE(result.file, QUrl::fromLocalFile(expected));
        QCOMPARE(contentOf(expected),
                 contentOf(m_contentDir + QStringLiteral("/music/page-1.mp4")));
        QCOMPARE(QFile::permissions(expected) & 0x0077, QFile::Permissions());
        QCOMPARE(QFile::permissions(m_folder) & 0x0077, QFile::Permissions());
        QVERIFY(!result.progress.isEmpty());
        if (chunked) {
            // The size is unknown: every report is negative, none is clamped.
            for (double fraction : result.progress) {
                QVERIFY2(fraction < 0, qPrintable(QString::number(fraction)));
            }
        } else {
            QCOMPARE(result.progress.last(), 1.0);
            QVERIFY(std::is_sorted(result.progress.begin(), result.progress.end()));
        }
    }

    void aSecondDownloadOfTheSameUrlFails() {
        const QUrl url(m_http.baseUrl() + QStringLiteral("/media/avatars/hi.png"));
        QVERIFY(download(url).success);
        const QString file = m_folder + QStringLiteral("/-media-avatars-hi.png");
        QFile kept(file);  // marked, to tell it from a replacement
        QVERIFY(kept.open(QIODevice::Append) && kept.write("kept") == 4);
        kept.close();
        LumoraTest::LogCapture log;
        const Download second = download(url);
        QVERIFY(!second.success);
        QVERIFY(!second.file);
        QVERIFY(log.contains(QStringLiteral("cannot write to file: ") + second.error));
        QVERIFY(contentOf(file).endsWith("kept"));
        QCOMPARE(QDir(m_folder).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }

    void failedTransfersLeaveNothing_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QJsonObject>("fault");
        // Every time: the network stack sends a GET again once when its connection closes.
        QTest::newRow("connection dropped")
            << "/media/music/page-1.mp4" << QJsonObject{{"drop", true}};
        QTest::newRow("404 page") << "/media/missing.jpg" << QJsonObject();
    }
    void failedTransfersLeaveNothing() {
        QFETCH(QString, path);
        QFETCH(QJsonObject, fault);
        if (!fault.isEmpty()) {
            m_http.setFault(path, fault);
        }
        LumoraTest::LogCapture log;
        const Download result = download(QUrl(m_http.baseUrl() + path));
        QVERIFY(!result.success);
        QVERIFY(!result.file);
        QVERIFY(log.contains(QStringLiteral("error while downloading the file: ") + result.error));
        QCOMPARE(QDir(m_folder).entryList(QDir::Files | QDir::Hidden | QDir::System),
                 QStringList());
    }

    void namesStayInsideTheCachesDirectory_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("name");  // empty: no download at all
        QTest::newRow("blanks removed") << "/media/my%20clip.mp4"
                                        << "-media-myclip.mp4";
        QTest::newRow("dot segments") << "/a/../../etc/passwd"
                                      << "-a-..-..-etc-passwd";
        QTest::newRow("encoded slash") << "/a%2F..%2F..%2Fb" << QString();
        QTest::newRow("root only") << "/" << QString();
    }
    void namesStayInsideTheCachesDirectory() {
        QFETCH(QString, path);
        QFETCH(QString, name);
        const QUrl url(QStringLiteral("http://127.0.0.1:9") + path);
        QCOMPARE(NetworkingService::cacheFileName(url).value_or(QString()), name);
        if (name.isEmpty()) {
            LumoraTest::LogCapture log;
            QVERIFY(!NetworkingService::sharedInstance().performDownloadToCacheRequest(
                url, {}, [](bool, const std::optional<RequestError>&, const std::optional<QUrl>&) {
                    QFAIL("no download may start");
                }));
            QVERIFY(log.contains(QStringLiteral("cannot create url in caches directory.")));
        }
    }

    void longPathsKeepOneNameEach() {
        const QString longPath = QStringLiteral("/media/") + QString(4096, QLatin1Char('x'));
        const auto first = NetworkingService::cacheFileName(
            QUrl(QStringLiteral("http://h") + longPath + QStringLiteral("1.mp4")));
        const auto second = NetworkingService::cacheFileName(
            QUrl(QStringLiteral("http://h") + longPath + QStringLiteral("2.mp4")));
        QVERIFY(first && second);
        QVERIFY(*first != *second);
        QVERIFY(first->toUtf8().size() <= 255);
        QVERIFY(!first->contains(QLatin1Char('/')));
    }

    void aCachesDirectoryGoneMidwayFailsTheWrite() {
        // The folder is replaced by a file after it was set up: the download cannot even begin
        // its temporary file, says so, and writes nothing anywhere.
        QVERIFY(QDir(m_folder).removeRecursively());
        QFile blocker(m_folder);
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        LumoraTest::LogCapture log;
        const Download result =
            download(QUrl(m_http.baseUrl() + QStringLiteral("/media/avatars/hi.png")));
        QVERIFY(!result.success);
        QVERIFY(log.contains(QStringLiteral("cannot write to file: ")));
        QCOMPARE(QDir(m_caches->path())
                     .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
                 QStringList{QStringLiteral("caches")});
    }

private:
    DevServer m_http;
    DevServer m_https{[] {
        DevServer::Options options;
        options.tls = true;
        return options;
    }()};
    const QString m_contentDir = QStringLiteral(LUMORA_DEVSERVER_CONTENT_DIR);
    std::unique_ptr<QTemporaryDir> m_caches;
    QString m_folder;
};

QTEST_MAIN(DownloadTest)
#include "tst_download.moc"
