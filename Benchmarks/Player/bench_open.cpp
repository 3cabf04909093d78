// From the tap on a row cell to the first page's picture on screen, in wall-clock time under the
// real scheduler: a real row in a shown offscreen window, fed by lumora-devserver, opened with a
// real mouse click. The page's picture (a 720 x 1280 JPEG) is in the image disk cache before the
// first run; each run then finds it on disk (memory cache cleared, the usual case for a channel
// not opened since the application started) or, with the argument 1, still in memory.
//
// Each run records, in ms from the moment before the click:
// - growStartMs: the host's container first seen small at the cell, as the grow starts;
// - cellMs: the player has made the first page's media cell (its picture load starts there);
// - readyMs: the first page's media cell has its picture and reports it ready;
// - readyFrameMs: the first frame swapped that shows it ready;
// - grownMs: the host's grow animation out of the cell has ended (container at full scale);
// - the iteration time (also onScreenMs): the first frame swapped that shows both, the picture
//   on screen at full size.
// Between runs the host shrinks back into the cell and is dismissed.

#include <benchmark/benchmark.h>

#include <QElapsedTimer>
#include <QGuiApplication>

#include "Platform/ImageManager.h"
#include "Platform/ImageView.h"
#include "PlayerTestSupport.h"
#include "Services/Logger.h"
#include "ViewControllers/ChannelViewController.h"
#include "ViewControllers/ChannelsHostViewController.h"
#include "ViewControllers/PresentationStack.h"
#include "Views/ChannelMediaCollectionViewCell.h"

using namespace LumoraSDK;

