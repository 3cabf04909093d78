#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <memory>

#include "DevServer.h"
#include "Platform/ImageManager.h"
#include "Services/NetworkingService.h"
#include "TestSupport.h"
#include "Views/FrameButtonView.h"

using namespace LumoraSDK;

namespace {
/// What the callbacks of one load saw; shared with them, so a late extra call cannot outlive it.
struct Outcome {
    int completions = 0, errors = 0;
    bool offGuiThread = false;
    QImage image;
    QString errorMessage;
    int calls() const { return completions + errors; }
};

std::shared_ptr<Outcome> load(const QString& url) {
    auto outcome = std::make_shared<Outcome>();
    NetworkingService::sharedInstance().getRemoteImage(
        url,
        [outcome](const QImage& image) {
            outcome->offGuiThread |= QThread::currentThread() != qApp->thread();
            ++outcome->completions;
            outcome->image = image;
        },
        [outcome](const RequestError& error) {
            outcome->offGuiThread |= QThread::currentThread() != qApp->thread();
            ++outcome->errors;
            const auto* custom = std::get_if<CustomRequestError>(&error);
            outcome->errorMessage = custom ? custom->customMessage.value_or(QString()) : QString();
        });
    return outcome;
}

const QJsonObject kNotFoundPage{
    {"status", 404}, {"body", "<html><body>Not here</body></html>"}, {"contentType", "text/html"}};
const QJsonObject kDrop{{"drop", true}};
const QString kInvalid = QStringLiteral("getRemoteImage(_:onComplete:onError:) - Invalid url.");
}  // namespace

class RemoteImagesTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_cache;
    LumoraTest::DevServer m_server;
    int m_loads = 0;

    /// A new address of `path` on the server each time, so that no cache already holds it.
    QString fresh(const QString& path) {
        return m_server.baseUrl() + path + QStringLiteral("?load=%1").arg(++m_loads);
    }
    /// Completes one more load through the same thread and queue, so that anything an earlier
    /// load still had on its way has been delivered too.
    void drain() {
        const auto sentinel = load(fresh(QStringLiteral("/media/avatars/recipes.png")));
        QTRY_COMPARE(sentinel->calls(), 1);
    }

