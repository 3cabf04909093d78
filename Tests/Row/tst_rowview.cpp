// The story row in real offscreen scenes fed by lumora-devserver: LumoraRowView with its data
// source and strip, and its round and square cells as they are drawn and tapped.

#include <QSet>

#include "Extensions/ChannelListExtensions.h"
#include "Platform/NotificationCenter.h"
#include "RowTestSupport.h"
#include "Services/VideoPrefetchService.h"
#include "Views/LumoraRowViewCell/LumoraRowViewCellSquare.h"

using namespace LumoraSDK;
using namespace RowTest;

namespace {

class DelegateLog : public LumoraRowViewDelegate {
public:
    QStringList events;
    void onChannelsDataLoadStarted() override { events << "started"; }
    void onChannelsDataLoadComplete(bool success, const std::optional<RequestError>& error,
                                    int dataCount) override {
        events << QStringLiteral("complete %1 %2 %3")
                      .arg(success ? "ok" : "failed", error ? describe(*error) : "no-error")
                      .arg(dataCount);
    }
    void onChannelDismissed() override { events << "dismissed"; }
};

bool near(const QColor& a, const QColor& b, int tolerance = 20) {
    return qAbs(a.red() - b.red()) <= tolerance && qAbs(a.green() - b.green()) <= tolerance &&
           qAbs(a.blue() - b.blue()) <= tolerance;
}

QColor pixelAt(const QImage& image, const QQuickItem* item, const QPointF& at) {
    const QPoint point = item->mapToScene(at).toPoint();
    return image.pixelColor(qBound(0, point.x(), image.width() - 1),
                            qBound(0, point.y(), image.height() - 1));
}

/// Every cell the strip holds: on the list (shown, cached or pooled) and in its reuse pool.
QList<LumoraRowViewCell*> allCells(CollectionView& strip) {
    QList<LumoraRowViewCell*> cells = strip.findChildren<LumoraRowViewCell*>();
    QList<QQuickItem*> items{strip.listView()};
    while (!items.isEmpty()) {
        QQuickItem* item = items.takeLast();
        auto* cell = qobject_cast<LumoraRowViewCell*>(item);
        if (!cell) {
            items += item->childItems();
        } else if (!cells.contains(cell)) {
            cells.append(cell);
        }
    }
    return cells;
}

}  // namespace

// The functions share one server and fixture, start with an empty channel list and nothing
// read, and record the channels the row's cells would open.
class RowViewTest : public QObject {
    Q_OBJECT

    std::unique_ptr<Fixture> m_env;
    QList<int> m_presented;
    /// Requests the server had received when the test function began.
    qsizetype m_requestsBefore = 0;

    std::unique_ptr<Scene> loaded(const QJsonArray& channels, const QString& properties = {}) {
        return m_env->loadedScene(channels, properties, QSize(390, 120));
    }
    /// Reloads `row` with `delegate` listening, and gives the arguments of the load's completion.
    QVariantList reload(LumoraRowView& row, DelegateLog* delegate = nullptr) {
        row.setDelegate(delegate);
        QSignalSpy complete(&row, &LumoraRowView::channelsDataLoadComplete);
        row.reloadData();
        const bool completed = m_env->settleUntil(&row, [&] { return complete.count() == 1; });
        m_env->settle(&row);
        row.setDelegate(nullptr);
        return completed ? complete.first() : QVariantList();
    }
    /// Channel lists asked for since the test began.
    int channelRequests() const {
        const QJsonArray requests = m_env->server().requests();
        int count = 0;
        for (qsizetype i = m_requestsBefore; i < requests.size(); ++i) {
            count += requests[i][QStringLiteral("path")] == QLatin1String(Fixture::kChannelsRoute);
        }
        return count;
    }

private slots:
    void initTestCase() {
        m_env = std::make_unique<Fixture>();
        QTRY_VERIFY_WITH_TIMEOUT(m_env->isReady(), 20000);
        LumoraRowViewCell::channelPresenter = [this](int index, LumoraRowView*, auto) {
            m_presented.append(index);
        };
    }
    void init() {
        DatabaseService::sharedInstance().setAllChannelsData({});
        DatabaseService::sharedInstance().setChannelIsReadMapping({});
        m_env->server().clearFaults();
        m_presented.clear();
        m_requestsBefore = m_env->server().requests().size();
    }
    void cleanupTestCase() { m_env.reset(); }

