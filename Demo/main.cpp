// The showcase host application: starts the SDK the way any host would and shows two story rows
// in a mock application screen.
#include <QCommandLineParser>
#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QQmlApplicationEngine>
#include <QTemporaryDir>
#include <QTextStream>

#include "Lumora.h"
#include "Platform/UserDefaults.h"
#include "Services/NetworkingService.h"
#include "Services/VideoPrefetchService.h"
#include "Showcase.h"

using namespace LumoraSDK;

namespace {
DemoData loadConfiguration() {
    QFile file(QStringLiteral(":/demo/demo.json"));
    file.open(QIODevice::ReadOnly);
    return DemoData::fromJson(QJsonDocument::fromJson(file.readAll()).object())
        .value_or(DemoData{});
}
}  // namespace

int main(int argc, char* argv[]) {
    // Before the application object: the SDK's web page viewer needs Qt WebEngine set up first.
    Lumora::prepareApplication();
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("lumora-demo"));
    QGuiApplication::setOrganizationName(QStringLiteral("Lumora"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("LumoraSDK showcase"));
    parser.addHelpOption();
    const QCommandLineOption screenshots(
        QStringLiteral("screenshots"),
        QStringLiteral("Render offscreen, write PNGs to DIR and exit."), QStringLiteral("DIR"));
    parser.addOption(screenshots);
    const QCommandLineOption wideOnly(
        QStringLiteral("wide-only"),
        QStringLiteral("With --screenshots, render only the player in a wide window."));
    parser.addOption(wideOnly);
    parser.process(app);
    QString directory = parser.value(screenshots);
    if (directory.isEmpty() && QGuiApplication::platformName() == QLatin1String("offscreen")) {
        directory = QStringLiteral("screenshots");  // nothing to look at without a display
    }
    // Screenshots show a fresh installation every time and leave the showcase's own
    // settings (read channels, the instructions seen) as they were.
    QTemporaryDir freshInstallation;
    if (!directory.isEmpty()) {
        UserDefaults::setStandardLocation(
            freshInstallation.filePath(QStringLiteral("LumoraDefaults.json")));
        // Shared media too: a file kept from an earlier run would refuse the tour's share.
        NetworkingService::sharedInstance().setCachesDirectory(
            freshInstallation.filePath(QStringLiteral("Caches")));
    }

    const DemoData configuration = loadConfiguration();
    QTextStream out(stdout);
    Lumora& lumora = Lumora::sharedInstance();
    // The host screen comes first so that its rows hear the SDK start.
    Showcase showcase(configuration);
    QQmlApplicationEngine engine;
    if (!showcase.show(engine)) {
        return 1;
    }
    lumora.initialize(configuration.apiKey.value_or(QStringLiteral("lumora-demo-key")), [&out] {
        const auto environment = Lumora::currentEnvironment();
        const auto base = Lumora::sharedInstance().baseApiUrl();
        out << "LumoraSDK " << Lumora::version().value_or(QStringLiteral("(no version)")) << '\n'
            << "environment: " << (environment ? rawValue(*environment) : QStringLiteral("(none)"))
            << '\n'
            << "base URL: " << (base ? base->toString() : QStringLiteral("(none)")) << '\n';
        out.flush();
    });
    // Channels are per viewer: once the viewer is registered, the rows load theirs.
    lumora.setUserDetails(
        UserInput{QStringLiteral("showcase-viewer")},
        [&showcase] {
            QMetaObject::invokeMethod(&showcase, &Showcase::reloadRows, Qt::QueuedConnection);
        },
        [](const RequestError& error) {
            QTextStream(stderr) << "lumora-demo: cannot register the viewer: " << describe(error)
                                << '\n';
        });
    if (!directory.isEmpty()) {
        showcase.captureScreenshots(directory, parser.isSet(wideOnly));
    }
    const int status = app.exec();
    // The prefetched videos' players outlive main otherwise, and tear their pipelines down after
    // the display connection is gone.
    VideoPrefetchService::removeCachedVideoItems(VideoPrefetchService::cachedVideoUrls());
    return status;
}
