#pragma once

#include <QList>
#include <QPointF>
#include <QPointer>
#include <functional>
#include <memory>
#include <optional>

#include "Platform/AudioSession.h"
#include "Platform/CollectionView/CollectionView.h"
#include "Platform/GestureState.h"
#include "Platform/Scheduler.h"
#include "Platform/VideoNode.h"
#include "ViewControllers/PresentableViewController.h"
#include "Views/ChannelsCollectionDataSource.h"
#include "Views/LumoraRowView.h"
#include "lumorasdk_export.h"

class QQmlEngine;
class QQuickItem;

namespace LumoraSDK {

class ChannelViewController;
class ChannelsCollectionViewCell;
class ChannelsHostStage;
struct Notification;

/// The full-screen story player: one ChannelViewController per channel side by side in a
/// paging pager, grown out of the tapped row cell and shrunk back into it when it closes. Moves
/// to the next channel when one runs out of pages and owns the audio settings while on screen.
///
/// Touches reach it through its scene's pointer handlers as gesture phases (onButtonHold, onPan)
/// and plain presses; keys go through the same paths. Press and hold pauses, a short press on
/// the right moves to the next page and on the left to the previous one, dragging down closes
/// and dragging up opens the page's link.
class LUMORASDK_EXPORT ChannelsHostViewController : public PresentableViewController {
    Q_OBJECT

public:
    static constexpr double kOpenCloseDuration = 0.2;
    /// Delay before shrinking and before restarting the first channel.
    static constexpr double kShortDelay = 0.05;
    static constexpr qreal kClosedScale = 0.01;
    /// Strength of the page header's gradient while the background is not fully opaque, and
    /// the strength below which it is hidden.
    static constexpr qreal kTranslucentGradientFactor = 0.25;
    static constexpr qreal kGradientCutoff = 0.12;

    /// Gestures: the hold timer's tick, the hold time beyond the page player's animation that
    /// makes a press a hold, and the page player's animation while held.
    static constexpr double kHoldTimerInterval = 0.01;
    static constexpr double kClickThreshold = 0.35;
    static constexpr double kHoldAnimateDuration = 0.25;
    /// The pan: scale floor, the progress given up before the pager follows the finger, the
    /// upward travel that counts as a swipe up, and the offset factor that still springs back.
    static constexpr qreal kPanScaleSlack = 0.01;
    static constexpr qreal kPanMinimumScale = 0.975;
    static constexpr qreal kPanOffsetDamping = 0.2;
    static constexpr qreal kSwipeUpDistance = -100;
    static constexpr qreal kSpringBackFactor = 0.6;

    explicit ChannelsHostViewController(QObject* parent = nullptr);
    ~ChannelsHostViewController() override;

    /// Opens the player on channel `index` of the stored channel list, from `row`. `onOpened` is
    /// accepted and not called; `onDismissed` gets the index of the channel on screen at close.
    /// Returns the host, or nullptr when refused.
    static ChannelsHostViewController* presentChannel(int index, LumoraRowView* row,
                                                      std::function<void()> onOpened,
                                                      std::function<void(int)> onDismissed);
    /// Points the row cells' taps at presentChannel.
    static void installAsChannelPresenter();

    int startingIndex = 0;
    bool enableMediaReadyObserver = false;
    QPointer<LumoraRowView> rowInstance;
    bool isPresentingInstructions = false;
    std::function<void(int)> onDismissed = [](int) {};
    std::unique_ptr<ChannelsCollectionDataSource> channelsCollectionDataSource;

    AudioSession::Category startingAudioCategory;
    int startingAudioCategoryOptions;
    AudioSession::Mode startingAudioMode;

    std::optional<int> currentVisibleChannelIndex() const { return m_currentVisibleChannelIndex; }
    void setCurrentVisibleChannelIndex(std::optional<int> index);

    /// One page player per stored channel, built on first use.
    QList<ChannelViewController*>& contentViewControllers();
    QList<ChannelViewController*> getContentViewControllers();
    /// The page player on screen; none once the host has been dismissed.
    ChannelViewController* currentChannelViewController() const;

    QQuickItem* channelsCollectionContainerView() const { return m_container; }
    CollectionView* channelsCollectionView() const { return m_channelsCollectionView; }
    QQuickItem* progressLoadingViewContainer() const { return m_progressLoadingViewContainer; }
    /// The loading overlay's percentage while a share downloads its media.
    QQuickItem* progressLoadingViewText() const { return m_progressLoadingViewText; }
    QQuickItem* shareButtonHitArea() const { return m_shareButtonHitArea; }
    QQuickItem* learnMoreButtonHitArea() const { return m_learnMoreButtonHitArea; }
    QQuickItem* previousButton() const { return m_previousButton; }
    QQuickItem* previousButtonGradient() const { return m_previousButtonGradient; }
    /// The top of the pager while it follows a downward drag.
    qreal channelsContainerTopOffset = 0;

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    void viewDidDisappear(bool animated) override;
    void dismiss(bool animated, Completion completion = {}) override;

    void openFromCellCenter(std::function<void()> onComplete = {});
    void dismissToCellCenter();
    void animateOpenFromPosition(std::function<void()> onComplete = {});
    void animateDismissToPosition(QPointF point);
    void bounceCollectionViewToTop(std::function<void()> completion = {});
    void setBackgroundOpacity(qreal alpha);

