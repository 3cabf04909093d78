#pragma once

#include <QList>
#include <QPointF>
#include <QPointer>
#include <functional>
#include <memory>
#include <optional>

#include "Platform/AudioSession.h"
#include "Platform/Scheduler.h"
#include "ViewControllers/PresentableViewController.h"
#include "Views/ChannelsCollectionDataSource.h"
#include "Views/CollectionView.h"
#include "Views/LumoraRowView.h"
#include "lumorasdk_export.h"

class QQmlEngine;
class QQuickItem;

namespace LumoraSDK {

class ChannelViewController;
class ChannelsCollectionViewCell;
struct Notification;

/// The full-screen story player: one ChannelViewController per channel side by side in a
/// paging pager, grown out of the tapped row cell and shrunk back into it when it closes. Moves
/// to the next channel when one runs out of pages and owns the audio settings while on screen.
///
/// Touch handling drives it through plain methods (onNextButtonPressed, onPrevButtonPressed,
/// pauseAllMedia, dismissToCellCenter ...), so the logic does not depend on where touches come
/// from.
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
    ChannelViewController* currentChannelViewController() const;

    QQuickItem* channelsCollectionContainerView() const { return m_container; }
    CollectionView* channelsCollectionView() const { return m_channelsCollectionView; }
    QQuickItem* progressLoadingViewContainer() const { return m_progressLoadingViewContainer; }
    QQuickItem* learnMoreButtonHitArea() const { return m_learnMoreButtonHitArea; }
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
    QList<ChannelsCollectionViewCell*> getVisibleChannelCells(bool sorted) const;
    void onChannelMediaReady(const Notification& notification);
    /// A volume key was pressed: the viewer wants sound, even in silent mode.
    void onOutputVolumeChanged();

    /// A tap on the right, or the end of a page's timer (not interactive).
    void onNextButtonPressed(bool isInteractive);
    /// A tap on the left.
    void onPrevButtonPressed();

    /// The cube turn of the visible channels at `progress` of the way between two of them.
    void applyCubeTransition(qreal progress, NavigationDirection direction);

    // The shared video node plays video pages; until video playback is plugged in these do
    // nothing and video pages wait on their play-card still.
    virtual void seekVideoToStart() {}
    virtual void pauseVideo() {}
    virtual void replaceVideoNode() {}

    /// Shows the first-use instructions over the host; empty until an overlay is plugged in,
    /// and then the player starts as if they had been shown before.
    static std::function<void(ChannelsHostViewController&)> instructionsPresenter;
    /// True when the first-use instructions need no showing (shown before on this device, or no
    /// overlay to show); otherwise marks them shown and answers false.
    bool takeInstructionsAlreadyShown();

    /// Gesture state: the pager moved during the current touch.
    bool channelCollectionViewDidScroll = false;

    QString description() const;

private:
    void setupChannelCollectionInteractions();
    void onPagerCameToRest(NavigationDirection direction);
    void scrollPagerTo(int index, bool animated);
    std::optional<QPointF> cellCenterFor(std::optional<int> index) const;
    QPointF viewCenter() const;
    void setContainerCenter(QPointF center);
    /// Moves the container's centre and scale and the background's opacity together.
    void animateContainer(QPointF center, qreal scale, qreal background,
                          std::function<void()> onComplete);

    std::optional<int> m_currentVisibleChannelIndex;
    std::optional<QList<ChannelViewController*>> m_contentViewControllers;
    QPointer<QQmlEngine> m_engine;
    QPointer<QQuickItem> m_container;
    QPointer<CollectionView> m_channelsCollectionView;
    QPointer<QQuickItem> m_progressLoadingViewContainer;
    QPointer<QQuickItem> m_progressLoadingViewText;
    QPointer<QQuickItem> m_learnMoreButtonHitArea;
    Timer m_animation;
    qreal m_backgroundOpacity = 1.0;
};

}  // namespace LumoraSDK
