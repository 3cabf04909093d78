#pragma once

#include <QColor>
#include <QDir>
#include <QObject>
#include <QQmlApplicationEngine>
#include <QSet>
#include <QString>
#include <functional>
#include <optional>

#include "Models/DemoData.h"

namespace LumoraSDK {
class ChannelsHostViewController;
}

/// The showcase host: a mock application screen around two story rows, built from a demo
/// configuration. It can also render itself to PNG files and quit, for documentation and CI.
class QQuickWindow;

class Showcase : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString title READ title CONSTANT FINAL)
    Q_PROPERTY(QColor themeColor READ themeColor CONSTANT FINAL)
    Q_PROPERTY(QString headerImageUrl READ headerImageUrl CONSTANT FINAL)
    Q_PROPERTY(QString contentImageUrl READ contentImageUrl CONSTANT FINAL)
    Q_PROPERTY(QString tabBarImageUrl READ tabBarImageUrl CONSTANT FINAL)
    Q_PROPERTY(bool dark READ isDark WRITE setDark NOTIFY darkChanged FINAL)

public:
    explicit Showcase(LumoraSDK::DemoData configuration, QObject* parent = nullptr);

    QString title() const {
        return m_configuration.title.value_or(QStringLiteral("Lumora Showcase"));
    }
    QColor themeColor() const { return m_configuration.themeColor.value_or(QColor("#4F46E5")); }
    QString headerImageUrl() const {
        return m_configuration.topContentImageUrl.value_or(QString());
    }
    QString contentImageUrl() const {
        return m_configuration.bottomContentImageUrl.value_or(QString());
    }
    QString tabBarImageUrl() const { return m_configuration.tabBarImageUrl.value_or(QString()); }
    bool isDark() const { return m_dark; }
    void setDark(bool dark);

    /// Loads the host screen.
    bool show(QQmlApplicationEngine& engine);
    /// Renders the screen in the light and dark style, then the player in the phone-shaped
    /// window and in a wide one, into `directory`; then has a second process render the wide
    /// player at twice the pixel ratio, and quits. With `wideOnly`, renders only the wide player,
    /// named after the pixel ratio ("player-wide@2x").
    void captureScreenshots(const QString& directory, bool wideOnly = false);

    /// Asks both rows to load their channels again.
    void reloadRows();
    /// Called by each row when a load ends.
    Q_INVOKABLE void rowLoaded(const QString& row, bool success, int count);

signals:
    void darkChanged();
    void reloadRequested();
    void rowsLoaded();

private:
    void captureWhenSettled(const QString& name, std::function<void()> next);
    /// Opens the player on a channel and captures it mid-page, mid-turn to the next channel and
    /// on that channel's video, then in a wide window; with `wideOnly`, only in the wide window.
    void capturePlayer(bool wideOnly);
    /// Widens the window around the open player and captures it; `then` follows.
    void captureWidePlayer(const QString& name, std::function<void()> then);
    /// Runs the showcase again at twice the pixel ratio for the wide player only.
    void captureHighDensity();
    /// Shares the video page and captures the sheet, then closes it and goes on wide.
    void captureShareSheet(LumoraSDK::ChannelsHostViewController& host);
    QQuickWindow* window() const;
    bool grab(const QString& name);

    LumoraSDK::DemoData m_configuration;
    QQmlApplicationEngine* m_engine = nullptr;
    QSet<QString> m_loadedRows;
    bool m_dark = false;
    QDir m_screenshots;
};
