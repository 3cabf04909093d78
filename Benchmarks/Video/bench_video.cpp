// Video time to first frame, all into the same kind of video view in one shown offscreen window,
// with the demo video "music/page-1.mp4" (6 s, 360x640 H.264) warm in the OS file cache:
//
// - BM_LocalFileBarePlayer: a bare QMediaPlayer opened on the file on local disk; from setSource
//   to the first frame reaching the view's video sink. The floor the others are held against.
// - BM_PrefetchedItem: an item already prepared from lumora-devserver (as the prefetch cache
//   holds it); from handing it to a fresh VideoNode and playImmediately() to the first frame.
// - BM_ColdFromServer: nothing prepared; from making the item for the server address to the
//   first frame, the node starting playback as soon as the item reports it is prepared.
// - BM_ServerTimeToFirstByte: a GET of the same address on a fresh connection, from the request
//   to the first body bytes.
//
// All times are wall clock (manual time), one start per iteration; run with repetitions and read
// the medians.

#include <benchmark/benchmark.h>

#include <QAudioOutput>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QMediaPlayer>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QVideoFrame>
#include <QVideoSink>
#include <atomic>
#include <functional>
#include <memory>

#include "DevServer.h"
#include "Platform/VideoNode.h"
#include "Platform/VideoPlayerItem.h"

using namespace LumoraSDK;

namespace {

constexpr char kVideo[] = "music/page-1.mp4";
constexpr int kGiveUpMs = 10000;

std::unique_ptr<LumoraTest::DevServer> g_server;
std::unique_ptr<QQmlEngine> g_engine;
std::unique_ptr<QQuickWindow> g_window;

QUrl serverUrl() {
    return QUrl(g_server->baseUrl() + QStringLiteral("/media/") + QLatin1String(kVideo));
}

QUrl localUrl() {
    return QUrl::fromLocalFile(QStringLiteral(LUMORA_DEMO_CONTENT_DIR "/") + QLatin1String(kVideo));
}

/// Shows `view` full-window and notes the wall time of the first frame its sink receives.
/// Backends may deliver frames on their own threads, hence the atomic.
class FirstFrame {
public:
    explicit FirstFrame(QQuickItem* view) : m_view(view) {
        m_view->setParentItem(g_window->contentItem());
        m_view->setSize(g_window->size());
        auto* sink = m_view->property("videoSink").value<QVideoSink*>();
        QObject::connect(
            sink, &QVideoSink::videoFrameChanged, sink,
            [this](const QVideoFrame& frame) {
                if (frame.isValid() && m_at.load() < 0) {
                    m_at.store(m_clock.nsecsElapsed());
                }
            },
            Qt::DirectConnection);
    }
    void start() { m_clock.start(); }
    /// Seconds from start() to the first frame, or a negative value when none came in time.
    double wait() {
        QElapsedTimer guard;
        guard.start();
        while (m_at.load() < 0 && guard.elapsed() < kGiveUpMs) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        }
        return m_at.load() < 0 ? -1 : double(m_at.load()) / 1e9;
    }

private:
    QQuickItem* m_view;
    QElapsedTimer m_clock;
    std::atomic<qint64> m_at{-1};
};

/// A view like the video node's own, for the bare player.
std::unique_ptr<QQuickItem> makeVideoView() {
    QQmlComponent component(g_engine.get());
    component.setData(
        "import QtMultimedia\nVideoOutput { fillMode: VideoOutput.PreserveAspectCrop }", QUrl());
    return std::unique_ptr<QQuickItem>(qobject_cast<QQuickItem*>(component.create()));
}

/// Lets the previous iteration's players finish tearing down before the next one is timed.
void settle() {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 50) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
}

bool record(benchmark::State& state, double seconds) {
    if (seconds < 0) {
        state.SkipWithError("no video frame within 10 s");
        return false;
    }
    state.SetIterationTime(seconds);
    return true;
}

void BM_LocalFileBarePlayer(benchmark::State& state) {
    for (auto _ : state) {
        QMediaPlayer player;
        QAudioOutput audio;
        audio.setMuted(true);
        player.setAudioOutput(&audio);
        std::unique_ptr<QQuickItem> view = makeVideoView();
        FirstFrame frame(view.get());
        player.setVideoOutput(view.get());
        frame.start();
        player.setSource(localUrl());
        player.play();
        const double seconds = frame.wait();
        player.stop();
        if (!record(state, seconds)) {
            break;
        }
        settle();
    }
}

/// Prepares an item for the server address, as the prefetch cache does, and waits until it is.
std::shared_ptr<VideoPlayerItem> preparedItem() {
    bool prepared = false;
    auto item = std::make_shared<VideoPlayerItem>(serverUrl(), [&] { prepared = true; });
    QElapsedTimer guard;
    guard.start();
    while (!prepared && guard.elapsed() < kGiveUpMs) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
    }
    return item->state() == VideoPlayerItem::State::Ready ? item : nullptr;
}

/// Times one start on a fresh video node: `start` runs on the clock and makes the node play,
/// at once or later; the clock stops at the node's first frame. False when the start failed.
bool timeNodeStart(benchmark::State& state, const std::function<void(VideoNode&)>& start) {
    VideoNode node;
    node.setMuted(true);
    FirstFrame frame(node.view(*g_engine));
    frame.start();
    start(node);
    const double seconds = frame.wait();
    node.pause();
    if (!record(state, seconds)) {
        return false;
    }
    settle();
    return true;
}

void BM_PrefetchedItem(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        std::shared_ptr<VideoPlayerItem> item = preparedItem();
        state.ResumeTiming();
        if (!item) {
            state.SkipWithError("the server video did not prepare");
            break;
        }
        const bool started = timeNodeStart(state, [&](VideoNode& node) {
            node.setAsset(item);
            node.playImmediately();
        });
        if (!started) {
            break;
        }
    }
}

void BM_ColdFromServer(benchmark::State& state) {
    for (auto _ : state) {
        std::shared_ptr<VideoPlayerItem> item;
        const bool started = timeNodeStart(state, [&](VideoNode& node) {
            item = std::make_shared<VideoPlayerItem>(serverUrl(), [&item, &node] {
                node.setAsset(item);
                node.playImmediately();
            });
        });
        if (!started) {
            break;
        }
    }
}

void BM_ServerTimeToFirstByte(benchmark::State& state) {
    for (auto _ : state) {
        // A manager of its own per request: no connection is reused, as for a media player.
        QNetworkAccessManager network;
        QElapsedTimer clock;
        clock.start();
        std::unique_ptr<QNetworkReply> reply(network.get(QNetworkRequest(serverUrl())));
        qint64 firstBytes = -1;
        QObject::connect(reply.get(), &QNetworkReply::readyRead, reply.get(), [&] {
            if (firstBytes < 0) {
                firstBytes = clock.nsecsElapsed();
                reply->abort();
            }
        });
        while (firstBytes < 0 && !reply->isFinished() && clock.elapsed() < kGiveUpMs) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        }
        if (!record(state, firstBytes < 0 ? -1 : double(firstBytes) / 1e9)) {
            break;
        }
    }
}

}  // namespace

BENCHMARK(BM_LocalFileBarePlayer)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_PrefetchedItem)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_ColdFromServer)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_ServerTimeToFirstByte)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QGuiApplication app(argc, argv);
    g_server = std::make_unique<LumoraTest::DevServer>();
    g_engine = std::make_unique<QQmlEngine>();
    g_window = std::make_unique<QQuickWindow>();
    g_window->resize(375, 667);
    g_window->show();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    g_window.reset();
    g_engine.reset();
    g_server.reset();
    return 0;
}
