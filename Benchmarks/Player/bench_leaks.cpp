// What a long session leaves behind: the player opened from a row cell with a real click, paged
// forward through an image and a video page with the arrow key, and closed with Escape, 200
// times over one row in one offscreen window, fed by lumora-devserver. Time runs on the manual
// clock; only real I/O (pictures, the video) is waited for.
//
// Prints the live QObjects (all of them, through Qt's object hooks) and the resident memory after
// 10 and after 200 rounds, and the growth between the two. The goal: no object growth, and
// resident memory within 2 MB.
//
//     build/Benchmarks/Player/bench_leaks [rounds]

#include <malloc.h>
#include <unistd.h>
#include <QFile>
#include <QGuiApplication>
#include <QMap>
#include <QTextStream>

#include "LiveObjects.h"
#include "PlayerTestSupport.h"
#include "Services/Logger.h"

using namespace LumoraSDK;

namespace {

double residentMegabytes() {
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.value(1).toDouble() * double(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

struct Figures {
    int objects;
    double residentMb;
    QMap<QByteArray, int> classes;  // live objects of the GUI thread by class
};

/// Everything released that is due for release, then the counts.
Figures measure() {
    for (int pass = 0; pass < 3; ++pass) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }
    // Freed heap goes back to the system, so that resident memory counts what is still held.
    malloc_trim(0);
    QMap<QByteArray, int> classes;
    for (QObject* object : LumoraTest::LiveObjects::onThisThread(QObject::staticMetaObject)) {
        ++classes[object->metaObject()->className()];
    }
    return {LumoraTest::LiveObjects::count(), residentMegabytes(), classes};
}

int guiObjects(const Figures& figures) {
    int count = 0;
    for (const int each : figures.classes) {
        count += each;
    }
    return count;
}

}  // namespace

int main(int argc, char** argv) {
    LumoraTest::LiveObjects::install();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int rounds = argc > 1 ? QByteArray(argv[1]).toInt() : 200;
    QTextStream out(stdout);

    RowTest::Fixture env;
    if (!env.settleUntil(nullptr, [&] { return env.isReady(); })) {
        qCritical("bench_leaks: the viewer did not register");
        return 1;
    }
    // As an application runs: errors only (the fixture asks for every line).
    if (auto* sdkLogger = dynamic_cast<Logger*>(&logger())) {
        sdkLogger->setLogLevel(LogLevel::error);
    }
    PlayerTest::HostHarness harness(env);
    harness.reset();
    QJsonObject channel = PlayerTest::imageChannelJson(env, "leaks", "unread", 3, 5);
    QJsonArray pages = channel.value("pages").toArray();
    QJsonObject video = pages.at(1).toObject();
    video.insert("type", "video");
    video.insert("url", env.mediaUrl("music/page-1.mp4"));
    pages.replace(1, video);
    channel.insert("pages", pages);
    if (!harness.openFromRow(QJsonArray{channel}, 0)) {
        qCritical("bench_leaks: the player did not open");
        return 1;
    }
    QQuickWindow& window = harness.scene()->window;

    Figures early{};
    for (int round = 1; round <= rounds; ++round) {
        if (round > 1 && !harness.reopen(0)) {
            qCritical("bench_leaks: round %d did not open", round);
            return 1;
        }
        harness.advance(0.3);
        // The image page, then the video page playing, then the last image page.
        if (!harness.waitForPageTimer(0, 0)) {
            qCritical("bench_leaks: round %d did not start its first page", round);
            return 1;
        }
        QTest::keyClick(&window, Qt::Key_Right);
        harness.advance(0.1);
        harness.waitFor([&] {
            auto* host = harness.host();
            return host && host->videoNode && host->videoNode->isPlaying();
        });
        QTest::keyClick(&window, Qt::Key_Right);
        harness.advance(0.1);
        QTest::keyClick(&window, Qt::Key_Escape);
        harness.advance(0.5);
        if (!harness.waitFor([&] { return !harness.host(); })) {
            qCritical("bench_leaks: round %d did not close", round);
            return 1;
        }
        if (round == 10) {
            early = measure();
            out << "after 10 rounds: " << early.objects << " live QObjects, "
                << QString::number(early.residentMb, 'f', 1) << " MB resident\n";
            out.flush();
        }
    }
    const Figures late = measure();
    out << "after " << rounds << " rounds: " << late.objects << " live QObjects, "
        << QString::number(late.residentMb, 'f', 1) << " MB resident\n"
        << "growth over the last " << rounds - 10 << " rounds: " << late.objects - early.objects
        << " objects, " << QString::number(late.residentMb - early.residentMb, 'f', 1) << " MB\n";
    // Objects of other threads (the media back end's, the network's) come and go on their own;
    // the GUI thread's are the SDK's.
    out << "GUI thread: " << guiObjects(early) << " objects after 10 rounds, " << guiObjects(late)
        << " after " << rounds << '\n';
    for (auto it = late.classes.cbegin(); it != late.classes.cend(); ++it) {
        if (const int grown = it.value() - early.classes.value(it.key()); grown != 0) {
            out << "  " << it.key() << ": " << (grown > 0 ? "+" : "") << grown << '\n';
        }
    }
    harness.tearDown();
    return 0;
}