    void freshRowShowsPlaceholdersThenTheServersChannels() {
        NotificationCenter& center = NotificationCenter::defaultCenter();
        const int observers = center.observerCount(Lumora::openChannelDidChange);
        auto scene = m_env->scene(QString(), QSize(390, 120));
        QVERIFY(scene);
        LumoraRowView& row = *scene->row;
        QCOMPARE(center.observerCount(Lumora::openChannelDidChange), observers + 1);
        QCOMPARE(scene->strip().numberOfItems(0), 5);
        QCOMPARE(scene->visibleCells().size(), 5);
        for (LumoraRowViewCell* cell : scene->visibleCells()) {
            QVERIFY(cell->isPlaceholder() && cell->labelPlaceholder()->isVisible());
        }
        // Placeholders never record a centre.
        scene->visibleCells().first()->onCellClicked();
        QCOMPARE(row.cellCenters(), QList<std::optional<QPointF>>(5, std::nullopt));
        QCOMPARE(channelRequests(), 0);

        DelegateLog delegate;
        const QVariantList complete = reload(row, &delegate);

        const QList<Channel> expected = decodeChannels(m_env->serverChannels());
        QVERIFY(expected.size() > 5);
        QCOMPARE(complete, QVariantList({true, QString(), int(expected.size())}));
        QCOMPARE(delegate.events,
                 QStringList(
                     {"started", QStringLiteral("complete ok no-error %1").arg(expected.size())}));
        QCOMPARE(idsOf(row.collectionDataSource()->dataItems), idsOf(expected));
        QCOMPARE(idsOf(DatabaseService::sharedInstance().allChannelsData()), idsOf(expected));
        QCOMPARE(row.cellCenters().size(), expected.size());
        const QList<LumoraRowViewCell*> cells = scene->visibleCells();
        QCOMPARE(cells.size(), 5);
        for (int i = 0; i < cells.size(); ++i) {
            QVERIFY(!cells[i]->isPlaceholder() && !cells[i]->labelPlaceholder()->isVisible());
            QCOMPARE(cells[i]->currentIndex(), std::optional<int>(i));
            QCOMPARE(scene->visibleTitles()[i], expected[i].title.value_or(QString()));
            QCOMPARE(cells[i]->isActive(), !expected[i].isRead());
        }
        // The resume pages' videos are prepared ahead; each joins the cache once it is ready, so
        // a loaded machine may finish them in another order.
        QStringList videos = getInitialPageVideoUrls(expected, DatabaseService::sharedInstance());
        QVERIFY(!videos.isEmpty());
        videos.sort();
        QVERIFY(m_env->settleUntil(&row, [&] {
            QStringList cached = VideoPrefetchService::cachedVideoUrls();
            cached.sort();
            return cached == videos;
        }));

        scene.reset();
        QCOMPARE(center.observerCount(Lumora::openChannelDidChange), observers);
    }

    void failedLoadReportsTheSharedListsCount_data() {
        QTest::addColumn<bool>("loadedBefore");
        QTest::addColumn<bool>("sharedListKept");
        QTest::newRow("fresh start: placeholders stay, count 0") << false << false;
        QTest::newRow("after a successful load: channels stay, their count") << true << true;
        QTest::newRow("shared list emptied since: placeholders again") << true << false;
    }

    void failedLoadReportsTheSharedListsCount() {
        QFETCH(bool, loadedBefore);
        QFETCH(bool, sharedListKept);
        auto scene = loadedBefore ? loaded(m_env->numberedChannels(7))
                                  : m_env->scene(QString(), QSize(390, 120));
        QVERIFY(scene);
        LumoraRowView& row = *scene->row;
        if (!sharedListKept) {
            DatabaseService::sharedInstance().setAllChannelsData({});
        }
        const int shared = sharedListKept ? 7 : 0;
        DelegateLog delegate;
        m_env->failChannelsOnce(500);
        const QVariantList complete = reload(row, &delegate);

        QCOMPARE(complete.size(), 3);
        QCOMPARE(complete.at(0).toBool(), false);
        QVERIFY(!complete.at(1).toString().isEmpty());
        QCOMPARE(complete.at(2).toInt(), shared);
        QCOMPARE(delegate.events,
                 QStringList({"started", QStringLiteral("complete failed %1 %2")
                                             .arg(describe(RequestStatusError::InternalServerError))
                                             .arg(shared)}));
        QCOMPARE(scene->strip().numberOfItems(0), sharedListKept ? 7 : 5);
        for (LumoraRowViewCell* cell : scene->visibleCells()) {
            QCOMPARE(cell->isPlaceholder(), !sharedListKept);
        }
    }

