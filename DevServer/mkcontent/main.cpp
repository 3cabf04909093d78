// lumora-mkcontent: makes lumora-devserver's demo content from its template.

#include "ContentGenerator.h"

#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonParseError>
#include <cstdio>

int main(int argc, char** argv) {
    // Drawing text needs a platform plugin for fonts; no display is needed or used.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Draws, encodes and writes lumora-devserver's demo content from a template.");
    parser.addHelpOption();
    parser.addOption({"ffmpeg", "The ffmpeg executable.", "path", "ffmpeg"});
    parser.addPositionalArgument("template", "The content template (JSON).");
    parser.addPositionalArgument("output", "The content directory to (re)create.");
    parser.process(application);
    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 2) {
        parser.showHelp(2);
    }

    QFile file(arguments.at(0));
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "lumora-mkcontent: cannot read %s\n", qPrintable(arguments.at(0)));
        return 1;
    }
    QJsonParseError parseError{};
    const auto document = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (!document.isObject()) {
        std::fprintf(stderr, "lumora-mkcontent: %s: %s\n", qPrintable(arguments.at(0)),
                     qPrintable(parseError.errorString()));
        return 1;
    }

    QElapsedTimer timer;
    timer.start();
    LumoraSDK::DevServer::ContentGenerator generator(parser.value("ffmpeg"), arguments.at(1));
    if (!generator.generate(document.object())) {
        std::fprintf(stderr, "lumora-mkcontent: %s\n", qPrintable(generator.errorString()));
        return 1;
    }
    std::printf("lumora-mkcontent: wrote %s in %.1f s\n", qPrintable(arguments.at(1)),
                double(timer.elapsed()) / 1000.0);
    return 0;
}
