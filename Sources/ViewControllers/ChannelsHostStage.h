#pragma once

#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QString>
#include <optional>

#include "Views/ChannelsCollectionDataSource.h"
#include "Views/StageLayout.h"
#include "lumorasdk_export.h"

class QQuickItem;
class QScreen;

namespace LumoraSDK {

class ChannelsHostViewController;
class FrameButtonView;
class ImageView;

/// The stage of the full-screen player: lays the card the channels play in, the neighbouring
/// channels and the pointer controls out in the host's scene (see StageLayout) whenever the
/// window's size, screen or pixel ratio changes, and carries out what those controls do.
///
/// The controls act through the host's own paths: the arrows page as taps on the card's sides
/// do, the close button and a click beside the card close as the page's close button does, a
/// neighbour moves there as a swipe would, the sound button takes the volume-key step. The
/// play/pause button holds the page until it is pressed again.
class LUMORASDK_EXPORT ChannelsHostStage : public QObject {
    Q_OBJECT

public:
    /// Finds the stage's items in the host's loaded view and lays them out.
    explicit ChannelsHostStage(ChannelsHostViewController& host);
    ~ChannelsHostStage() override;

    /// Whether the pointer controls show; by default whether a pointing device other than a
    /// touch screen is attached.
    static std::optional<bool> pointerInputOverride;

    /// The layout for the host's current window.
    StageLayout currentLayout() const;
    /// The item the channels play in.
    QQuickItem* card() const { return m_card; }

    /// Lays everything out for the window as it is now, keeping the channel, the page and its
    /// progress as they are.
    void layout();
    /// Brings the neighbours and the state shown by the buttons up to date with the player.
    void refresh();

    /// Pauses the page until called again, or resumes it.
    void togglePlayback();
    /// Turns video sound on as a volume key does, or mutes it and puts the audio settings back.
    void toggleSound();
    /// Moves to the previous or next channel as a swipe there does.
    void moveToNeighbour(NavigationDirection direction);

    /// Whether `scenePosition` falls on a control drawn over the card, which takes the press.
    bool isOnCardControl(QPointF scenePosition) const;

public slots:
    /// What a click on the control named `control` in the scene does.
    void onControlClicked(const QString& control);

private:
    void watchScreen();
    void showNeighbour(FrameButtonView* view, std::optional<int> index);
    void showBackdrop(const QString& url);

    ChannelsHostViewController& m_host;
    QPointer<QQuickItem> m_card;
    QPointer<QQuickItem> m_chrome;
    QPointer<ImageView> m_backdrop;
    QPointer<FrameButtonView> m_previousNeighbour;
    QPointer<FrameButtonView> m_nextNeighbour;
    QPointer<QQuickItem> m_previousArrow;
    QPointer<QQuickItem> m_nextArrow;
    QPointer<QQuickItem> m_closeButton;
    QPointer<QQuickItem> m_playPauseButton;
    QPointer<QQuickItem> m_soundButton;
    QPointer<QScreen> m_screen;
    qreal m_devicePixelRatio = 0;
};

}  // namespace LumoraSDK
