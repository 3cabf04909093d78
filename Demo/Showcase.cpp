#include "Showcase.h"

#include <QCoreApplication>
#include <QPointer>
#include <QQuickWindow>
#include <QTextStream>
#include <QTimer>

#include "ViewControllers/ActivityViewController.h"
#include "ViewControllers/ChannelsHostViewController.h"
#include "ViewControllers/InstructionsViewController.h"
#include "Views/LumoraRowView.h"

namespace {
// Rows load over the network and then fetch their pictures; give the pictures a moment to arrive
// before the screen is captured.
constexpr int kSettleMs = 2500;
constexpr int kGiveUpMs = 60000;
// Half-way through the 0.3 s turn between two channels.
constexpr int kMidTurnMs = 150;
// How often the tour looks for the share sheet while the page's media downloads, and the time
// the sheet takes to fade in.
constexpr int kPollMs = 100;
constexpr int kSheetFadeMs = 600;
constexpr int kPlayerChannel = 2;
const QSet<QString> kRows{QStringLiteral("round"), QStringLiteral("square")};
}  // namespace

Showcase::Showcase(LumoraSDK::DemoData configuration, QObject* parent)
    : QObject(parent), m_configuration(std::move(configuration)) {}

void Showcase::setDark(bool dark) {
    if (m_dark != dark) {
        m_dark = dark;
        m_loadedRows.clear();
        emit darkChanged();
    }
}

bool Showcase::show(QQmlApplicationEngine& engine) {
    m_engine = &engine;
    engine.setInitialProperties({{QStringLiteral("showcase"), QVariant::fromValue(this)}});
    engine.load(QUrl(QStringLiteral("qrc:/demo/qml/Main.qml")));
    return !engine.rootObjects().isEmpty();
}

void Showcase::rowLoaded(const QString& row, bool success, int count) {
    QTextStream(stdout) << "row " << row << (m_dark ? " (dark)" : " (light)") << ": "
                        << (success ? "loaded " : "failed, showing ") << count << " channels\n";
    if (!success) {
        return;  // a later load (after registration) brings the channels
    }
    m_loadedRows.insert(row);
    if (m_loadedRows.contains(kRows)) {
        emit rowsLoaded();
    }
}

void Showcase::reloadRows() {
    emit reloadRequested();
}

void Showcase::captureScreenshots(const QString& directory) {
    m_screenshots = QDir(directory);
    QDir().mkpath(directory);
    QTimer::singleShot(kGiveUpMs, qApp, [] {
        QTextStream(stderr)
            << "lumora-demo: the rows did not load within a minute; is lumora-devserver running?\n";
        QCoreApplication::exit(1);
    });
    captureWhenSettled(QStringLiteral("showcase-light"), [this] {
        setDark(true);
        captureWhenSettled(QStringLiteral("showcase-dark"), [this] { capturePlayer(); });
    });
}

void Showcase::capturePlayer() {
    using namespace LumoraSDK;
    auto* window = qobject_cast<QQuickWindow*>(m_engine->rootObjects().value(0));
    auto* row = window ? window->findChild<LumoraRowView*>(QStringLiteral("roundRow")) : nullptr;
    // The long travel channel. Screenshot runs start as a fresh installation, so the player
    // first explains its gestures; then its first page, the turn to the next channel, and that
    // channel's opening video.
    ChannelsHostViewController* host = row ? ChannelsHostViewController::presentChannel(
                                                 kPlayerChannel, row, [] {}, [](int) {})
                                           : nullptr;
    if (!host) {
        QTextStream(stderr) << "lumora-demo: the player did not open\n";
        QCoreApplication::exit(1);
        return;
    }
    QPointer<ChannelsHostViewController> player(host);
    const auto step = [this, player](const QString& name, int delayMs, auto then) {
        QTimer::singleShot(delayMs, this, [this, player, name, then] {
            if (!player || !grab(name)) {
                QCoreApplication::exit(1);
                return;
            }
            then(*player);
        });
    };
    step(QStringLiteral("player-instructions"), kSettleMs, [this, step](auto& host) {
        auto* overlay = qobject_cast<InstructionsViewController*>(host.presentedViewController());
        if (overlay) {
            overlay->onStartButtonPressed();
        }
        step(QStringLiteral("player-mid-page"), kSettleMs, [this, step](auto& host) {
            host.onChannelNextLimit();
            step(QStringLiteral("player-mid-cube-turn"), kMidTurnMs, [this, step](auto&) {
                step(QStringLiteral("player-video-page"), kSettleMs,
                     [this](auto& host) { captureShareSheet(host); });
            });
        });
    });
}

void Showcase::captureShareSheet(LumoraSDK::ChannelsHostViewController& host) {
    using namespace LumoraSDK;
    // The video page is shared: the player pauses, downloads the video and offers the sheet.
    host.onShareButtonHitAreaPressed();
    QPointer<ChannelsHostViewController> player(&host);
    auto* poll = new QTimer(this);
    poll->setInterval(kPollMs);
    connect(poll, &QTimer::timeout, this, [this, poll, player] {
        auto* sheet = player
                          ? qobject_cast<ActivityViewController*>(player->presentedViewController())
                          : nullptr;
        if (!sheet) {
            return;  // the give-up timer ends the tour if it never comes
        }
        poll->deleteLater();
        poll->stop();
        QTimer::singleShot(kSheetFadeMs, this, [this] {
            if (grab(QStringLiteral("player-share-sheet"))) {
                QCoreApplication::exit(0);
            }
        });
    });
    poll->start();
}

bool Showcase::grab(const QString& name) {
    auto* window = qobject_cast<QQuickWindow*>(m_engine->rootObjects().value(0));
    const QString path = m_screenshots.filePath(name + QStringLiteral(".png"));
    if (!window || !window->grabWindow().save(path)) {
        QTextStream(stderr) << "lumora-demo: cannot write " << path << '\n';
        QCoreApplication::exit(1);
        return false;
    }
    QTextStream(stdout) << "wrote " << path << '\n';
    return true;
}

void Showcase::captureWhenSettled(const QString& name, std::function<void()> next) {
    auto connection = std::make_shared<QMetaObject::Connection>();
    *connection = connect(this, &Showcase::rowsLoaded, this, [this, name, next, connection] {
        disconnect(*connection);
        QTimer::singleShot(kSettleMs, this, [this, name, next] {
            if (grab(name)) {
                next();
            }
        });
    });
}
