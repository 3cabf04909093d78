// One tick of the page progress bar, as the GUI thread pays for it. Every tick is followed by the
// turn of the event loop that the GUI thread takes anyway (posted events, deferred deletions), so
// nothing piles up between iterations.
// - TickArithmetic: the timer's tick alone, reporting to a callback that does nothing;
// - TickWithRebuild: the tick that redraws the current segment (its two layers removed, made
//   anew and inserted) on a live bar in an offscreen window, with the removed layers deleted;
// - FrameOnly / TickWithFrame: a rendered frame of the window (grabWindow, which also reads the
//   pixels back) without and with that tick.

#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <QQuickWindow>

#include "Platform/CollectionView/CollectionView.h"
#include "Platform/Layers/Layer.h"
#include "Platform/Scheduler.h"
#include "Views/ChannelProgressCollectionDataSource.h"
#include "Views/ChannelProgressCollectionViewCell.h"

using namespace LumoraSDK;

namespace {
constexpr int kPages = 10;
constexpr int kCurrentPage = 3;
// Long enough that no run ends while it is measured.
constexpr double kEndlessPage = 1e7;

/// A bar of ten segments, 375 by 3 points, in a shown offscreen window, on a hand-driven clock
/// so that only the benchmark's own calls tick it.
struct LiveBar {
    LiveBar() : dataSource(kPages) {
        Scheduler::setCurrent(&clock);
        window.resize(375, 3);
        view.setParentItem(window.contentItem());
        view.setSize(QSizeF(375, 3));
        ChannelProgressCollectionViewCell::registerIn(view);
        view.setDataSource(&dataSource);
        window.show();
        QCoreApplication::processEvents();
        view.layoutIfNeeded();
        dataSource.completeProgress(view, kCurrentPage);
        QObject::connect(
            &window, &QQuickWindow::afterRendering, &window, [this] { ++frames; },
            Qt::DirectConnection);
    }
    ~LiveBar() {
        dataSource.progressTimer->invalidate();
        Scheduler::setCurrent(nullptr);
    }
    void startRun(bool redraw) {
        dataSource.startNewTimer(
            kEndlessPage,
            [this, redraw](qreal fraction) {
                if (redraw) {
                    dataSource.updateProgress(view, kCurrentPage, fraction);
                }
            },
            [] {});
    }
    void tick() {
        dataSource.progressTimer->fire();
        // Deferred deletions wait for an explicit call outside a running event loop; without it
        // they pile up and every later call scans them all.
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    int currentSegmentLayers() const {
        int layers = 0;
        for (CollectionViewCell* cell : view.visibleCells()) {
            const auto* segment = qobject_cast<ChannelProgressCollectionViewCell*>(cell);
            if (segment && segment->progressIndex == kCurrentPage) {
                for (QQuickItem* child : segment->contentView()->childItems()) {
                    layers += qobject_cast<Layer*>(child) ? 1 : 0;
                }
            }
        }
        return layers;
    }

    ManualScheduler clock;
    int frames = 0;
    QQuickWindow window;
    ChannelProgressCollectionDataSource dataSource;
    CollectionView view;
};

void BM_TickArithmetic(benchmark::State& state) {
    LiveBar bar;
    bar.startRun(false);
    for (auto _ : state) {
        bar.tick();
    }
}
BENCHMARK(BM_TickArithmetic);

void BM_TickWithRebuild(benchmark::State& state) {
    LiveBar bar;
    bar.startRun(true);
    for (auto _ : state) {
        bar.tick();
    }
    state.counters["segmentLayers"] = bar.currentSegmentLayers();
    state.counters["framesPerTick"] = double(bar.frames) / double(state.iterations());
    state.counters["visibleSegments"] = double(bar.view.visibleCells().size());
}
BENCHMARK(BM_TickWithRebuild)->Unit(benchmark::kMicrosecond);

void BM_FrameOnly(benchmark::State& state) {
    LiveBar bar;
    bar.startRun(true);
    for (auto _ : state) {
        benchmark::DoNotOptimize(bar.window.grabWindow());
    }
}
BENCHMARK(BM_FrameOnly)->Unit(benchmark::kMicrosecond);

void BM_TickWithFrame(benchmark::State& state) {
    LiveBar bar;
    bar.startRun(true);
    for (auto _ : state) {
        bar.tick();
        benchmark::DoNotOptimize(bar.window.grabWindow());
    }
}
BENCHMARK(BM_TickWithFrame)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
