// A row reload with a filled store, 1,000 channels against 9, in one run against
// lumora-devserver (--channels 1000; the 9-channel list is the first 9 of them, answered through
// a fault body).
//
// One reload runs from reloadData() until the row's data source holds the new list and the GUI
// thread has gone idle once. Figures per reload:
//   wall       milliseconds from reloadData() to that point;
//   gui        milliseconds the GUI thread was busy in that span (delivering events, or in the
//              direct call), summed over its busy stretches;
//   stall      the longest single busy stretch of the GUI thread, in milliseconds;
//   writes     files written by the store for the reload, counted once its writer is idle;
//   bare GET   milliseconds for the same list fetched by a plain GET, not decoded: the
//              server's and the transfer's share of the wall time.
// Each size is loaded once to warm up (the store is filled: the read map and a page index for
// every channel), then the same list is reloaded kReloads times; the table gives the median and
// the worst. --resume-videos lets the resume pages' videos go to the video prefetch cache too.

#include <QAbstractEventDispatcher>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <cstdio>
#include <memory>

#include "../../Tests/Network/ApiTestCase.h"
#include "Models/UserInput.h"
#include "Platform/UserDefaults.h"
#include "Views/LumoraRowView.h"
#include "Views/LumoraRowViewDataSource.h"

using namespace LumoraSDK;

namespace {

constexpr int kChannels = 1000;
constexpr int kSmall = 9;
constexpr int kReloads = 7;
const char* const kChannelsRoute = "/api/app/channel/channelsForUser";

/// Busy stretches of the GUI thread. A stretch starts with the first event delivered after the
/// event dispatcher last went to sleep (or with an explicit start()) and ends with the last
/// delivery before it sleeps again (aboutToBlock): the dispatcher's awake signal comes before the
/// sleep of the same pass, not after it, so it cannot mark the end of one.
class MeteredApplication : public QGuiApplication {
public:
    using QGuiApplication::QGuiApplication;

    void watchDispatcher() {
        connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
                [this] { close(); });
    }
    bool notify(QObject* receiver, QEvent* event) override {
        // Every thread's events pass through here; only the GUI thread's count.
        if (QThread::currentThread() != thread()) {
            return QGuiApplication::notify(receiver, event);
        }
        if (m_depth++ == 0 && !m_busy) {
            m_busy = true;
            m_clock.start();
        }
        const bool result = QGuiApplication::notify(receiver, event);
        if (--m_depth == 0) {
            m_lastEnd = m_clock.nsecsElapsed();
        }
        return result;
    }
    /// Starts a stretch for work done outside any event, as a direct call from main().
    void start() {
        m_total = 0;
        m_longest = 0;
        m_busy = true;
        m_clock.start();
        m_lastEnd = 0;
    }
    /// The direct work started by start() ends here.
    void touch() { m_lastEnd = m_clock.nsecsElapsed(); }
    void close() {
        // A loop nested in an event handler sleeping does not end the handler's stretch.
        if (m_busy && m_depth == 0) {
            m_total += m_lastEnd;
            m_longest = std::max(m_longest, m_lastEnd);
            m_busy = false;
        }
    }
    double totalMs() const { return m_total / 1e6; }
    double longestMs() const { return m_longest / 1e6; }

private:
    QElapsedTimer m_clock;
    int m_depth = 0;
    bool m_busy = false;
    qint64 m_lastEnd = 0;
    qint64 m_total = 0;
    qint64 m_longest = 0;
};

struct Figures {
    double wall, gui, stall;
    int writes;
    double bareGet = 0;
};

void waitFor(const std::function<bool()>& condition, int timeoutMs = 60000) {
    QElapsedTimer timer;
    timer.start();
    while (!condition() && timer.elapsed() < timeoutMs) {
        // A real wait, so that the GUI thread sleeps between events as it would in exec().
        QEventLoop loop;
        QTimer::singleShot(1, Qt::PreciseTimer, &loop, &QEventLoop::quit);
        loop.exec();
    }
}

/// Real time passing with the event loop running: the store's writer settles meanwhile.
void idleFor(int ms) {
    QElapsedTimer timer;
    timer.start();
    waitFor([&] { return timer.elapsed() >= ms; }, ms + 1000);
}

/// `network` is one manager for every fetch, so that its connection stays open as the SDK's does.
QByteArray fetchChannels(QNetworkAccessManager& network, LumoraTest::DevServer& server) {
    QNetworkRequest request(QUrl(server.baseUrl() + QLatin1String(kChannelsRoute)));
    request.setRawHeader("x-lumora-api-key", server.apiKey().toUtf8());
    const auto token = UserDefaults::standard().string(DatabaseService::Key::accessToken);
    request.setRawHeader("Authorization", "Bearer " + token.value_or(QString()).toUtf8());
    std::unique_ptr<QNetworkReply> reply(network.get(request));
    waitFor([&] { return reply->isFinished(); });
    return reply->readAll();
}