namespace {

constexpr double kFrameMs = 1000.0 / 60.0;
const QString kPagePicture = QStringLiteral("recipes/page-1.jpg");

/// Runs the event loop until `done` holds or `timeoutMs` pass; false on timeout.
template <typename Condition>
bool runUntil(Condition done, int timeoutMs = 10000) {
    QElapsedTimer waited;
    waited.start();
    while (!done()) {
        if (waited.elapsed() > timeoutMs) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    return true;
}

/// The server, the SDK pointed at it, and a phone-sized window with one row of one channel of
/// image pages along its top. Made once: the benchmark library calls the function more than once.
struct Stage {
    std::unique_ptr<RowTest::Fixture> fixture;
    QQmlEngine engine;
    QQuickWindow window;
    std::unique_ptr<LumoraRowView> row;
    QString pictureUrl;
    QString error;

    Stage() {
        fixture = std::make_unique<RowTest::Fixture>();
        // The fixture installs a hand-driven clock; this benchmark runs on the real one.
        fixture->clock.runUntilIdle();
        Scheduler::setCurrent(nullptr);
        // As an application runs: errors only (the fixture asks for every line).
        if (auto* sdkLogger = dynamic_cast<Logger*>(&logger())) {
            sdkLogger->setLogLevel(LogLevel::error);
        }
        if (!runUntil([this] { return fixture->isReady(); }, 20000)) {
            error = QStringLiteral("the user did not register");
            return;
        }
        ChannelsHostViewController::installAsChannelPresenter();
        // The first open would show the first-use instructions, which hold the page.
        DatabaseService::sharedInstance().userDefaults().setValue(
            DatabaseService::Key::hasShownInstructions, true);
        pictureUrl = fixture->mediaUrl(kPagePicture);
        if (!warmDiskCache()) {
            error = QStringLiteral("the page picture did not load");
            return;
        }
        fixture->answerChannelsOnce(
            {PlayerTest::imageChannelJson(*fixture, "bench", "unread", 3, 30, kPagePicture)});
        window.resize(360, 640);
        window.setColor(Qt::white);
        QQmlComponent component(&engine);
        component.setData("import LumoraSDK\nLumoraRowView { width: 360; height: 120 }", QUrl());
        row.reset(qobject_cast<LumoraRowView*>(component.create()));
        if (!row) {
            error = component.errorString();
            return;
        }
        row->setParentItem(window.contentItem());
        window.show();
        row->reloadData();
        if (!runUntil([this] { return cell() && row->cellCenters().value(0).has_value(); },
                      20000)) {
            error = QStringLiteral("the row did not load");
        }
    }
    ~Stage() { row.reset(); }

    bool warmDiskCache() {
        bool done = false;
        QImage image;
        ImageManager::sharedInstance().loadImage(QUrl(pictureUrl),
                                                 [&](const ImageManager::Result& result) {
                                                     image = result.image;
                                                     done = true;
                                                 });
        return runUntil([&] { return done; }) && !image.isNull();
    }

    LumoraRowViewCell* cell() const {
        const QList<CollectionViewCell*> cells = row->collectionView()->visibleCells();
        return cells.isEmpty() ? nullptr : qobject_cast<LumoraRowViewCell*>(cells.first());
    }
    ChannelsHostViewController* host() {
        const QList<PresentableViewController*> presented =
            PresentationStack::forWindow(&window)->presentedViewControllers();
        return presented.isEmpty() ? nullptr
                                   : qobject_cast<ChannelsHostViewController*>(presented.last());
    }
};

Stage* g_stage = nullptr;

/// What one tap has reached, in ns from the click. State is read as each frame starts (before
/// it is synchronised), so a frame is known to show whatever held then; and between events.
struct Tap {
    ChannelsHostViewController* host = nullptr;
    QElapsedTimer clock;
    qint64 growStartNs = -1, cellNs = -1, readyNs = -1, grownNs = -1;
    qint64 readyFrameNs = -1, onScreenNs = -1;
    bool frameHasReady = false, frameHasBoth = false;

    void observe() {
        const ChannelViewController* player = host->currentChannelViewController();
        const ChannelMediaCollectionViewCell* media =
            player ? player->getVisibleMediaCell(0) : nullptr;
        if (cellNs < 0 && media) {
            cellNs = clock.nsecsElapsed();
        }
        if (readyNs < 0 && media && media->mediaReady() && media->imageView &&
            media->imageView->hasImage()) {
            readyNs = clock.nsecsElapsed();
        }
        // The container stays at full scale until the grow starts from the cell.
        const qreal scale = host->channelsCollectionContainerView()->scale();
        if (growStartNs < 0 && scale < 1.0) {
            growStartNs = clock.nsecsElapsed();
        }
        if (grownNs < 0 && growStartNs >= 0 && scale == 1.0) {
            grownNs = clock.nsecsElapsed();
        }
    }
    void frameStarts() {
        observe();
        frameHasReady = readyNs >= 0;
        frameHasBoth = frameHasReady && grownNs >= 0;
    }
    void frameSwapped() {
        if (frameHasReady && readyFrameNs < 0) {
            readyFrameNs = clock.nsecsElapsed();
        }
        if (frameHasBoth && onScreenNs < 0) {
            onScreenNs = clock.nsecsElapsed();
        }
    }
};

void BM_TapToFirstImage(benchmark::State& state) {
    Stage& stage = *g_stage;
    if (!stage.error.isEmpty()) {
        state.SkipWithError(qPrintable(stage.error));
        return;
    }
    const bool inMemory = state.range(0) == 1;
    Tap* current = nullptr;
    QObject frames;
    QObject::connect(
        &stage.window, &QQuickWindow::beforeSynchronizing, &frames,
        [&] {
            if (current) {
                current->frameStarts();
            }
        },
        Qt::DirectConnection);
    QObject::connect(
        &stage.window, &QQuickWindow::frameSwapped, &frames,
        [&] {
            if (current) {
                current->frameSwapped();
            }
        },
        Qt::DirectConnection);
    double growStartSum = 0, cellSum = 0, slowest = 0, fastest = 1e9;
    double readySum = 0, readyFrameSum = 0, grownSum = 0, onScreenSum = 0;
    for (auto _ : state) {
        DatabaseService::sharedInstance().setChannelInitialPageMapping({});
        DatabaseService::sharedInstance().setChannelIsReadMapping({});
        if (!inMemory) {
            ImageManager::sharedInstance().clearMemoryCache();
        } else if (!stage.warmDiskCache()) {
            state.SkipWithError("the page picture did not load");
            break;
        }
        // Idle first: nothing left over from the previous run is on its way.
        runUntil([] { return false; }, 300);
        const QPoint point = stage.cell()->contentCenterInWindow().toPoint();

        Tap tap;
        tap.clock.start();
        QTest::mouseClick(&stage.window, Qt::LeftButton, {}, point);
        tap.host = stage.host();
        current = tap.host ? &tap : nullptr;
        const bool shown = tap.host && runUntil([&] {
                               tap.observe();
                               return tap.onScreenNs >= 0 && tap.readyFrameNs >= 0;
                           });
        current = nullptr;
        if (!shown) {
            state.SkipWithError(tap.host ? "the first page's picture never reached the screen"
                                         : "the tap opened no player");
            break;
        }
        const auto ms = [](qint64 ns) { return ns / 1e6; };
        state.SetIterationTime(tap.onScreenNs / 1e9);
        growStartSum += ms(tap.growStartNs);
        cellSum += ms(tap.cellNs);
        readySum += ms(tap.readyNs);
        readyFrameSum += ms(tap.readyFrameNs);
        grownSum += ms(tap.grownNs);
        onScreenSum += ms(tap.onScreenNs);
        slowest = std::max(slowest, ms(tap.onScreenNs));
        fastest = std::min(fastest, ms(tap.onScreenNs));

        tap.host->dismissToCellCenter();
        if (!runUntil([&] { return !stage.host() && !stage.row->isChannelHostActive(); })) {
            state.SkipWithError("the player did not close");
            break;
        }
    }
    const auto average = [](double sum) {
        return benchmark::Counter(sum, benchmark::Counter::kAvgIterations);
    };
    state.counters["growStartMs"] = average(growStartSum);
    state.counters["cellMs"] = average(cellSum);
    state.counters["readyMs"] = average(readySum);
    state.counters["readyFrameMs"] = average(readyFrameSum);
    state.counters["grownMs"] = average(grownSum);
    state.counters["onScreenMs"] = average(onScreenSum);
    state.counters["fastestMs"] = fastest;
    state.counters["slowestMs"] = slowest;
    state.counters["framesPastGrow"] = average(onScreenSum / kFrameMs - grownSum / kFrameMs);
}
BENCHMARK(BM_TapToFirstImage)
    ->ArgName("inMemory")
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(10);

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QTemporaryDir directory;
    ImageManager::setCacheDirectory(directory.filePath(QStringLiteral("images")));
    QGuiApplication app(argc, argv);
    Stage stage;
    g_stage = &stage;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    g_stage = nullptr;
    return 0;
}