    void styleAndTypeTexts_data() {
        QTest::addColumn<QString>("property");
        QTest::addColumn<QStringList>("writes");
        QTest::addColumn<QStringList>("reads");
        QTest::addColumn<QList<int>>("loadsAfterEach");
        QTest::addColumn<bool>("squareCells");
        QTest::addColumn<QString>("titleColour");  // of a round cell's title
        QTest::newRow("SQUARE switches and reloads, then square does nothing")
            << "cellType" << QStringList{"SQUARE", "square"} << QStringList{"square", "square"}
            << QList<int>{1, 1} << true << "";
        QTest::newRow("Round on a round row changes nothing")
            << "cellType" << QStringList{"Round"} << QStringList{"round"} << QList<int>{0} << false
            << "#1a1a1a";
        QTest::newRow("unknown cell type reloads and stays round")
            << "cellType" << QStringList{"hexagon"} << QStringList{"round"} << QList<int>{1}
            << false << "#1a1a1a";
        QTest::newRow("DARK then dark reloads once: light titles")
            << "uiStyle" << QStringList{"DARK", "dark"} << QStringList{"dark", "dark"}
            << QList<int>{1, 1} << false << "#ffffff";
    }

    void styleAndTypeTexts() {
        QFETCH(QString, property);
        QFETCH(QStringList, writes);
        QFETCH(QStringList, reads);
        QFETCH(QList<int>, loadsAfterEach);
        QFETCH(bool, squareCells);
        auto scene = m_env->scene(QString(), QSize(390, 200));
        QVERIFY(scene);
        LumoraRowView& row = *scene->row;
        QSignalSpy started(&row, &LumoraRowView::channelsDataLoadStarted);
        QSignalSpy complete(&row, &LumoraRowView::channelsDataLoadComplete);
        for (int i = 0; i < writes.size(); ++i) {
            QVERIFY(row.setProperty(qPrintable(property), writes[i]));
            QCOMPARE(row.property(qPrintable(property)).toString(), reads[i]);
            QCOMPARE(started.count(), loadsAfterEach[i]);
            QVERIFY(m_env->settleUntil(&row, [&] { return complete.count() == started.count(); }));
            m_env->settle(&row);
        }
        QCOMPARE(channelRequests(), loadsAfterEach.last());
        QVERIFY(!scene->visibleCells().isEmpty());
        for (LumoraRowViewCell* cell : scene->visibleCells()) {
            QCOMPARE(qobject_cast<LumoraRowViewCellSquare*>(cell) != nullptr, squareCells);
            if (!squareCells) {
                QTEST(cell->label()->property("color").value<QColor>().name(), "titleColour");
            }
        }
    }

    void cellsAreSizedCentredAndRecordTheirCentres_data() {
        QTest::addColumn<QString>("properties");
        QTest::addColumn<QSizeF>("size");
        QTest::addColumn<qreal>("left");
        QTest::addColumn<qreal>("spacing");
        QTest::addColumn<int>("centersLength");
        QTest::newRow("round, 200-point strip") << "" << QSizeF(130, 200) << 0.0 << 8.0 << 9;
        QTest::newRow("square, insets and spacing, centres list shorter than the visible cells")
            << "cellType: 'square'; leftInset: 16; rightInset: 16; cellSpacing: 12"
            << QSizeF(0.5343749999999999 * 200, 190) << 16.0 << 12.0 << 2;
        QTest::newRow("round at half scale")
            << "cellScale: 0.5; leftInset: 10" << QSizeF(65, 100) << 10.0 << 8.0 << 9;
    }

