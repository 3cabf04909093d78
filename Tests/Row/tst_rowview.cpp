#include <QAbstractItemModelTester>

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

}  // namespace

class RowViewTest : public RowTestCase {
    Q_OBJECT

    std::unique_ptr<Scene> loaded(const QJsonArray& channels, const QString& properties = {}) {
        return m_env->loadedScene(channels, properties, QSize(390, 120));
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

    void freshRowShowsPlaceholdersThenTheServersChannels() {
        LumoraTest::LogCapture log;
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
        row.setDelegate(&delegate);
        QSignalSpy complete(&row, &LumoraRowView::channelsDataLoadComplete);
        row.reloadData();
        QVERIFY(m_env->settleUntil(&row, [&] { return complete.count() == 1; }));
        m_env->settle(&row);
        row.setDelegate(nullptr);

        const QList<Channel> expected = decodeChannels(m_env->serverChannels());
        QVERIFY(expected.size() > 5);
        QCOMPARE(complete.first(), QVariantList({true, QString(), int(expected.size())}));
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
        QVERIFY(log.contains("LumoraSDK.LumoraRowView - reloadData"));
        QVERIFY(log.contains("LumoraSDK.LumoraRowView - requestGetChannels OK"));
        // The resume pages' videos are prepared ahead, in channel order.
        const QStringList videos =
            getInitialPageVideoUrls(expected, DatabaseService::sharedInstance());
        QVERIFY(!videos.isEmpty());
        QVERIFY(m_env->settleUntil(
            &row, [&] { return VideoPrefetchService::cachedVideoUrls() == videos; }));

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
        LumoraTest::LogCapture log;
        DelegateLog delegate;
        row.setDelegate(&delegate);
        QSignalSpy complete(&row, &LumoraRowView::channelsDataLoadComplete);
        m_env->failChannelsOnce(500);
        row.reloadData();
        QVERIFY(m_env->settleUntil(&row, [&] { return complete.count() == 1; }));
        m_env->settle(&row);
        row.setDelegate(nullptr);

        QCOMPARE(complete.first().at(0).toBool(), false);
        QVERIFY(!complete.first().at(1).toString().isEmpty());
        QCOMPARE(complete.first().at(2).toInt(), shared);
        QCOMPARE(delegate.events,
                 QStringList({"started", QStringLiteral("complete failed %1 %2")
                                             .arg(describe(RequestStatusError::InternalServerError))
                                             .arg(shared)}));
        QVERIFY(log.contains("LumoraSDK.LumoraRowView - requestGetChannels - "));
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
        QTest::newRow("SQUARE switches and reloads, then square does nothing")
            << "cellType" << QStringList{"SQUARE", "square"} << QStringList{"square", "square"}
            << QList<int>{1, 1} << true;
        QTest::newRow("Round on a round row changes nothing")
            << "cellType" << QStringList{"Round"} << QStringList{"round"} << QList<int>{0} << false;
        QTest::newRow("unknown cell type reloads and stays round")
            << "cellType" << QStringList{"hexagon"} << QStringList{"round"} << QList<int>{1}
            << false;
        QTest::newRow("blue while auto reloads and stays auto")
            << "uiStyle" << QStringList{"blue"} << QStringList{"auto"} << QList<int>{1} << false;
        QTest::newRow("DARK then dark reloads once")
            << "uiStyle" << QStringList{"DARK", "dark"} << QStringList{"dark", "dark"}
            << QList<int>{1, 1} << false;
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
        QVERIFY(!strip.isUserInteractionEnabled());
        m_env->clock.advance(0.1);
        QCOMPARE(completions, 0);
        m_env->settle(scene->row.get());
        QCOMPARE(completions, 1);
        QVERIFY(strip.isUserInteractionEnabled());
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
        QAbstractItemModelTester tester(model,
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
        QSignalSpy removed(model, &QAbstractItemModel::rowsRemoved);
        QSignalSpy inserted(model, &QAbstractItemModel::rowsInserted);
        QSignalSpy moved(model, &QAbstractItemModel::rowsMoved);
        QSignalSpy reset(model, &QAbstractItemModel::modelReset);
        QSignalSpy complete(&row, &LumoraRowView::channelsDataLoadComplete);

        // Alpha goes, X-ray comes, Echo moves to the front; Bravo was read, Charlie renamed.
        m_env->answerChannelsOnce({channelJson("e", "Echo", "read", picture),
                                   channelJson("x", "X-ray", "", picture),
                                   channelJson("b", "Bravo", "read", picture),
                                   channelJson("d", "Delta", "unread", picture),
                                   channelJson("c", "Charlie 2", "unread", picture)});
        row.reloadData();
        QVERIFY(m_env->settleUntil(&row, [&] { return complete.count() == 1; }));
        m_env->settle(&row);

        QCOMPARE(removed.count(), 1);
        QCOMPARE(inserted.count(), 1);
        QVERIFY(moved.count() >= 1);
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
        QTest::newRow("known id, not animated")
            << 12 << "c07" << false << QList<int>{7} << "found channel with id c07 at index 7";
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
        QVERIFY(log.contains(QStringLiteral("LumoraSDK.LumoraRowView - openChannel %1, animated %2")
                                 .arg(id, animated ? "true" : "false")));
        QVERIFY(m_env->settleUntil(scene->row.get(), [&] {
            return log.contains(QStringLiteral("LumoraSDK.LumoraRowView - openChannel: ") +
                                logLine);
        }));
        m_env->settle(scene->row.get());
        QCOMPARE(m_presented, presented);
        // The strip shows the opened channel, and the player gets its centre.
        QVERIFY(presented.isEmpty() || scene->row->cellCenters().at(presented[0]).has_value());
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
