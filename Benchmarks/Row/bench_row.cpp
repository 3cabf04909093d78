// The story row at 1,000 channels.
//
// BM_RowFullReload: the GUI-thread work of one reload of a row that shows 1,000 channels: the
// diff against the shown list, the animated batch, the reload of the section that refreshes
// every cell, and the list's layout, exactly as the row runs them when a list arrives. The
// lists alternate between two versions 50 changes apart (deletes, inserts, moves).
// Counters: the cells (delegates) that exist, and the cells on screen.
//
// BM_DiskCachedPictureToCell: a picture that is in the disk cache (and not in memory), from the
// cell's request to the picture being set on the cell's button (wall time), in frames of 60 Hz.
// The server is stopped first, so the picture can only come from the disk.

#include <benchmark/benchmark.h>

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QNetworkAccessManager>
#include <QNetworkDiskCache>
#include <QNetworkReply>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QSet>
#include <QTemporaryDir>
#include <memory>

#include "DevServer.h"
#include "Extensions/ChannelDiffAware.h"
#include "Extensions/CollectionViewReload.h"
#include "Platform/ImageManager.h"
#include "Platform/Scheduler.h"
#include "Platform/UserDefaults.h"
#include "Services/NetworkingService.h"
#include "Views/LumoraRowCollectionView.h"
#include "Views/LumoraRowView.h"
#include "Views/LumoraRowViewCell/LumoraRowViewCell.h"
#include "Views/LumoraRowViewDataSource.h"

using namespace LumoraSDK;

namespace {

constexpr int kChannels = 1000;
constexpr double kFrameMs = 1000.0 / 60.0;

std::unique_ptr<LumoraTest::DevServer> g_server;
QString g_cacheDirectory;

QString avatarUrl(int i) {
    static const QStringList avatars{"welcome", "hi", "travel", "recipes", "fitness", "music"};
    static const QString base = g_server->baseUrl();
    return base + QStringLiteral("/media/avatars/%1.png").arg(avatars[i % 6]);
}

Channel channel(int i) {
    Channel c;
    c.id = QStringLiteral("c%1").arg(i);
    c.title = QStringLiteral("Channel %1").arg(i);
    c.profilePictureUrl = avatarUrl(i);
    c.status = i % 3 == 0 ? Status::Read : Status::Unread;
    return c;
}

/// Two lists of 1,000 channels, 50 changes apart: 10 deleted, 10 inserted, 30 moved.
std::pair<QList<Channel>, QList<Channel>> twoLists() {
    QList<Channel> first;
    for (int i = 0; i < kChannels; ++i) {
        first.append(channel(i));
    }
    QList<Channel> second = first;
    for (int k = 0; k < 10; ++k) {
        second.removeAt(90 * k + 5);
    }
    for (int k = 0; k < 10; ++k) {
        second.insert(95 * k + 3, channel(kChannels + k));
    }
    for (int k = 0; k < 30; k += 2) {
        second.move(30 * k + 11, 30 * k + 40);
    }
    return {first, second};
}

/// Every cell the strip holds: on the list (shown, cached or pooled) and in its reuse pool.
QList<LumoraRowViewCell*> allCells(CollectionView& strip) {
    QList<LumoraRowViewCell*> cells = strip.findChildren<LumoraRowViewCell*>();
    QList<QQuickItem*> items{strip.listView()};
    while (!items.isEmpty()) {
        QQuickItem* item = items.takeLast();
        if (auto* cell = qobject_cast<LumoraRowViewCell*>(item)) {
            if (!cells.contains(cell)) {
                cells.append(cell);
            }
            continue;
        }
        items += item->childItems();
    }
    return cells;
}

struct RowScene {
    QQmlEngine engine;
    QQuickWindow window;
    std::unique_ptr<LumoraRowView> row;

    bool make() {
        window.resize(390, 120);
        QQmlComponent component(&engine);
        component.setData("import LumoraSDK\nLumoraRowView { width: 390; height: 120 }", QUrl());
        row.reset(qobject_cast<LumoraRowView*>(component.create()));
        if (!row) {
            return false;
        }
        row->setParentItem(window.contentItem());
        window.show();
        return true;
    }
};

void BM_RowFullReload(benchmark::State& state) {
    ManualScheduler clock;
    Scheduler::setCurrent(&clock);
    RowScene scene;
    if (!scene.make()) {
        state.SkipWithError("the row did not load");
        return;
    }
    clock.runUntilIdle();
    LumoraRowCollectionView& strip = *scene.row->collectionView();
    LumoraRowViewDataSource& source = *scene.row->collectionDataSource();
    const auto [first, second] = twoLists();
    if (diff(first, second).size() < 50) {
        state.SkipWithError("the lists are not 50 changes apart");
        return;
    }

    QSet<QObject*> cells;
    int created = 0;
    QObject tracking;
    const auto countCells = [&] {
        for (LumoraRowViewCell* cell : allCells(strip)) {
            if (!cells.contains(cell)) {
                cells.insert(cell);
                ++created;
                QObject::connect(cell, &QObject::destroyed, &tracking,
                                 [&cells, cell] { cells.remove(cell); });
            }
        }
    };
    // The row's own reload: diff, animated batch, then the section reload on the main queue.
    const auto load = [&](const QList<Channel>& next) {
        reload(
            strip, diff(source.dataItems, next), 0, [&] { source.dataItems = next; },
            [&](bool) { strip.performBatchUpdates([&] { strip.reloadSections({0}); }); });
        clock.runUntilIdle();
        strip.layoutIfNeeded();
    };
    load(first);
    // Pictures come from memory from now on, as they do once a row has been shown.
    const auto allCached = [] {
        for (int i = 0; i < 6; ++i) {
            if (ImageManager::sharedInstance().cachedImage(QUrl(avatarUrl(i))).isNull()) {
                return false;
            }
        }
        return true;
    };
    QElapsedTimer waited;
    waited.start();
    while (!allCached() && waited.elapsed() < 20000) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        clock.runUntilIdle();
    }
    if (!allCached()) {
        state.SkipWithError("the pictures did not load");
        return;
    }