    void cellsAreSizedCentredAndRecordTheirCentres() {
        QFETCH(QString, properties);
        QFETCH(QSizeF, size);
        QFETCH(qreal, left);
        QFETCH(qreal, spacing);
        QFETCH(int, centersLength);
        auto scene = m_env->loadedScene(m_env->numberedChannels(9), properties, QSize(390, 200));
        QVERIFY(scene);
        const QList<LumoraRowViewCell*> cells = scene->visibleCells();
        QVERIFY(cells.size() >= 3);
        scene->row->cellCenters() = QList<std::optional<QPointF>>(centersLength, std::nullopt);
        cells.first()->onCellClicked();
        QList<std::optional<QPointF>> expected(centersLength, std::nullopt);
        for (int i = 0; i < cells.size(); ++i) {
            // Laid out from the inset, one spacing apart, centred across the 200-point strip.
            const QPointF origin(left + i * (size.width() + spacing), (200 - size.height()) / 2);
            QCOMPARE(cells[i]->size(), size);
            QCOMPARE(cells[i]->mapToScene(QPointF(0, 0)), origin);
            if (i < centersLength) {
                expected[i] = origin + QPointF(size.width() / 2, size.height() / 2);
            }
        }
        QCOMPARE(scene->row->cellCenters(), expected);
    }

    void programmaticScrollCompletesOnce() {
        auto scene = loaded(m_env->numberedChannels(20));
        QVERIFY(scene);
        LumoraRowCollectionView& strip = scene->strip();
        const qreal end = strip.contentSize().width() - strip.width();
        int completions = 0;
        strip.scrollToItem(IndexPath{19, 0}, CollectionView::ScrollPosition::right, true,
                           [&] { ++completions; });
        m_env->settle(scene->row.get());
        QCOMPARE(completions, 1);
        QCOMPARE(strip.contentOffset().x(), end);

        // The user drags back: the programmatic scroll's completion does not run again.
        QPoint point(300, 60);
        QTest::mousePress(&scene->window, Qt::LeftButton, {}, point);
        for (int step = 0; step < 10; ++step) {
            QTest::mouseMove(&scene->window, point += QPoint(15, 0), 16);
        }
        QTest::mouseRelease(&scene->window, Qt::LeftButton, {}, point, 16);
        m_env->settle(scene->row.get());
        QVERIFY(strip.contentOffset().x() < end);
        QCOMPARE(completions, 1);
    }

    void reloadAnimatesMovesInsertsAndDeletes() {
        const QString picture = m_env->mediaUrl(QStringLiteral("avatars/hi.png"));
        auto scene = loaded({channelJson("a", "Alpha", "unread", picture),
                             channelJson("b", "Bravo", "unread", picture),
                             channelJson("c", "Charlie", "read", picture),
                             channelJson("d", "Delta", "unread", picture),
                             channelJson("e", "Echo", "read", picture)});
        QVERIFY(scene);
        LumoraRowView& row = *scene->row;
        QAbstractItemModel* model = scene->strip().model();
        QSignalSpy removed(model, &QAbstractItemModel::rowsRemoved);
        QSignalSpy inserted(model, &QAbstractItemModel::rowsInserted);
        QSignalSpy reset(model, &QAbstractItemModel::modelReset);

        // Alpha goes, X-ray comes, Echo moves to the front; Bravo was read, Charlie renamed.
        m_env->answerChannelsOnce({channelJson("e", "Echo", "read", picture),
                                   channelJson("x", "X-ray", "", picture),
                                   channelJson("b", "Bravo", "read", picture),
                                   channelJson("d", "Delta", "unread", picture),
                                   channelJson("c", "Charlie 2", "unread", picture)});
        QCOMPARE(reload(row).value(0), QVariant(true));

        QCOMPARE(removed.count(), 1);
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(reset.count(), 0);
        QCOMPARE(scene->visibleTitles(),
                 QStringList({"Echo", "X-ray", "Bravo", "Delta", "Charlie 2"}));
        const QList<bool> active{false, true, false, true, true};
        const QList<LumoraRowViewCell*> cells = scene->visibleCells();
        for (int i = 0; i < cells.size(); ++i) {
            QCOMPARE(cells[i]->currentIndex(), std::optional<int>(i));
            QCOMPARE(cells[i]->inactiveGradientBorderLayer()->isVisible(), !active[i]);
            GradientLayer* ring = cells[i]->activeGradientBorderLayer();
            QCOMPARE(ring && ring->isVisible(), active[i]);
        }
    }

    void followsTheOpenChannel_data() {
        QTest::addColumn<int>("openIndex");
        QTest::addColumn<bool>("scrolls");
        QTest::newRow("no channel open") << -1 << false;
        QTest::newRow("index beyond the list") << 25 << false;
        QTest::newRow("already on screen at the start") << 2 << false;
        QTest::newRow("last channel") << 19 << true;
    }

