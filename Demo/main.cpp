// The showcase host: starts the SDK the way any host application would.
#include <QCommandLineParser>
#include <QGuiApplication>
#include <QTextStream>

#include "Lumora.h"

using namespace LumoraSDK;

int main(int argc, char* argv[]) {
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("lumora-demo"));
    QGuiApplication::setOrganizationName(QStringLiteral("Lumora"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("LumoraSDK showcase"));
    parser.addHelpOption();
    const QCommandLineOption apiKey(QStringLiteral("api-key"),
                                    QStringLiteral("API key to start the SDK with."),
                                    QStringLiteral("key"), QStringLiteral("lumora-demo-key"));
    const QCommandLineOption screenshots(
        QStringLiteral("screenshots"),
        QStringLiteral("Render offscreen, write PNGs to DIR and exit."), QStringLiteral("DIR"));
    parser.addOptions({apiKey, screenshots});
    parser.process(app);

    QTextStream out(stdout);
    Lumora::sharedInstance().initialize(parser.value(apiKey), [&out] {
        const auto environment = Lumora::currentEnvironment();
        const auto base = Lumora::sharedInstance().baseApiUrl();
        out << "LumoraSDK " << Lumora::version().value_or(QStringLiteral("(no version)")) << '\n'
            << "environment: " << (environment ? rawValue(*environment) : QStringLiteral("(none)"))
            << '\n'
            << "base URL: " << (base ? base->toString() : QStringLiteral("(none)")) << '\n';
        out.flush();
    });
    return 0;
}
