#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include "DevServer.h"
#include "LiveObjects.h"
#include "Platform/VideoPlayerItem.h"
#include "Services/VideoPrefetchService.h"
#include "TestSupport.h"

using namespace LumoraSDK;

class VideoPrefetchTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        qputenv("LUMORA_SDK_LOG_LEVEL", "1");
        QVERIFY(m_dir.isValid());
        // Distinct addresses of real, playable files.
        for (int i = 0; i < 22; ++i) {
            const QString path = m_dir.filePath(QStringLiteral("clip-%1.mp4").arg(i));
            QVERIFY(QFile::copy(QStringLiteral(LUMORA_SAMPLE_VIDEO), path));
            m_urls << QUrl::fromLocalFile(path).toString();
        }
    }

    void init() { VideoPrefetchService::prefetchVideoItems({}); }

    void preparesARealFileAndHandsItOverFromTheCache() {
        std::shared_ptr<VideoPlayerItem> item;
        int calls = 0;
        VideoPrefetchService::getCachedVideoItem(m_urls[0], false,
                                                 [&](std::shared_ptr<VideoPlayerItem> i) {
                                                     item = std::move(i);
                                                     ++calls;
                                                 });
        QTRY_COMPARE_WITH_TIMEOUT(calls, 1, 20000);
        QVERIFY(item);
        QCOMPARE(item->state(), VideoPlayerItem::State::Ready);
        QVERIFY(qAbs(item->duration() - 2.0) < 0.2);

        // The second request is answered at once with the same prepared item.
        std::shared_ptr<VideoPlayerItem> again;
        VideoPrefetchService::getCachedVideoItem(
            m_urls[0], false, [&](std::shared_ptr<VideoPlayerItem> i) { again = i; });
        QCOMPARE(again, item);
    }

    void twentyFirstAddressEvictsTheOldest() {
        VideoPrefetchService::prefetchVideoItems(m_urls.mid(0, 20));
        QTRY_COMPARE_WITH_TIMEOUT(VideoPrefetchService::cachedVideoUrls().size(), 20, 60000);
        const QStringList before = VideoPrefetchService::cachedVideoUrls();
        std::shared_ptr<VideoPlayerItem> newest;
        VideoPrefetchService::getCachedVideoItem(
            m_urls[20], false, [&](std::shared_ptr<VideoPlayerItem> i) { newest = i; });
        QTRY_VERIFY_WITH_TIMEOUT(newest != nullptr, 20000);
        QCOMPARE(VideoPrefetchService::cachedVideoUrls(), before.mid(1) + QStringList{m_urls[20]});
    }

    void cacheBookkeeping() {
        VideoPrefetchService::prefetchVideoItems({m_urls[0], m_urls[1], m_urls[2]});
        QTRY_COMPARE_WITH_TIMEOUT(VideoPrefetchService::cachedVideoUrls().size(), 3, 20000);
        const QStringList order = VideoPrefetchService::cachedVideoUrls();

        // Asking for a cached address answers at once and does not move its entry.
        int handed = 0;
        VideoPrefetchService::getCachedVideoItem(order[0], false, [&](auto) { ++handed; });
        QCOMPARE(handed, 1);
        QCOMPARE(VideoPrefetchService::cachedVideoUrls(), order);

        // Removing twice removes once; unknown addresses are skipped silently.
        VideoPrefetchService::removeCachedVideoItems(
            {order[1], order[1], "file:///not/cached.mp4"});
        QCOMPARE(VideoPrefetchService::cachedVideoUrls(), QStringList({order[0], order[2]}));
    }

    void invalidAddressesAreNeverCached_data() {
        QTest::addColumn<QString>("address");
        QTest::newRow("empty") << QString();
        QTest::newRow("blank inside") << "http://exa mple.test/v.mp4";
        QTest::newRow("bad percent escape") << "http://127.0.0.1/%zz.mp4";
    }

    void invalidAddressesAreNeverCached() {
        QFETCH(QString, address);
        LumoraTest::LogCapture log;
        bool handed = false;
        std::shared_ptr<VideoPlayerItem> item = std::make_shared<VideoPlayerItem>(QUrl(), nullptr);
        VideoPrefetchService::getCachedVideoItem(address, false,
                                                 [&](std::shared_ptr<VideoPlayerItem> i) {
                                                     handed = true;
                                                     item = i;
                                                 });
        QVERIFY(handed);
        QVERIFY(!item);
        QVERIFY(log.contains(QStringLiteral("invalid url ") + address));
        QVERIFY(VideoPrefetchService::cachedVideoUrls().isEmpty());
    }

    void onePlayerPerAddressWithinTheLimit() {
        // Slow addresses: everything asked for is still being prepared while this test looks.
        LumoraTest::DevServer server;
        server.setFault("/media/*", {{"delayMs", 3000}});
        QStringList slow;
        for (int i = 0; i < 25; ++i) {
            slow << server.baseUrl() + "/media/music/page-1.mp4?copy=" + QString::number(i);
        }
        const auto players = [](const QString& url = {}) {
            int count = 0;
            for (VideoPlayerItem* item : LumoraTest::LiveObjects::of<VideoPlayerItem>()) {
                count += url.isEmpty() || item->address() == url;
            }
            return count;
        };
        VideoPrefetchService::prefetchVideoItems(slow);
        QCOMPARE(players(), VideoPrefetchService::cacheLimit());
        // A new list stops what it does not ask for again, and keeps what it does.
        VideoPrefetchService::prefetchVideoItems({slow[24], m_urls[0]});
        QCOMPARE(players(), 2);
        std::shared_ptr<VideoPlayerItem> playing;
        VideoPrefetchService::getCachedVideoItem(m_urls[0], false,
                                                 [&](auto item) { playing = std::move(item); });
        QTRY_VERIFY_WITH_TIMEOUT(playing, 20000);
        VideoPrefetchService::prefetchVideoItems({m_urls[0], m_urls[1]});
        QCOMPARE(players(m_urls[0]), 1);
    }

private:
    QTemporaryDir m_dir;
    QStringList m_urls;
};

int main(int argc, char** argv) {
    LumoraTest::LiveObjects::install();
    QGuiApplication app(argc, argv);
    VideoPrefetchTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_videoprefetch.moc"
