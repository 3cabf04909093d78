#include <QJsonObject>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTest>

#include "DevServer.h"
#include "Lumora.h"
#include "Platform/CollectionView/CollectionView.h"
#include "Platform/ImageManager.h"
#include "Platform/ImageView.h"
#include "Platform/NotificationCenter.h"
#include "Platform/Scheduler.h"
#include "Views/ChannelMediaCollectionDataSource.h"
#include "Views/ChannelMediaCollectionViewCell.h"

using namespace LumoraSDK;

namespace {
/// A media list of full-window pages in an offscreen window.
struct MediaList {
    explicit MediaList(std::optional<QList<Page>> pages) {
        dataSource.pages = std::move(pages);
        window.resize(200, 300);
        view.setParentItem(window.contentItem());
        view.setSize(QSizeF(200, 300));
        view.setPagingEnabled(true);
        ChannelMediaCollectionViewCell::registerIn(view);
        view.setDataSource(&dataSource);
        view.setDelegate(&dataSource);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        view.layoutIfNeeded();
    }
    QQuickWindow window;
    ChannelMediaCollectionDataSource dataSource;
    CollectionView view;
};

Page imagePage(const QString& url = QString()) {
    Page page;
    page.mediaType = PageType::Image;
    if (!url.isEmpty()) {
        page.url = url;
    }
    return page;
}

QVariantMap notice(int index, bool ready) {
    return {{QStringLiteral("mediaIndex"), index}, {QStringLiteral("isReady"), ready}};
}
}  // namespace

class MediaPagesTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        ImageManager::setCacheDirectory(m_cache.path());
        QVERIFY(m_server.isRunning());
        NotificationCenter::defaultCenter().addObserver(
            this, Lumora::onChannelMediaReady,
            [this](const Notification& notification) { m_notices << notification.userInfo; });
    }
    void cleanupTestCase() { NotificationCenter::defaultCenter().removeObserver(this); }
    void init() {
        Scheduler::setCurrent(&m_clock);
        m_server.clearFaults();
        m_notices.clear();
    }
    void cleanup() {
        m_clock.runUntilIdle();
        Scheduler::setCurrent(nullptr);
    }

    // The item count, the last index and the next page follow the pages.
    void indexesFollowThePages_data() {
        QTest::addColumn<int>("pageCount");  // -1: no page list at all
        QTest::addColumn<int>("current");
        QTest::addColumn<int>("next");
        QTest::newRow("no pages") << -1 << 0 << -1;
        QTest::newRow("empty page list") << 0 << 0 << -1;
        QTest::newRow("last of 5") << 5 << 4 << -1;
    }
    void indexesFollowThePages() {
        QFETCH(int, pageCount);
        QFETCH(int, current);
        QFETCH(int, next);
        MediaList list(pageCount < 0 ? std::nullopt
                                     : std::optional(QList<Page>(pageCount, imagePage())));
        const int items = std::max(pageCount, 0);
        QCOMPARE(list.view.numberOfItems(0), items);
        list.dataSource.finalIndex = 99;  // stale: the next page comes from the pages themselves
        list.dataSource.currentIndexPath = IndexPath{current, 0};
        QCOMPARE(list.dataSource.nextIndexPath(), (IndexPath{next, 0}));
    }

    // Scrolling moves the current page only to a page the list has; the end of an animated
    // scroll reaches the page player.
    void scrollMediaCollection_data() {
        QTest::addColumn<bool>("dropPages");  // the data source loses its pages after loading
        QTest::addColumn<int>("target");
        QTest::addColumn<bool>("animated");
        QTest::addColumn<int>("current");
        QTest::addColumn<int>("shownPage");  // the page at the list's left edge
        QTest::addColumn<int>("scrollEnds");
        QTest::newRow("5 on 5 pages") << false << 5 << false << 1 << 0 << 0;
        QTest::newRow("pages gone") << true << 3 << false << 1 << 0 << 0;
        QTest::newRow("animated 2 of 5") << false << 2 << true << 2 << 2 << 1;
    }
    void scrollMediaCollection() {
        QFETCH(bool, dropPages);
        QFETCH(int, target);
        QFETCH(bool, animated);
        QFETCH(int, current);
        QFETCH(int, shownPage);

        MediaList list(QList<Page>(5, imagePage()));
        int ends = 0;
        list.dataSource.onScrollViewDidEndScrollingAnimation = [&ends] { ++ends; };
        list.dataSource.currentIndexPath = IndexPath{1, 0};
        if (dropPages) {
            list.dataSource.pages = QList<Page>();
        }
        ChannelMediaCollectionDataSource::scrollMediaCollection(&list.view, &list.dataSource,
                                                                target, animated);
        m_clock.advance(1.0);
        QCOMPARE(list.dataSource.currentIndexPath, (IndexPath{current, 0}));
        QCOMPARE(list.view.contentOffset().x(), shownPage * list.view.width());
        QTEST(ends, "scrollEnds");
    }

    // The cell shows the page's still, filling it, and reports once that loading has ended,
    // whether or not an image came.
    void stillImageAndReadiness_data() {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("url");  // %1: the server
        QTest::addColumn<QString>("playcard");
        QTest::addColumn<QJsonObject>("fault");  // on the still's path
        QTest::addColumn<bool>("shown");
        QTest::addColumn<bool>("image");
        const QJsonObject none;
        const QJsonObject notFound{{"status", 404},
                                   {"body", "<html><body>gone</body></html>"},
                                   {"contentType", "text/html"}};
        const auto row = [](const char* name, const char* type, const char* url,
                            const char* playcard, const QJsonObject& fault, bool shown,
                            bool image) {
            QTest::newRow(name) << QString(type) << QString(url) << QString(playcard) << fault
                                << shown << image;
        };
        row("image page", "image", "%1/media/recipes/page-1.jpg", "", none, true, true);
        row("video page shows its play card", "video", "%1/media/hi/page-2.mp4",
            "%1/media/hi/page-2-playcard.png", none, true, true);
        row("404 with an HTML page", "image", "%1/media/recipes/page-3.jpg", "", notFound, true,
            false);
        row("page without a url", "image", "", "", none, false, false);
    }
    void stillImageAndReadiness() {
        QFETCH(QString, type);
        QFETCH(QString, url);
        QFETCH(QString, playcard);
        QFETCH(QJsonObject, fault);
        QFETCH(bool, shown);
        QFETCH(bool, image);
        Page page;
        page.mediaType = pageTypeFromRawValue(type);
        if (!url.isEmpty()) {
            page.url = serverUrl(url);
        }
        if (!playcard.isEmpty()) {
            page.playcardUrl = serverUrl(playcard);
        }
        const QString still = page.playcardUrl.value_or(page.url.value_or(QString()));
        if (!fault.isEmpty()) {
            m_server.setFault(QUrl(still).path(), fault);
        }

        MediaList list(QList<Page>{page});
        ChannelMediaCollectionViewCell* cell =
            ChannelMediaCollectionDataSource::getVisibleMediaCell(&list.view, 0);
        QVERIFY(cell);
        if (shown) {
            QTRY_VERIFY((m_clock.runUntilIdle(), !m_notices.isEmpty()));
        }
        settle();
        QCOMPARE(m_notices, shown ? QList<QVariantMap>{notice(0, true)} : QList<QVariantMap>{});
        if (shown) {  // typed as the host reads them
            QCOMPARE(m_notices.first().value("isReady").typeId(), QMetaType::Bool);
        }
        QCOMPARE(cell->mediaReady(), shown);
        QCOMPARE(cell->imageView->isVisible(), shown);
        QCOMPARE(cell->imageView->hasImage(), image);
        if (image) {
            QCOMPARE(cell->imageView->image(),
                     ImageManager::sharedInstance().cachedImage(QUrl(still)));
        }
    }

    // A recycled cell first says that the page it showed is no longer ready, then announces its
    // new page.
    void reusedReadyCellPostsNotReady() {
        QQmlEngine engine;
        QQmlComponent component(&engine, ChannelMediaCollectionViewCell::interfaceUrl());
        std::unique_ptr<QObject> made(component.create());
        auto* cell = qobject_cast<ChannelMediaCollectionViewCell*>(made.get());
        QVERIFY2(cell, qPrintable(component.errorString()));
        cell->setPage(imagePage(serverUrl("%1/media/travel/page-1.jpg")), 2);
        QTRY_VERIFY((m_clock.runUntilIdle(), !m_notices.isEmpty()));

        cell->prepareForReuse();
        QVERIFY(!cell->imageView->hasImage());
        cell->setPage(imagePage(serverUrl("%1/media/travel/page-2.jpg")), 4);
        QTRY_VERIFY((m_clock.runUntilIdle(), m_notices.size() == 3));
        cell->setMediaReady(true);  // no change, no notice
        settle();
        QCOMPARE(m_notices,
                 QList<QVariantMap>({notice(2, true), notice(2, false), notice(4, true)}));
        QVERIFY(cell->imageView->hasImage());
    }

private:
    QString serverUrl(const QString& pattern) const {
        if (!pattern.contains(QLatin1String("%1"))) {
            return pattern;
        }
        // A query of its own per test keeps images loaded by earlier tests out of the caches.
        return pattern.arg(m_server.baseUrl()) + QStringLiteral("?test=") +
               QString::fromLatin1(QTest::currentTestFunction()) + QLatin1Char('-') +
               QString::fromLatin1(QTest::currentDataTag()).replace(' ', '-');
    }
    /// Lets queued work run out, so that a notice posted twice would be seen.
    void settle() {
        for (int i = 0; i < 3; ++i) {
            m_clock.runUntilIdle();
            QCoreApplication::processEvents();
        }
    }

    QTemporaryDir m_cache;
    LumoraTest::DevServer m_server;
    ManualScheduler m_clock;
    QList<QVariantMap> m_notices;
};

QTEST_MAIN(MediaPagesTest)
#include "tst_mediapages.moc"