    bool forward = true;
    for (auto _ : state) {
        load(forward ? second : first);
        state.PauseTiming();
        countCells();
        QCoreApplication::processEvents();
        clock.advance(1.0);
        forward = !forward;
        state.ResumeTiming();
    }
    countCells();
    state.counters["cellsCreated"] = double(created);
    state.counters["cellsAlive"] = double(cells.size());
    state.counters["visibleCells"] = double(strip.visibleCells().size());
    Scheduler::setCurrent(nullptr);
}
BENCHMARK(BM_RowFullReload)->Unit(benchmark::kMillisecond);

/// Writes `body` into the disk cache at `directory` as a fresh answer for `url`.
bool putInDiskCache(const QString& directory, const QUrl& url, const QByteArray& body) {
    QNetworkDiskCache cache;
    cache.setCacheDirectory(directory);
    QNetworkCacheMetaData meta;
    meta.setUrl(url);
    meta.setSaveToDisk(true);
    meta.setLastModified(QDateTime::currentDateTimeUtc().addDays(-1));
    meta.setExpirationDate(QDateTime::currentDateTimeUtc().addYears(1));
    meta.setRawHeaders(
        {{"Content-Type", "image/png"}, {"Content-Length", QByteArray::number(body.size())}});
    meta.setAttributes({{QNetworkRequest::HttpStatusCodeAttribute, 200}});
    QIODevice* device = cache.prepare(meta);
    if (!device) {
        return false;
    }
    device->write(body);
    cache.insert(device);
    return cache.metaData(url).isValid();
}

QByteArray download(const QUrl& url) {
    QNetworkAccessManager network;
    std::unique_ptr<QNetworkReply> reply(network.get(QNetworkRequest(url)));
    while (!reply->isFinished()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return reply->readAll();
}

void BM_DiskCachedPictureToCell(benchmark::State& state) {
    RowScene scene;
    if (!scene.make()) {
        state.SkipWithError("the row did not load");
        return;
    }
    QCoreApplication::processEvents();
    // A picture the row has never asked for, on disk only; the server is gone, so it can only
    // come from there.
    // The benchmark library runs this function more than once; the first run prepares.
    static QUrl url;
    if (g_server) {
        url = QUrl(g_server->baseUrl() + QStringLiteral("/media/avatars/tips.png"));
        const QByteArray body = download(url);
        g_server.reset();
        if (body.isEmpty() || !putInDiskCache(g_cacheDirectory, url, body)) {
            url = QUrl();
        }
    }
    if (url.isEmpty()) {
        state.SkipWithError("the picture could not be put in the disk cache");
        return;
    }
    FrameButtonView button;
    bool done = false;
    const auto load = [&] {
        done = false;
        NetworkingService::sharedInstance().loadRemoteImage(
            &button, ControlState::Normal, url.toString(), [&] { done = true; },
            [&](const RequestError&) { done = true; });
        while (!done) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    };
    double frames = 0;
    for (auto _ : state) {
        ImageManager::sharedInstance().clearMemoryCache();
        button.setImage(QImage());
        QElapsedTimer elapsed;
        elapsed.start();
        load();
        const double ms = elapsed.nsecsElapsed() / 1e6;
        state.SetIterationTime(ms / 1000.0);
        frames += ms / kFrameMs;
        if (!button.hasImage()) {
            state.SkipWithError("the picture did not arrive");
            return;
        }
    }
    state.counters["frames60Hz"] = benchmark::Counter(frames, benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_DiskCachedPictureToCell)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QTemporaryDir directory;
    g_cacheDirectory = directory.filePath(QStringLiteral("images"));
    ImageManager::setCacheDirectory(g_cacheDirectory);
    UserDefaults::setStandardLocation(directory.filePath(QStringLiteral("defaults.json")));
    QGuiApplication app(argc, argv);
    g_server = std::make_unique<LumoraTest::DevServer>();
    // The picture benchmark stops the server once its picture is on disk, so it runs last.
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