    void onChannelNextLimit();
    void onChannelPrevLimit();
    void onChannelDismiss();
    void onChannelIndexUpdated(std::optional<int> newIndex);
    void onChannelTransitionComplete();
    void toggleLoadingView(bool isHidden);
    void pauseAllMedia();
    /// Why the current page's media must not play now, or nothing when it may: a screen over
    /// the player, a finger holding it, or the player out of the viewer's sight (its window or
    /// the application inactive, minimised or hidden). Every start and resume of a page asks
    /// here.
    std::optional<QString> mediaPlaybackBlockedReason() const;
    /// Stops every page's media at once and lets the video go, for when the player closes or
    /// the application quits: no media player may outlive the window it draws into.
    void stopAllMedia();
    QList<ChannelsCollectionViewCell*> getVisibleChannelCells(bool sorted) const;
    void onChannelMediaReady(const Notification& notification);
    /// A volume key was pressed: the viewer wants sound, even in silent mode.
    void onOutputVolumeChanged();

    /// Paused with the play/pause control: nothing but that control resumes the page, whatever
    /// holds, page changes or channel changes come in between.
    bool isPausedByViewer = false;
    /// Muted with the sound control, until it or a volume key turns the sound on again.
    bool isSoundMutedByViewer = false;
    /// Whether video sound is heard: the audio settings let it through and the viewer has not
    /// muted it.
    bool isSoundOn() const;
    /// The card the channels play in, the neighbours and the pointer controls around it; made
    /// with the view.
    ChannelsHostStage* stage() const { return m_stage.get(); }
    /// Leaving the current channel forward while it is not read records it skipped.
    void trackSkippedChannel();

    /// A tap on the right, or the end of a page's timer (not interactive).
    void onNextButtonPressed(bool isInteractive);
    /// A tap on the left.
    void onPrevButtonPressed();

    /// The cube turn of the visible channels at `progress` of the way between two of them.
    void applyCubeTransition(qreal progress, NavigationDirection direction);

    /// The one video node the page players share; a fresh one for every channel and video.
    std::unique_ptr<VideoNode> videoNode;
    VideoNode& replaceVideoNode();
    void seekVideoToStart();
    void pauseVideo();

    /// Shows the first-use instructions over the host; empty until an overlay is plugged in,
    /// and then the player starts as if they had been shown before.
    static std::function<void(ChannelsHostViewController&)> instructionsPresenter;
    /// True when the first-use instructions need no showing (shown before on this device, or no
    /// overlay to show); otherwise marks them shown and answers false.
    bool takeInstructionsAlreadyShown();

    // Gesture state of the current touch: whether the pager moved, the finger moved vertically
    // or a swipe up happened (each turns a short press into no click), the first vertical
    // translation of the pan, and the hold time counted in timer ticks.
    bool channelCollectionViewDidScroll = false;
    bool hasPannedVertically = false;
    bool hasSwipedUp = false;
    std::optional<qreal> firstPanGestureTranslation;
    double longHoldTime = 0;
    Timer longHoldTimer;

    enum class HoldTarget { Next, Previous };
    /// A press (began) or its release (ended) on the pager (next) or the previous area.
    void onButtonHold(GestureState state, HoldTarget target);
    void buttonHoldTimerUpdate() { longHoldTime += kHoldTimerInterval; }
    /// A vertical drag of `translation` points (downward positive) on the player.
    void onPan(GestureState state, qreal translation);
    void onSwipeUp();
    /// Keys: right and left arrows act as presses on next and previous, space as a hold on
    /// next, Escape closes, the volume keys turn the sound on. Answers whether it was used.
    bool onKeyPressed(int key, bool isAutoRepeat);
    bool onKeyReleased(int key, bool isAutoRepeat);

    QString description() const;

public slots:
    void onLearnMoreButtonHitAreaPressed();
    void onCloseButtonHitAreaPressed();
    void onShareButtonHitAreaPressed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    /// The window or the application came into or went out of the viewer's sight.
    void onSightChanged();
    /// Touch phases from the scene: which control a press lands on decides what it means.
    void onTouchBegan(QPointF scenePosition);
    void onTouchMoved(QPointF translation);
    void onTouchEnded(bool cancelled);

private:
    void setupGestures();
    bool isInViewersSight() const;
    void pauseEveryPage();
    void setupChannelCollectionInteractions();
    void onPagerCameToRest(NavigationDirection direction);
    void scrollPagerTo(int index, bool animated);
    std::optional<QPointF> cellCenterFor(std::optional<int> index) const;
    QPointF viewCenter() const;
    void setContainerCenter(QPointF center);
    /// Moves the container's centre and scale and the background's opacity together.
    void animateContainer(QPointF center, qreal scale, qreal background,
                          std::function<void()> onComplete);

    std::unique_ptr<ChannelsHostStage> m_stage;
    std::optional<int> m_currentVisibleChannelIndex;
    std::optional<QList<ChannelViewController*>> m_contentViewControllers;
    QPointer<QQmlEngine> m_engine;
    QPointer<QQuickItem> m_container;
    QPointer<CollectionView> m_channelsCollectionView;
    QPointer<QQuickItem> m_progressLoadingViewContainer;
    QPointer<QQuickItem> m_progressLoadingViewText;
    QPointer<QQuickItem> m_learnMoreButtonHitArea;
    QPointer<QQuickItem> m_previousButton;
    QPointer<QQuickItem> m_previousButtonGradient;
    QPointer<QQuickItem> m_closeButtonHitArea;
    QPointer<QQuickItem> m_shareButtonHitArea;
    std::optional<HoldTarget> m_touchHoldTarget;
    bool m_touchPanning = false;
    qreal m_touchTranslation = 0;
    Timer m_animation;
    qreal m_backgroundOpacity = 1.0;
    bool m_outOfSight = false;
    bool m_isHeld = false;
    bool m_isClosed = false;
};

}  // namespace LumoraSDK