    void followsTheOpenChannel() {
        QFETCH(int, openIndex);
        QFETCH(bool, scrolls);
        auto scene = loaded(m_env->numberedChannels(20));
        QVERIFY(scene);
        scene->row->setCurrentlyOpenChannelIndex(openIndex);
        NotificationCenter::defaultCenter().post(Lumora::openChannelDidChange);
        m_env->settle(scene->row.get());
        const LumoraRowCollectionView& strip = scene->strip();
        QCOMPARE(strip.contentOffset().x(),
                 scrolls ? strip.contentSize().width() - strip.width() : 0.0);
    }

    void dismissalRefreshesReadStateAndPopsTheCell_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<bool>("onScreen");
        QTest::newRow("cell on screen pops, then the delegate hears") << 1 << true;
        QTest::newRow("cell scrolled off screen: reload only") << 15 << false;
    }

    void dismissalRefreshesReadStateAndPopsTheCell() {
        QFETCH(int, index);
        QFETCH(bool, onScreen);
        auto scene = loaded(m_env->numberedChannels(20));
        QVERIFY(scene);
        LumoraRowView& row = *scene->row;
        QVERIFY(!row.collectionDataSource()->dataItems.at(index).isRead());
        // The player marked the channel read.
        DatabaseService::sharedInstance().setChannelIsReadMapping(
            {{QStringLiteral("c%1").arg(index, 2, 10, QLatin1Char('0')), true}});
        DelegateLog delegate;
        row.setDelegate(&delegate);

        row.collectionDataSource()->onChannelContainerClosed(index);
        m_env->clock.advance(LumoraRowViewCell::kPopHalfDuration);
        LumoraRowViewCell* cell = scene->visibleCells().value(index);
        QCOMPARE(cell && cell->contentView()->scale() > 1.05, onScreen);
        QVERIFY(delegate.events.isEmpty());
        m_env->settle(&row);
        row.setDelegate(nullptr);

        QCOMPARE(delegate.events, onScreen ? QStringList{"dismissed"} : QStringList{});
        QVERIFY(row.collectionDataSource()->dataItems.at(index).isRead());
        QVERIFY(!cell || (cell->contentView()->scale() == 1.0 && !cell->isActive()));
    }

    void openChannelById_data() {
        QTest::addColumn<int>("channelCount");
        QTest::addColumn<QString>("id");
        QTest::addColumn<bool>("animated");
        QTest::addColumn<QList<int>>("presented");
        QTest::addColumn<QString>("logLine");
        QTest::newRow("known id, animated")
            << 12 << "c09" << true << QList<int>{9} << "found channel with id c09 at index 9";
        QTest::newRow("unknown id opens the first")
            << 12 << "nope" << true << QList<int>{0}
            << "could not find channel with id nope, open the first one instead";
        QTest::newRow("no channels: nothing to open")
            << 0 << "c01" << true << QList<int>{} << "nothing to open!";
    }

    void openChannelById() {
        QFETCH(int, channelCount);
        QFETCH(QString, id);
        QFETCH(bool, animated);
        QFETCH(QList<int>, presented);
        QFETCH(QString, logLine);
        auto scene = m_env->scene(QString(), QSize(390, 120));
        QVERIFY(scene);
        LumoraTest::LogCapture log;
        m_env->answerChannelsOnce(m_env->numberedChannels(channelCount));
        scene->row->openChannel(id, animated);
        QVERIFY(m_env->settleUntil(scene->row.get(), [&] {
            return log.contains(QStringLiteral("LumoraSDK.LumoraRowView - openChannel: ") +
                                logLine);
        }));
        m_env->settle(scene->row.get());
        QCOMPARE(m_presented, presented);
        // The strip shows the opened channel, and the player gets its centre.
        QVERIFY(presented.isEmpty() || scene->row->cellCenters().at(presented[0]).has_value());
    }

    // One channel's cell: its ring follows the read state and the branding (none without a
    // secondary colour), and a picture that cannot be shown leaves the placeholder's grey in
    // its place, ring or not.
    void cellLook_data() {
        QTest::addColumn<QString>("cellType");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("secondary");
        QTest::addColumn<QString>("pictureUrl");  // on the server unless absolute or empty
        QTest::addColumn<QString>("ring");
        QTest::addColumn<bool>("shown");
        const auto row = [](const char* name, const char* cellType, const char* status,
                            const char* secondary, const char* pictureUrl, const char* ring,
                            bool shown) {
            QTest::newRow(name) << QString(cellType) << QString(status) << QString(secondary)
                                << QString(pictureUrl) << QString(ring) << shown;
        };
        const char* hi = "media/avatars/hi.png";
        row("round, read: grey", "round", "read", "#e21219", hi, "grey", true);
        row("round, unread: branding gradient", "round", "unread", "#e21219", hi, "branding", true);
        row("round, unread without a secondary colour: no ring", "round", "unread", "", hi, "none",
            true);
        row("square icon, unread: branding gradient", "square", "unread", "#e21219", hi, "branding",
            true);
        row("missing picture (404)", "round", "unread", "#e21219", "media/avatars/nobody.png",
            "branding", false);
        row("no picture address", "round", "unread", "#e21219", "", "branding", false);
    }

    void cellLook() {
        QFETCH(QString, cellType);
        QFETCH(QString, status);
        QFETCH(QString, secondary);
        QFETCH(QString, pictureUrl);
        QFETCH(QString, ring);
        QFETCH(bool, shown);
        const QColor primary("#1e90ff");
        Branding branding{primary.name(), std::nullopt};
        if (!secondary.isEmpty()) {
            branding.secondaryColor = secondary;
        }
        const QString address = pictureUrl.isEmpty() || pictureUrl.startsWith(QLatin1String("http"))
                                    ? pictureUrl
                                    : m_env->server().baseUrl() + QLatin1Char('/') + pictureUrl;
        auto scene =
            m_env->loadedScene({channelJson("one", "One", status, address)},
                               QStringLiteral("cellType: '%1'").arg(cellType), QSize(390, 160),
                               Qt::white, [&](LumoraRowView* row) { row->setBranding(branding); });
        QVERIFY(scene);
        LumoraRowViewCell* cell = scene->visibleCells().value(0);
        QVERIFY(cell);
        QCOMPARE(scene->visibleTitles(), QStringList{"One"});
        const QImage image = scene->window.grabWindow();
        GradientLayer* branded = cell->activeGradientBorderLayer();
        QCOMPARE(branded != nullptr, ring == QLatin1String("branding"));
        QVERIFY(!branded || branded->colors() == QList<QColor>({primary, QColor(secondary)}));
        QCOMPARE(cell->inactiveGradientBorderLayer()->isVisible(), ring == QLatin1String("grey"));
        // The channel's picture: the round cell's own, the square's icon over its card. Without
        // one, the placeholder's soft grey shows midway down its gradient.
        auto* square = qobject_cast<LumoraRowViewCellSquare*>(cell);
        FrameButtonView* picture = square ? square->iconImageButton() : cell->imageButton();
        QCOMPARE(picture->hasImage(), shown);
        const QColor centre =
            pixelAt(image, picture, QPointF(picture->width() / 2, picture->height() / 2));
        QCOMPARE(near(centre, QColor(0xd8, 0xd8, 0xd8), 12), !shown);
    }

    void tapPopsAndPresentsTheChannel_data() {
        QTest::addColumn<QString>("cellType");
        QTest::addColumn<QString>("target");
        QTest::addColumn<qreal>("popScale");
        for (const auto& [name, cellType, target, popScale] :
             {std::tuple("round picture", "round", "imageButton", 1.1),
              {"square title, over the card", "square", "label", 1.05}}) {
            QTest::newRow(name) << QString(cellType) << QString(target) << popScale;
        }
    }

    void tapPopsAndPresentsTheChannel() {
        QFETCH(QString, cellType);
        QFETCH(QString, target);
        QFETCH(qreal, popScale);
        auto scene =
            m_env->loadedScene(m_env->numberedChannels(6),
                               QStringLiteral("cellType: '%1'").arg(cellType), QSize(390, 200));
        QVERIFY(scene);
        LumoraRowViewCell* cell = scene->visibleCells().value(2);
        QVERIFY(cell);
        auto* item = cell->findChild<QQuickItem*>(target);
        const QPointF inside(item->width() / 2, qMin(item->height() / 2, 6.0));
        QTest::mouseClick(&scene->window, Qt::LeftButton, {}, item->mapToScene(inside).toPoint());
        QCOMPARE(m_presented, QList<int>{2});
        QVERIFY(scene->row->cellCenters().at(2).has_value());
        m_env->clock.advance(LumoraRowViewCell::kPopHalfDuration);
        QVERIFY(qAbs(cell->contentView()->scale() - popScale) < 0.005);
        m_env->clock.advance(LumoraRowViewCell::kPopHalfDuration * 2);
        QCOMPARE(cell->contentView()->scale(), 1.0);
    }

    void titlesLayOutWithinTheCell_data() {
        QTest::addColumn<QString>("cellType");
        QTest::addColumn<QString>("title");
        QTest::addColumn<bool>("secondLineAdded");
        const QString words = QStringLiteral("stories ").repeated(62).left(500);
        const auto row = [](const char* name, const char* cellType, const QString& title,
                            bool secondLineAdded) {
            QTest::newRow(name) << QString(cellType) << title << secondLineAdded;
        };
        row("round, one short word", "round", "Hi", true);
        // Broken inside the word, by the label and by the count alike: two lines, nothing added.
        row("round, 500 characters without a space", "round", QString(500, QLatin1Char('w')),
            false);
        row("round, 500 characters in words", "round", words, false);
        row("square, 500 characters in words", "square", words, false);
    }

    void titlesLayOutWithinTheCell() {
        QFETCH(QString, cellType);
        QFETCH(QString, title);
        QFETCH(bool, secondLineAdded);
        auto scene = m_env->loadedScene(
            {channelJson("t", title, "unread", m_env->mediaUrl("avatars/tips.png"))},
            QStringLiteral("cellType: '%1'").arg(cellType), QSize(390, 160));
        QVERIFY(scene);
        LumoraRowViewCell* cell = scene->visibleCells().value(0);
        QVERIFY(cell);
        QQuickItem* label = cell->label();
        const QString text = label->property("text").toString();
        QCOMPARE(text.endsWith(QLatin1Char('\n')), secondLineAdded);
        QCOMPARE(text.trimmed(), title.trimmed());
        QVERIFY(label->property("lineCount").toInt() <=
                (cellType == QLatin1String("round") ? 2 : 3));
        QVERIFY(label->property("paintedWidth").toReal() <= label->width() + 1);
        const QRectF shown = label->mapRectToItem(
            cell, QRectF(0, 0, label->width(), label->property("paintedHeight").toReal()));
        QVERIFY(shown.top() >= 0 && shown.bottom() <= cell->height() + 1);
    }

    void thousandChannelsScrollOnRecycledCells() {
        auto scene = m_env->loadedScene(m_env->numberedChannels(1000), QString(), QSize(390, 120));
        QVERIFY(scene);
        LumoraRowCollectionView& strip = scene->strip();
        QCOMPARE(strip.numberOfItems(0), 1000);
        QSet<QObject*> cells;
        int destroyed = 0;
        QObject tracking;
        const auto collect = [&] {
            for (LumoraRowViewCell* cell : allCells(strip)) {
                if (!cells.contains(cell)) {
                    cells.insert(cell);
                    connect(cell, &QObject::destroyed, &tracking, [&, cell] {
                        cells.remove(cell);
                        ++destroyed;
                    });
                }
            }
        };
        const qreal end = strip.contentSize().width() - strip.width();
        for (qreal offset = 0; offset < end; offset += strip.width() / 2) {
            strip.setContentOffset(QPointF(offset, 0));
            strip.layoutIfNeeded();
            collect();
        }
        strip.setContentOffset(QPointF(end, 0));
        m_env->settle(scene->row.get());
        collect();
        QCOMPARE(scene->visibleTitles().last(), "Channel 999");
        QCOMPARE(scene->visibleCells().last()->currentIndex(), std::optional<int>(999));
        // The visible cells, the list's cache on both sides, and the few in the reuse pools.
        const int created = int(cells.size()) + destroyed;
        const int visible = int(scene->visibleCells().size());
        QVERIFY2(created <= 3 * visible + 6,
                 qPrintable(QStringLiteral("%1 cells for %2 visible").arg(created).arg(visible)));
    }

private:
    static QList<Channel> decodeChannels(const QJsonArray& array) {
        QList<Channel> channels;
        for (const QJsonValue& value : array) {
            channels.append(*Channel::fromJson(value.toObject()));
        }
        return channels;
    }
};

QTEST_MAIN(RowViewTest)
#include "tst_rowview.moc"