private slots:
    void initTestCase() {
        ImageManager::setCacheDirectory(m_cache.filePath(QStringLiteral("images")));
    }

    void init() { m_server.clearFaults(); }

    void everyLoadCompletesOnceAndFailuresAreFetchedAgain_data() {
        QTest::addColumn<QString>("path");  // without "/": the address as given
        QTest::addColumn<QJsonObject>("fault");
        QTest::addColumn<bool>("completes");  // false: onError
        QTest::addColumn<QString>("logLine");
        QTest::newRow("png") << "/media/avatars/fitness.png" << QJsonObject() << true << "";
        QTest::newRow("404 html page: no image, no error")
            << "/media/avatars/hi.png" << kNotFoundPage << true << "";
        QTest::newRow("empty answer")
            << "/media/avatars/music.png" << QJsonObject{{"status", 200}, {"body", ""}} << true
            << "No data in response.";
        // Not limited to one time: the network layer resends a request whose connection closed
        // before any answer, so a single drop would go unnoticed.
        QTest::newRow("dropped connection")
            << "/media/avatars/tips.png" << kDrop << false << "Error downloading remote image: ";
        QTest::newRow("empty url") << "" << QJsonObject() << false << kInvalid;
    }

    void everyLoadCompletesOnceAndFailuresAreFetchedAgain() {
        QFETCH(QString, path);
        QFETCH(QJsonObject, fault);
        QFETCH(bool, completes);
        QFETCH(QString, logLine);
        const QString url = path.startsWith(QLatin1Char('/')) ? fresh(path) : path;
        if (!fault.isEmpty()) {
            m_server.setFault(path, fault);
        }
        LumoraTest::LogCapture log;
        const auto outcome = load(url);
        QTRY_COMPARE(outcome->calls(), 1);
        m_server.clearFaults();
        drain();
        QCOMPARE(outcome->calls(), 1);
        QCOMPARE(outcome->completions, completes ? 1 : 0);
        QVERIFY(!outcome->offGuiThread);
        QCOMPARE(outcome->image.isNull(), !fault.isEmpty() || logLine == kInvalid);
        if (!logLine.isEmpty()) {
            QVERIFY2(log.contains(logLine), qPrintable(log.messages().join('\n')));
        }
        if (logLine == kInvalid) {
            QCOMPARE(outcome->errorMessage, "Invalid url");
        } else if (!fault.isEmpty()) {
            // No cache keeps the failure in place of the picture.
            const auto retried = load(url);
            QTRY_COMPARE(retried->calls(), 1);
            QCOMPARE(retried->image.size(), QSize(256, 256));
        }
    }

    void loadedImagesComeBackFromMemoryThenDisk_data() {
        QTest::addColumn<bool>("prefetch");
        QTest::newRow("loaded, three times at once") << false;
        QTest::newRow("prefetched with duplicates and invalid addresses") << true;
    }

    void loadedImagesComeBackFromMemoryThenDisk() {
        QFETCH(bool, prefetch);
        const QString url = fresh(QStringLiteral("/media/avatars/offers.png"));
        if (prefetch) {
            ImageManager::sharedInstance().prefetchImages(
                {QUrl(url), QUrl(url), QUrl("relative.png"), QUrl()});
            QTRY_VERIFY(!ImageManager::sharedInstance().cachedImage(QUrl(url)).isNull());
        } else {
            // Loads of one address while it is on its way share the fetch; each completes once.
            const QList<std::shared_ptr<Outcome>> loads{load(url), load(url), load(url)};
            QTRY_COMPARE(loads.last()->calls(), 1);
            drain();
            for (const auto& outcome : loads) {
                QCOMPARE(outcome->completions, 1);
                QCOMPARE(outcome->image.size(), QSize(256, 256));
            }
        }
        const QImage original = ImageManager::sharedInstance().cachedImage(QUrl(url));
        QCOMPARE(original.size(), QSize(256, 256));

        m_server.setFault(QUrl(url).path(), kDrop);  // the server must not be asked again
        const auto fromMemory = load(url);
        QCOMPARE(fromMemory->calls(), 0);  // on a later turn, as every completion
        QTRY_COMPARE(fromMemory->completions, 1);
        QVERIFY(!fromMemory->offGuiThread);
        QCOMPARE(fromMemory->image, original);
        ImageManager::sharedInstance().clearMemoryCache();
        const auto fromDisk = load(url);
        QTRY_COMPARE(fromDisk->calls(), 1);
        QCOMPARE(fromDisk->image, original);
    }

    void diskCacheFollowsHttpFreshness_data() {
        QTest::addColumn<bool>("stale");
        QTest::newRow("fresh: answered from the disk") << false;
        QTest::newRow("stale: revalidated, 304 reuses the body") << true;
    }

    void diskCacheFollowsHttpFreshness() {
        QFETCH(bool, stale);
        LumoraTest::DevServer::Options options;
        if (stale) {
            options.extraArguments = {QStringLiteral("--media-max-age"), QStringLiteral("0")};
        }
        LumoraTest::DevServer server(options);
        const QString url = server.baseUrl() + QStringLiteral("/media/avatars/travel.png");
        const auto first = load(url);
        QTRY_COMPARE(first->completions, 1);
        QCOMPARE(first->image.size(), QSize(256, 256));

        ImageManager::sharedInstance().clearMemoryCache();
        const auto second = load(url);
        QTRY_COMPARE(second->completions, 1);
        QCOMPARE(second->image, first->image);

        const QJsonArray requests = server.requests(QStringLiteral("/media/"));
        QCOMPARE(requests.size(), stale ? 2 : 1);
        if (stale) {
            const QJsonObject revalidation = requests.last().toObject();
            const QJsonObject headers = revalidation.value(QStringLiteral("headers")).toObject();
            QVERIFY(headers.value(QStringLiteral("If-None-Match")).toString().startsWith('"'));
            QCOMPARE(revalidation.value(QStringLiteral("status")).toInt(), 304);
        }
    }

    void cacheIsOwnerOnly() {
        const QString directory = m_cache.filePath(QStringLiteral("images"));
        const auto mode = [](const QString& path) {
            return QFile::permissions(path) & QFileDevice::Permissions(0x0777);
        };
        QCOMPARE(mode(directory),
                 QFileDevice::ReadUser | QFileDevice::WriteUser | QFileDevice::ExeUser);
        int files = 0;
        for (QDirIterator it(directory, QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
            QCOMPARE(mode(it.next()), QFileDevice::ReadUser | QFileDevice::WriteUser);
            ++files;
        }
        QVERIFY(files > 0);
    }

    void buttonKeepsTheImageOfItsLatestRequest_data() {
        QTest::addColumn<QString>("second");  // empty: an invalid address
        QTest::newRow("the earlier picture arrives last") << "/media/avatars/music.png";
        QTest::newRow("the latest address is invalid") << "";
    }

    void buttonKeepsTheImageOfItsLatestRequest() {
        QFETCH(QString, second);
        const QString first = QStringLiteral("/media/avatars/welcome.png");
        m_server.setFault(first, {{"delayMs", 400}});
        FrameButtonView button;
        QStringList arrived;
        int errors = 0;
        QString url;
        for (const QString& path : {first, second}) {
            url = path.isEmpty() ? path : fresh(path);
            NetworkingService::sharedInstance().loadRemoteImage(
                &button, ControlState::Normal, url, [&arrived, path] { arrived << path; },
                [&errors](const RequestError&) { ++errors; });
        }
        QTRY_COMPARE(arrived.size() + errors, 2);
        drain();
        const QStringList order =
            second.isEmpty() ? QStringList{first} : QStringList{second, first};
        QCOMPARE(arrived, order);
        // Never the first picture: it belongs to an older request.
        QCOMPARE(button.hasImage(), !second.isEmpty());
        QCOMPARE(button.image(), ImageManager::sharedInstance().cachedImage(QUrl(url)));
    }
};

QTEST_MAIN(RemoteImagesTest)
#include "tst_remoteimages.moc"