Figures reloadOnce(LumoraRowView& row, MeteredApplication& meter, int expected) {
    UserDefaults& store = UserDefaults::standard();
    store.flush();
    const int writesBefore = store.fileWriteCount();
    QSignalSpy complete(&row, &LumoraRowView::channelsDataLoadComplete);
    QElapsedTimer wall;
    meter.start();
    wall.start();
    row.reloadData();
    meter.touch();
    waitFor([&] {
        return !complete.isEmpty() && row.collectionDataSource()->dataItems.size() == expected;
    });
    QCoreApplication::processEvents();  // the turn that finishes the batch
    meter.close();
    const Figures figures{wall.nsecsElapsed() / 1e6, meter.totalMs(), meter.longestMs(), 0};
    idleFor(4 * UserDefaults::kCoalescingMs);
    return {figures.wall, figures.gui, figures.stall, store.fileWriteCount() - writesBefore};
}

/// The floor under a reload's wall time: the same list fetched by a bare GET, undecoded.
double bareGetMs(QNetworkAccessManager& network, LumoraTest::DevServer& server) {
    QElapsedTimer timer;
    timer.start();
    fetchChannels(network, server);
    return timer.nsecsElapsed() / 1e6;
}

void report(const char* label, QList<Figures> runs) {
    auto column = [&](auto member) {
        QList<double> values;
        for (const Figures& f : runs) {
            values.append(double(f.*member));
        }
        std::sort(values.begin(), values.end());
        return std::pair(values[values.size() / 2], values.last());
    };
    const auto [wall, wallMax] = column(&Figures::wall);
    const auto [gui, guiMax] = column(&Figures::gui);
    const auto [stall, stallMax] = column(&Figures::stall);
    const auto [writes, writesMax] = column(&Figures::writes);
    const auto [bare, bareMax] = column(&Figures::bareGet);
    std::printf("| %s | %.1f (%.1f) | %.1f (%.1f) | %.1f (%.1f) | %.1f (%.1f) | %.0f (%.0f) |\n",
                label, wall, wallMax, bare, bareMax, gui, guiMax, stall, stallMax, writes,
                writesMax);
}

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    MeteredApplication app(argc, argv);
    app.watchDispatcher();
    LumoraTest::DevServer::Options options;
    options.extraArguments = {QStringLiteral("--channels"), QString::number(kChannels)};
    LumoraTest::SdkOnDevServer sdk("2", options);  // errors only: logging is not what is measured
    LumoraTest::DevServer& server = sdk.server();
    if (!server.isRunning()) {
        std::fprintf(stderr, "lumora-devserver did not start\n");
        return 1;
    }
    bool registered = false;
    Lumora::sharedInstance().setUserDetails(
        UserInput{QStringLiteral("bench-viewer")}, [&] { registered = true; },
        [](const RequestError&) {});
    waitFor([&] { return registered; });

    // A filled store: a page index for every channel (the read map fills on the first load).
    // By default the index lies past every channel's last page, so that no resume video goes to
    // the video prefetch cache and the figures are the row's and the store's; with
    // --resume-videos it is the second page, a video in three of the nine demo channels.
    const bool resumeVideos = app.arguments().contains(QStringLiteral("--resume-videos"));
    QNetworkAccessManager network;
    const QJsonArray all = QJsonDocument::fromJson(fetchChannels(network, server)).array();
    QVariantMap pages;
    for (const QJsonValue& channel : all) {
        pages.insert(channel[QStringLiteral("id")].toString(), resumeVideos ? 1 : 1000);
    }
    DatabaseService::sharedInstance().setChannelInitialPageMapping(pages);
    QJsonArray small;
    for (int i = 0; i < kSmall; ++i) {
        small.append(all[i]);
    }

    QQmlEngine engine;
    QQuickWindow window;
    window.resize(390, 120);
    QQmlComponent component(&engine);
    component.setData("import LumoraSDK\nLumoraRowView { cellType: \"round\" }", QUrl());
    std::unique_ptr<LumoraRowView> row(qobject_cast<LumoraRowView*>(component.create()));
    row->setSize(QSizeF(390, 120));
    row->setParentItem(window.contentItem());
    window.show();

    QList<Figures> smallRuns, largeRuns;
    for (const bool large : {false, true}) {
        if (large) {
            server.clearFaults();
        } else {
            server.setFault(QLatin1String(kChannelsRoute),
                            {{"body", QString::fromUtf8(QJsonDocument(small).toJson())}});
        }
        // The first reload of each size only brings the row (and the read map) to it.
        for (int round = 0; round <= kReloads; ++round) {
            Figures figures = reloadOnce(*row, app, large ? kChannels : kSmall);
            figures.bareGet = bareGetMs(network, server);
            if (round > 0) {
                (large ? largeRuns : smallRuns).append(figures);
            }
        }
    }
    std::printf(
        "| reload | wall ms | bare GET ms | GUI-thread ms | longest GUI stall ms | "
        "file writes |\n");
    std::printf("|---|---|---|---|---|---|\n");
    report("9 channels", smallRuns);
    report("1,000 channels", largeRuns);
    std::printf("median (worst) of %d reloads of the same list at each size\n", kReloads);
    return 0;
}
