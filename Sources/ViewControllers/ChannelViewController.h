#pragma once

#include <QList>
#include <QPointer>
#include <QUrl>
#include <memory>
#include <optional>

#include "Enums/RequestStatusError.h"
#include "Models/Channel.h"
#include "Platform/CollectionView/CollectionView.h"
#include "Platform/Scheduler.h"
#include "Platform/SharePlatform.h"
#include "Platform/VideoNode.h"
#include "ViewControllers/PresentableViewController.h"
#include "Views/FrameButtonView.h"
#include "lumorasdk_export.h"

class QQuickItem;

namespace LumoraSDK {

class ChannelMediaCollectionDataSource;
class ChannelMediaCollectionViewCell;
class ChannelProgressCollectionDataSource;
class ChannelsHostViewController;

/// Plays one channel of the full-screen player: its pages one at a time in a paged media list,
/// the segmented progress bar across the top, the channel's header, a close button and the
/// learn-more pill of the page's link. Chooses the page a channel opens at, remembers on the
/// device how far the viewer got and whether the channel is read, drives the image timer and
/// reports viewing history. The channels host owns one per channel and is its hostController.
///
/// Video pages borrow the host's shared video node: the page player is its delegate while one of
/// its video pages plays, and the video's own length ends the page.
class LUMORASDK_EXPORT ChannelViewController : public PresentableViewController,
                                               public VideoNodeDelegate {
    Q_OBJECT

public:
    static constexpr double baseAnimateDuration = 0.25;
    /// Delay before an animated learn-more show or hide runs.
    static constexpr double animateStartDelay = 0.35;
    /// Title offset from the header's top with and without a subtitle line.
    static constexpr qreal kTitleTopWithSubtitle = 20;
    static constexpr qreal kTitleTopWithoutSubtitle = 30;

    explicit ChannelViewController(QObject* parent = nullptr);
    ~ChannelViewController() override;

    QPointer<ChannelsHostViewController> hostController;
    /// The channel being played; set before the screen is shown.
    std::optional<Channel> channel;

    bool isLearnMoreContainerVisible = false;
    bool isInteractiveLayoutVisible = false;
    double animateDuration = baseAnimateDuration;
    bool shouldUpdateVideoProgress = false;
    bool isSharing = false;

    std::unique_ptr<ChannelMediaCollectionDataSource> mediaCollectionViewDataSource;
    std::unique_ptr<ChannelProgressCollectionDataSource> progressCollectionViewDataSource;

    // Outlets (valid once the view is loaded).
    QQuickItem* topGradient() const { return m_topGradient; }
    QQuickItem* channelTitle() const { return m_channelTitle; }
    QQuickItem* channelSubtitle() const { return m_channelSubtitle; }
    FrameButtonView* channelProfileImage() const { return m_channelProfileImage; }
    FrameButtonView* learnMoreContainerView() const { return m_learnMoreContainerView; }
    QQuickItem* learnMoreButtonText() const { return m_learnMoreButtonText; }
    QQuickItem* videoContainerView() const { return m_videoContainerView; }
    CollectionView* mediaCollectionView() const { return m_mediaCollectionView; }
    CollectionView* progressCollectionView() const { return m_progressCollectionView; }

    /// The page at the media list's current row, if any.
    std::optional<Page> currentPage() const;
    int currentIndex() const;
    /// The url of every video page, in page order.
    QList<QString> channelVideoUrls() const;
    /// The url of every image page, in page order.
    QList<QUrl> getAllPageImageUrls() const;

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    void viewWillDisappear(bool animated) override;
    /// The player shrinks back into its row cell; this screen is not presented on its own.
    void dismiss(bool animated, Completion completion = {}) override;

    /// The pager shows this screen's view inside one of its cells instead of presenting it; the
    /// first time the view comes on screen it goes through viewWillAppear and viewDidAppear.
    void appearInPagerIfNeeded();

    void goToNextPage();
    void goToPreviousPage();
    void pauseCurrentMedia();
    void resumeCurrentMedia();
    /// Starts the image timer of page `idx`, or continues an interrupted run unless forced.
    void loadTimerForMedia(int idx, bool forceRestart);
    /// Stores how far the viewer got and whether the channel is read, and reports the page.
    void trackViewingHistory(const QString& pageId);
    void toggleLearnMoreContainer(bool show, bool animate);
    void showInteractiveLayout();
    void hideInteractiveLayout();
    /// Shows or hides the header and controls after `delay` seconds, replacing any request
    /// still pending.
    void requestShowInteractiveLayout(double delay);
    void requestHideInteractiveLayout(double delay);
    void cancelInteractiveLayoutRequests();
    void scrollMediaCollection(int to, bool animated);
    ChannelMediaCollectionViewCell* getVisibleMediaCell(int index) const;

    void onCloseButtonPressed();
    void onLearnMoreContainerPressed();

    // Sharing the current page's media (ChannelViewControllerShare.cpp): paused from the press
    // until the flow ends, with permission, a download shown in the host's loading overlay, and
    // the share sheet.
    void onShareButtonPressed();
    FrameButtonView* shareButton() const { return m_shareButton; }
    /// The loading overlay's text for a download at `fraction`: whole percent, truncated (0.427
    /// shows "42%"); empty while the size is unknown (a negative fraction).
    static QString progressLoadingText(double fraction);

    // Video pages.
    /// Puts the host's video node for the current page in place, loading it when the node
    /// holds another video, then starts it.
    void prepareCurrentVideoSet(std::function<void()> onComplete = {});
    void loadVideo(const QString& videoUrl, std::function<void()> onComplete);
    /// Puts the host's video node into this player's video area.
    void setupVideoContainer(std::function<void()> onComplete = {});
    /// Fits the video and its backdrop to the video area, which follows the player's size.
    void layoutVideoContainer();
    void notifyAndStartVideo(int idx);
    void startVideo();
    /// The address of the video the host's node holds, or empty.
    QString getVideoNodeUrl() const;

    void videoNodeDidPlayToTimeInterval(VideoNode& node, double seconds) override;
    void videoNodeDidStallAtTimeInterval(VideoNode& node, double seconds) override;

    static QString description() { return QStringLiteral("LumoraSDK.ChannelViewController"); }

private:
    /// The page to open at: the furthest of the server's initial page and the page reached on
    /// this device, or the first page of a channel that was read; records the read state.
    int startPageMarkingReadState();
    void setupMediaCollection(bool clean);
    void onMediaPageChanged();
    void updateLearnMoreContainer(bool animate);
    static bool showsLearnMore(const std::optional<Page>& page);
    void showLearnMoreContainer();
    /// Names the page's buttons for assistive technology (ChannelViewControllerAccessibility).
    void setupAccessibility();
    /// "Page 2 of 5" of the channel's title, and the learn-more button named after the link.
    void updatePageAccessibility();
    void hideLearnMoreContainer();
    void adaptLayoutForAspectRatio();
    /// The share button, and the host's hit area over it, show on pages that have media.
    void updateShareButton();
    void onShareAuthorizationAnswered(PhotoAuthorizationStatus status, const Page& page);
    void onShareDownloadFinished(bool success, const std::optional<RequestError>& error,
                                 const std::optional<QUrl>& file, const Page& page);
    void presentOpenSettingsAlert(std::function<void()> onActionComplete);
    void presentSharingController(QQuickItem* sourceView, const QList<ShareItem>& shareItems,
                                  std::function<void()> onComplete);
    void setProgressLoadingViewText(const QString& text);
    void endSharing();
    /// The host's reason why media must not play now, if any.
    std::optional<QString> playbackBlockedReason() const;
    void applyTextShadow(QQuickItem* label);

    QPointer<QQuickItem> m_topGradient;
    QPointer<QQuickItem> m_interactiveLayoutViewContainer;
    QPointer<FrameButtonView> m_channelProfileImage;
    QPointer<QQuickItem> m_channelTitle;
    QPointer<QQuickItem> m_channelSubtitle;
    QPointer<FrameButtonView> m_closeButton;
    QPointer<FrameButtonView> m_learnMoreContainerView;
    QPointer<QQuickItem> m_learnMoreButtonText;
    QPointer<FrameButtonView> m_shareButton;
    QPointer<QQuickItem> m_videoContainerView;
    QPointer<QQuickItem> m_videoBackground;
    QPointer<CollectionView> m_mediaCollectionView;
    QPointer<CollectionView> m_progressCollectionView;

    Timer m_showLearnMoreRequest;
    Timer m_hideLearnMoreRequest;
    Timer m_learnMoreAnimation;
    Timer m_interactiveLayoutAnimation;
    Timer m_showInteractiveLayoutRequest;
    Timer m_hideInteractiveLayoutRequest;
    bool m_appearedInPager = false;
};

}  // namespace LumoraSDK
