// lumora-widgets-host: the story row in a Widgets application. A QMainWindow shows the row in a
// QQuickWidget above the host's own widgets; a tapped cell opens the player in the same window.
// It uses nothing but the SDK's public headers.
//
//   lumora-widgets-host [--api-key KEY]     against lumora-devserver (scripts/demo --widgets)
//   lumora-widgets-host --screenshots DIR   a fresh installation: writes the window with the
//                                           row, then with the player, and quits
#include <LumoraSDK/Lumora.h>
#include <LumoraSDK/Models/UserInput.h>
#include <LumoraSDK/Views/LumoraRowView.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickItem>
#include <QQuickWidget>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>
#include <algorithm>
#include <memory>

#include "HostWindow.h"

namespace {
// Pictures arrive after the channel list; give them a moment before a screenshot.
constexpr int kSettleMs = 2500;
constexpr int kGiveUpMs = 60000;
constexpr int kPlayerChannel = 1;

bool save(HostWindow& window, const QDir& directory, const QString& name) {
    const QString path = directory.filePath(name + QStringLiteral(".png"));
    if (!window.capture().save(path)) {
        QTextStream(stderr) << "lumora-widgets-host: cannot write " << path << '\n';
        return false;
    }
    QTextStream(stdout) << "wrote " << path << '\n';
    return true;
}

/// A press and release on the row's widget, where a person would click.
void click(QQuickWidget* widget, QPointF position) {
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, position, widget->mapToGlobal(position), Qt::LeftButton,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(widget, &event);
    }
}

/// Where the row shows channel `index`: the cells are the row's stops for the Tab key.
std::optional<QPointF> cellCenter(QQuickItem& row, int index) {
    QList<QQuickItem*> cells;
    for (QQuickItem* item = row.nextItemInFocusChain();
         item && row.isAncestorOf(item) && !cells.contains(item);
         item = item->nextItemInFocusChain()) {
        cells.append(item);
    }
    std::sort(cells.begin(), cells.end(), [](QQuickItem* a, QQuickItem* b) {
        return a->mapToScene({}).x() < b->mapToScene({}).x();
    });
    if (index >= cells.size()) {
        return std::nullopt;
    }
    QQuickItem* cell = cells.at(index);
    return cell->mapToScene(QPointF(cell->width() / 2, cell->height() / 2));
}

/// The row, then a tap on a cell; the first-use instructions are closed with Return, as a
/// person with a keyboard would; then the player.
void captureScreenshots(HostWindow& window, const QDir& directory) {
    QTimer::singleShot(kGiveUpMs, qApp, [] {
        QTextStream(stderr) << "lumora-widgets-host: the row did not load within a minute; is "
                               "lumora-devserver running?\n";
        QCoreApplication::exit(1);
    });
    window.onRowLoaded = [&window, directory](int) {
        // Clearing the callback destroys this closure: go on with copies of what it holds.
        HostWindow* host = &window;
        const QDir target = directory;
        host->onRowLoaded = nullptr;
        QTimer::singleShot(kSettleMs, host, [host, target] {
            const std::optional<QPointF> center = cellCenter(*host->row(), kPlayerChannel);
            if (!save(*host, target, QStringLiteral("widgets-host")) || !center) {
                QCoreApplication::exit(1);
                return;
            }
            click(host->rowWidget(), *center);
            QTimer::singleShot(kSettleMs, host, [host, target] {
                QKeyEvent start(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
                QCoreApplication::sendEvent(host->rowWidget(), &start);
                QTimer::singleShot(kSettleMs, host, [host, target] {
                    QCoreApplication::exit(
                        save(*host, target, QStringLiteral("widgets-host-player")) ? 0 : 1);
                });
            });
        });
    };
}
}  // namespace

int main(int argc, char* argv[]) {
    // Screenshots show a fresh installation: the SDK's stored state goes to a directory of its own.
    std::unique_ptr<QTemporaryDir> freshInstallation;
    for (int i = 1; i < argc; ++i) {
        if (QByteArray(argv[i]) == "--screenshots") {
            freshInstallation = std::make_unique<QTemporaryDir>();
            qputenv("XDG_CONFIG_HOME", freshInstallation->path().toLocal8Bit());
        }
    }
    LumoraSDK::Lumora::prepareApplication();  // before the application object
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("lumora-widgets-host"));
    QApplication::setOrganizationName(QStringLiteral("Lumora"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("The LumoraSDK story row in a Widgets host"));
    parser.addHelpOption();
    const QCommandLineOption apiKey(QStringLiteral("api-key"), QStringLiteral("The API key."),
                                    QStringLiteral("KEY"), QStringLiteral("lumora-demo-key"));
    const QCommandLineOption screenshots(QStringLiteral("screenshots"),
                                         QStringLiteral("Write PNGs to DIR and exit."),
                                         QStringLiteral("DIR"));
    parser.addOptions({apiKey, screenshots});
    parser.process(app);

    // The window comes first, so that its row hears the SDK start.
    HostWindow window;
    window.show();
    if (parser.isSet(screenshots)) {
        QDir().mkpath(parser.value(screenshots));
        captureScreenshots(window, QDir(parser.value(screenshots)));
    }
    auto& lumora = LumoraSDK::Lumora::sharedInstance();
    lumora.initialize(parser.value(apiKey), [] {});
    QPointer<LumoraSDK::LumoraRowView> row = window.row();
    lumora.setUserDetails(
        LumoraSDK::UserInput{QStringLiteral("widgets-host-viewer")},
        [row] {  // on the SDK's network thread: the row reloads on the GUI thread
            QMetaObject::invokeMethod(qApp, [row] {
                if (row) {
                    row->reloadData();
                }
            });
        },
        [](const LumoraSDK::RequestError& error) {
            QTextStream(stderr) << "lumora-widgets-host: cannot register the viewer: "
                                << LumoraSDK::describe(error) << '\n';
        });
    return app.exec();
}
