#pragma once

#include <LumoraSDK/LumoraRowViewDelegate.h>
#include <LumoraSDK/Views/LumoraRowView.h>

#include <QMainWindow>
#include <QPointer>
#include <functional>

class QLabel;
class QListWidget;
class QQuickWidget;

/// A Widgets application's main window with the story row in a QQuickWidget above the host's
/// own widgets. It listens to the row as its LumoraRowViewDelegate, and while the player is open
/// it hands the row's widget the whole window, so that the player opens in the same window.
class HostWindow : public QMainWindow, public LumoraSDK::LumoraRowViewDelegate {
    Q_OBJECT

public:
    explicit HostWindow(QWidget* parent = nullptr);
    ~HostWindow() override;

    /// The row, once its scene has loaded.
    LumoraSDK::LumoraRowView* row() const { return m_row; }
    QQuickWidget* rowWidget() const { return m_rowWidget; }
    /// Called once after each load that brought channels.
    std::function<void(int count)> onRowLoaded;

    void onChannelsDataLoadStarted() override;
    void onChannelsDataLoadComplete(bool success,
                                    const std::optional<LumoraSDK::RequestError>& error,
                                    int dataCount) override;
    void onChannelDismissed() override;

    /// The window as it looks, the row's Qt Quick content included.
    QImage capture();

private:
    /// The player is up: the row's widget takes the window; it is down: the host's widgets return.
    void showPlayer(bool shown);

    QQuickWidget* m_rowWidget = nullptr;
    QList<QWidget*> m_hostContent;
    QPointer<LumoraSDK::LumoraRowView> m_row;
};
