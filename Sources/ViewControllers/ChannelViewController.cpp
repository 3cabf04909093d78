#include "ViewControllers/ChannelViewController.h"

#include <QColor>
#include <QQuickItem>

#include "Enums/ActivityType.h"
#include "Lumora.h"
#include "Platform/CollectionView/CollectionView.h"
#include "Platform/ImageManager.h"
#include "Platform/ViewAnimation.h"
#include "Services/AnalyticsService.h"
#include "Services/DatabaseService.h"
#include "Services/Logger.h"
#include "Services/NetworkingService.h"
#include "ViewControllers/ChannelsHostViewController.h"
#include "Views/ChannelMediaCollectionDataSource.h"
#include "Views/ChannelMediaCollectionViewCell.h"
#include "Views/ChannelProgressCollectionDataSource.h"
#include "Views/ChannelProgressCollectionViewCell.h"
#include "Views/FrameButtonView.h"

namespace LumoraSDK {

namespace {

bool nonEmpty(const std::optional<QString>& text) {
    return text && !text->isEmpty();
}
}  // namespace

ChannelViewController::ChannelViewController(QObject* parent) : PresentableViewController(parent) {}

ChannelViewController::~ChannelViewController() {
    m_showLearnMoreRequest.invalidate();
    m_hideLearnMoreRequest.invalidate();
    m_learnMoreAnimation.invalidate();
    m_interactiveLayoutAnimation.invalidate();
    cancelInteractiveLayoutRequests();
    if (hostController && hostController->videoNode &&
        hostController->videoNode->delegate() == this) {
        hostController->videoNode->clearDelegate();
    }
    // The lists hold raw pointers to the data sources; detach them before these go.
    if (m_mediaCollectionView) {
        m_mediaCollectionView->setDelegate(nullptr);
        m_mediaCollectionView->setDataSource(nullptr);
    }
    if (m_progressCollectionView) {
        m_progressCollectionView->setDataSource(nullptr);
    }
}

// ---------------------------------------------------------------------------------------------
// Derived values

int ChannelViewController::currentIndex() const {
    return mediaCollectionViewDataSource ? mediaCollectionViewDataSource->currentIndexPath.row()
                                         : 0;
}

std::optional<Page> ChannelViewController::currentPage() const {
    if (!channel || !mediaCollectionViewDataSource) {
        return std::nullopt;
    }
    const int idx = currentIndex();
    if (idx < 0 || idx >= channel->pages.size()) {
        return std::nullopt;
    }
    return channel->pages[idx];
}

QList<QString> ChannelViewController::channelVideoUrls() const {
    QList<QString> urls;
    if (channel) {
        for (const Page& page : channel->pages) {
            if (page.isVideo() && page.url) {
                urls.append(*page.url);
            }
        }
    }
    return urls;
}

QList<QUrl> ChannelViewController::getAllPageImageUrls() const {
    QList<QUrl> urls;
    if (channel) {
        for (const Page& page : channel->pages) {
            if (page.isImage() && page.url) {
                urls.append(QUrl(*page.url));
            }
        }
    }
    return urls;
}

// ---------------------------------------------------------------------------------------------
// Lifecycle

void ChannelViewController::viewDidLoad() {
    PresentableViewController::viewDidLoad();
    m_topGradient = outlet(QStringLiteral("topGradient"));
    m_interactiveLayoutViewContainer = outlet(QStringLiteral("interactiveLayoutViewContainer"));
    m_channelProfileImage = outlet<FrameButtonView>(QStringLiteral("channelProfileImage"));
    m_channelTitle = outlet(QStringLiteral("channelTitle"));
    m_channelSubtitle = outlet(QStringLiteral("channelSubtitle"));
    m_closeButton = outlet<FrameButtonView>(QStringLiteral("closeButton"));
    m_learnMoreContainerView = outlet<FrameButtonView>(QStringLiteral("learnMoreContainerView"));
    m_learnMoreButtonText = outlet(QStringLiteral("learnMoreButtonText"));
    m_shareButton = outlet<FrameButtonView>(QStringLiteral("shareButton"));
    m_videoContainerView = outlet(QStringLiteral("videoContainerView"));
    m_mediaCollectionView = outlet<CollectionView>(QStringLiteral("mediaCollectionView"));
    m_progressCollectionView = outlet<CollectionView>(QStringLiteral("progressCollectionView"));

    m_mediaCollectionView->setPagingEnabled(true);
    // Pages change only through the player's own navigation, never by dragging the list.
    m_mediaCollectionView->setScrollEnabled(false);
    ChannelMediaCollectionViewCell::registerIn(*m_mediaCollectionView);
    m_progressCollectionView->setScrollEnabled(false);
    ChannelProgressCollectionViewCell::registerIn(*m_progressCollectionView);

    connect(m_closeButton, &FrameButtonView::clicked, this,
            &ChannelViewController::onCloseButtonPressed);
    connect(m_learnMoreContainerView, &FrameButtonView::clicked, this,
            &ChannelViewController::onLearnMoreContainerPressed);
    connect(m_shareButton, &FrameButtonView::clicked, this,
            &ChannelViewController::onShareButtonPressed);
    connect(m_videoContainerView, &QQuickItem::widthChanged, this,
            &ChannelViewController::layoutVideoContainer);
    connect(m_videoContainerView, &QQuickItem::heightChanged, this,
            &ChannelViewController::layoutVideoContainer);
    setupAccessibility();
    isInteractiveLayoutVisible = true;
}

void ChannelViewController::viewWillAppear(bool animated) {
    PresentableViewController::viewWillAppear(animated);
    const QString channelName =
        channel ? channel->title.value_or(channel->id.value_or(QString())) : QStringLiteral("nil");
    log(description() + QStringLiteral(" prefetch images for ") + channelName);
    ImageManager::sharedInstance().prefetchImages(getAllPageImageUrls());

    m_channelTitle->setProperty("text", channel ? channel->title.value_or(QString()) : QString());
    m_channelSubtitle->setProperty("text", QString());
    applyTextShadow(m_channelTitle);
    applyTextShadow(m_channelSubtitle);
    const bool hasSubtitle = !m_channelSubtitle->property("text").toString().isEmpty();
    m_channelTitle->setY(hasSubtitle ? kTitleTopWithSubtitle : kTitleTopWithoutSubtitle);

    toggleLearnMoreContainer(showsLearnMore(currentPage()), false);

    if (channel && channel->profilePictureUrl) {
        NetworkingService::sharedInstance().loadRemoteImage(
            m_channelProfileImage, ControlState::Normal, *channel->profilePictureUrl);
    }

    const int pageCount = channel ? int(channel->pages.size()) : 0;
    m_progressCollectionView->setDataSource(nullptr);
    progressCollectionViewDataSource =
        std::make_unique<ChannelProgressCollectionDataSource>(pageCount);
    m_progressCollectionView->setDataSource(progressCollectionViewDataSource.get());

    setupMediaCollection(false);
    QPointer<ChannelViewController> self(this);
    mediaCollectionViewDataSource->onScrollViewDidEndScrollingAnimation = [self] {
        if (self) {
            self->onMediaPageChanged();
        }
    };
    adaptLayoutForAspectRatio();
}

void ChannelViewController::viewDidAppear(bool animated) {
    PresentableViewController::viewDidAppear(animated);
    if (!channel || !channel->id) {
        dismiss(true);
        return;
    }
    const int start = startPageMarkingReadState();
    scrollMediaCollection(start, false);
    if (progressCollectionViewDataSource && m_progressCollectionView) {
        progressCollectionViewDataSource->completeProgress(*m_progressCollectionView, start);
    }
}

void ChannelViewController::viewWillDisappear(bool animated) {
    PresentableViewController::viewWillDisappear(animated);
    if (progressCollectionViewDataSource) {
        if (progressCollectionViewDataSource->progressTimer) {
            progressCollectionViewDataSource->progressTimer->invalidate();
        }
        progressCollectionViewDataSource->isResumed = false;
    }
    QPointer<ChannelsHostViewController> host = hostController;
    MainQueue::async([host] {
        if (host) {
            host->seekVideoToStart();
        }
    });
}

void ChannelViewController::dismiss(bool, Completion completion) {
    if (hostController) {
        hostController->dismissToCellCenter();
    }
    if (completion) {
        completion();
    }
}

void ChannelViewController::appearInPagerIfNeeded() {
    if (m_appearedInPager) {
        return;
    }
    m_appearedInPager = true;
    viewWillAppear(false);
    viewDidAppear(false);
}

void ChannelViewController::setupMediaCollection(bool clean) {
    if (mediaCollectionViewDataSource && !clean) {
        return;
    }
    m_mediaCollectionView->setDelegate(nullptr);
    m_mediaCollectionView->setDataSource(nullptr);
    mediaCollectionViewDataSource = std::make_unique<ChannelMediaCollectionDataSource>();
    mediaCollectionViewDataSource->pages =
        channel ? std::optional<QList<Page>>(channel->pages) : std::nullopt;
    mediaCollectionViewDataSource->currentIndexPath = IndexPath{0, 0};
    mediaCollectionViewDataSource->finalIndex = 0;
    m_mediaCollectionView->setDataSource(mediaCollectionViewDataSource.get());
    m_mediaCollectionView->setDelegate(mediaCollectionViewDataSource.get());
}

void ChannelViewController::adaptLayoutForAspectRatio() {
    // Screens taller than 9:16 keep the header clear of a notch or status area; the others use
    // the whole screen from the top.
    const double ratio = Lumora::screenAspectRatio();
    const qreal top = (ratio > 0 && ratio < 9.0 / 16.0 - 0.001) ? 44 : 0;
    m_mediaCollectionView->setY(0);
    m_videoContainerView->setY(0);
    m_interactiveLayoutViewContainer->setY(top);
}

void ChannelViewController::applyTextShadow(QQuickItem* label) {
    // Raised text with a faint black edge: readable over light pictures.
    label->setProperty("style", 2 /* Text.Raised */);
    label->setProperty("styleColor", QColor(0, 0, 0, qRound(0.25 * 255)));
    label->setClip(false);
}

// ---------------------------------------------------------------------------------------------
// Navigation

void ChannelViewController::scrollMediaCollection(int to, bool animated) {
    ChannelMediaCollectionDataSource::scrollMediaCollection(
        m_mediaCollectionView, mediaCollectionViewDataSource.get(), to, animated);
}

ChannelMediaCollectionViewCell* ChannelViewController::getVisibleMediaCell(int index) const {
    return ChannelMediaCollectionDataSource::getVisibleMediaCell(m_mediaCollectionView, index);
}

void ChannelViewController::goToNextPage() {
    if (!mediaCollectionViewDataSource ||
        mediaCollectionViewDataSource->nextIndexPath().row() < 0) {
        const std::optional<Page> page = currentPage();
        AnalyticsService::sharedInstance().trackActivity(ActivityType::CompletedChannel,
                                                         channel ? channel->id : std::nullopt,
                                                         page ? page->id : std::nullopt);
        if (hostController) {
            hostController->onChannelNextLimit();
        }
        return;
    }
    scrollMediaCollection(mediaCollectionViewDataSource->nextIndexPath().row(), false);
    if (hostController) {
        hostController->seekVideoToStart();
        hostController->pauseVideo();
    }
    if (progressCollectionViewDataSource) {
        progressCollectionViewDataSource->isResumed = false;
    }
    QPointer<ChannelViewController> self(this);
    MainQueue::async([self] {
        if (self && self->mediaCollectionViewDataSource) {
            self->mediaCollectionViewDataSource->onScrollViewDidEndScrollingAnimation();
        }
    });
    const std::optional<Page> page = currentPage();
    trackViewingHistory(page ? page->id.value_or(QString()) : QString());
}

void ChannelViewController::goToPreviousPage() {
    shouldUpdateVideoProgress = false;
    if (!mediaCollectionViewDataSource || currentIndex() - 1 < 0) {
        if (hostController) {
            hostController->onChannelPrevLimit();
        }
        return;
    }
    scrollMediaCollection(currentIndex() - 1, false);
    if (hostController) {
        hostController->seekVideoToStart();
        hostController->pauseVideo();
    }
    if (progressCollectionViewDataSource) {
        progressCollectionViewDataSource->isResumed = false;
    }
    QPointer<ChannelViewController> self(this);
    MainQueue::async([self] {
        if (self && self->mediaCollectionViewDataSource) {
            self->mediaCollectionViewDataSource->onScrollViewDidEndScrollingAnimation();
        }
    });
    const std::optional<Page> page = currentPage();
    AnalyticsService::sharedInstance().trackActivity(ActivityType::PreviousPage,
                                                     channel ? channel->id : std::nullopt,
                                                     page ? page->id : std::nullopt);
    trackViewingHistory(page ? page->id.value_or(QString()) : QString());
}

void ChannelViewController::onMediaPageChanged() {
    const int idx = currentIndex();
    const std::optional<Page> page = currentPage();
    if (page && nonEmpty(page->swipeUpText)) {
        m_learnMoreButtonText->setProperty("text", page->swipeUpText->toUpper());
    }
    updatePageAccessibility();
    const QString type =
        page && page->mediaType ? rawValue(*page->mediaType) : QStringLiteral("nil");
    log(description() + QStringLiteral(" mediaCollectionView scroll animation complete -> ") +
        type);
    if (progressCollectionViewDataSource && m_progressCollectionView) {
        progressCollectionViewDataSource->completeProgress(*m_progressCollectionView, idx);
    }
    const bool isVideo = page && page->isVideo();
    m_videoContainerView->setVisible(isVideo);
    updateShareButton();

    if (page && page->isImage()) {
        ChannelMediaCollectionViewCell* cell = getVisibleMediaCell(idx);
        if (!cell || !cell->mediaReady()) {
            pauseCurrentMedia();
            if (hostController) {
                hostController->enableMediaReadyObserver = true;
            }
            log(description() + QStringLiteral(" image not ready yet, wait for it to load first ") +
                (cell ? cell->mediaUrl.value_or(QString()) : QString()));
            return;
        }
        log(description() + QStringLiteral(" image is ready, start playing"));
        updateLearnMoreContainer(true);
        loadTimerForMedia(idx, false);
        if (hostController && hostController->isPresentingInstructions) {
            log(description() +
                QStringLiteral(" image is ready, but pause because instructions are up"));
            pauseCurrentMedia();
        } else if (const std::optional<QString> reason = playbackBlockedReason()) {
            log(description() + QStringLiteral(" image is ready, but pause because ") + *reason);
            pauseCurrentMedia();
        }
    } else if (isVideo) {
        prepareCurrentVideoSet({});
    }
}

// ---------------------------------------------------------------------------------------------
// Timer

void ChannelViewController::loadTimerForMedia(int idx, bool forceRestart) {
    if (!channel || channel->pages.isEmpty() || idx < 0 || idx >= channel->pages.size() ||
        !channel->pages[idx].duration) {
        return;
    }
    if (!progressCollectionViewDataSource) {
        qFatal("ChannelViewController: no progress list for the image timer");
    }
    ChannelProgressCollectionDataSource& progress = *progressCollectionViewDataSource;
    if (progress.isResumed && !forceRestart) {
        resumeCurrentMedia();
        return;
    }
    if (progress.progressTimer) {
        progress.progressTimer->invalidate();
    }
    progress.isResumed = false;
    QPointer<ChannelViewController> self(this);
    progress.startNewTimer(
        *channel->pages[idx].duration,
        [self, idx](qreal fraction) {
            if (self && self->progressCollectionViewDataSource && self->m_progressCollectionView) {
                self->progressCollectionViewDataSource->updateProgress(
                    *self->m_progressCollectionView, idx, fraction);
            }
        },
        [self] {
            if (self && self->hostController) {
                self->hostController->onNextButtonPressed(false);
            }
        });
}

std::optional<QString> ChannelViewController::playbackBlockedReason() const {
    if (!hostController) {
        return std::nullopt;
    }
    // Work queued for a channel the pager has since left must not start it again.
    if (hostController->currentChannelViewController() != this) {
        return QStringLiteral("the channel is not on screen");
    }
    return hostController->mediaPlaybackBlockedReason();
}

void ChannelViewController::pauseCurrentMedia() {
    log(description() + QStringLiteral(" pauseCurrentMedia - pausing ") +
        QString::number(currentIndex()));
    const std::optional<Page> page = currentPage();
    if (page && page->isImage() && progressCollectionViewDataSource &&
        progressCollectionViewDataSource->progressTimer) {
        // Invalidating keeps the remaining time for a later resume.
        progressCollectionViewDataSource->progressTimer->invalidate();
    }
    if (hostController) {
        hostController->pauseVideo();
    }
}

void ChannelViewController::resumeCurrentMedia() {
    if (!mediaCollectionViewDataSource) {
        return;
    }
    const int idx = currentIndex();
    if (const std::optional<QString> reason = playbackBlockedReason()) {
        log(description() + QStringLiteral(" resumeCurrentMedia - cannot resume ") +
            QString::number(idx) + QStringLiteral(", ") + *reason);
        return;
    }
    ChannelMediaCollectionViewCell* cell = getVisibleMediaCell(idx);
    if (!cell || !cell->mediaReady()) {
        log(description() + QStringLiteral(" resumeCurrentMedia - cannot resume ") +
            QString::number(idx) + QStringLiteral(", media not ready"));
        return;
    }
    log(description() + QStringLiteral(" resumeCurrentMedia - resuming ") + QString::number(idx) +
        QStringLiteral(" -> ") + cell->mediaUrl.value_or(QString()));
    const std::optional<Page> page = currentPage();
    // A run that already finished resumes too: with nothing left it completes on its first tick.
    if (page && page->isImage() && progressCollectionViewDataSource &&
        progressCollectionViewDataSource->timerRemainingMs) {
        ChannelProgressCollectionDataSource& progress = *progressCollectionViewDataSource;
        progress.isResumed = true;
        progress.startNewTimer(*progress.timerRemainingMs / 100, progress.onTimerUpdate,
                               progress.onTimerComplete);
    } else if (page && page->isVideo()) {
        startVideo();
    }
}

// ---------------------------------------------------------------------------------------------
// Learn more and the interactive layout

bool ChannelViewController::showsLearnMore(const std::optional<Page>& page) {
    return page && nonEmpty(page->swipeUpUrl) && nonEmpty(page->swipeUpText) &&
           page->showSwipeUpUI.value_or(false);
}

void ChannelViewController::updateLearnMoreContainer(bool animate) {
    toggleLearnMoreContainer(showsLearnMore(currentPage()), animate);
}

void ChannelViewController::toggleLearnMoreContainer(bool show, bool animate) {
    m_showLearnMoreRequest.invalidate();
    m_hideLearnMoreRequest.invalidate();
    animateDuration = animate ? baseAnimateDuration : 0;
    if (hostController && hostController->learnMoreButtonHitArea()) {
        // A mouse area's own `enabled` decides whether it takes clicks, not the item's.
        hostController->learnMoreButtonHitArea()->setProperty("enabled", show);
    }
    const double delay = animate ? animateStartDelay : 0;
    QPointer<ChannelViewController> self(this);
    if (show) {
        m_showLearnMoreRequest = MainQueue::asyncAfter(delay, [self] {
            if (self) {
                self->showLearnMoreContainer();
            }
        });
    } else {
        m_hideLearnMoreRequest = MainQueue::asyncAfter(delay, [self] {
            if (self) {
                self->hideLearnMoreContainer();
            }
        });
    }
}

void ChannelViewController::showLearnMoreContainer() {
    m_learnMoreAnimation.invalidate();
    m_learnMoreContainerView->setVisible(true);
    isLearnMoreContainerVisible = true;
    m_learnMoreAnimation = ViewAnimation::animate(
        animateDuration, {{m_learnMoreContainerView.data(), "opacity", 1.0}});
}

void ChannelViewController::hideLearnMoreContainer() {
    m_learnMoreAnimation.invalidate();
    isLearnMoreContainerVisible = false;
    QPointer<FrameButtonView> pill = m_learnMoreContainerView;
    m_learnMoreAnimation = ViewAnimation::animate(animateDuration, {{pill.data(), "opacity", 0.0}},
                                                  [pill](bool finished) {
                                                      if (finished && pill) {
                                                          pill->setVisible(false);
                                                      }
                                                  });
}

void ChannelViewController::showInteractiveLayout() {
    m_interactiveLayoutAnimation.invalidate();
    isInteractiveLayoutVisible = true;
    m_interactiveLayoutAnimation = ViewAnimation::animate(
        animateDuration, {{m_interactiveLayoutViewContainer.data(), "opacity", 1.0}});
}

void ChannelViewController::hideInteractiveLayout() {
    m_interactiveLayoutAnimation.invalidate();
    isInteractiveLayoutVisible = false;
    m_interactiveLayoutAnimation = ViewAnimation::animate(
        animateDuration, {{m_interactiveLayoutViewContainer.data(), "opacity", 0.0}});
}

void ChannelViewController::requestShowInteractiveLayout(double delay) {
    m_showInteractiveLayoutRequest.invalidate();
    QPointer<ChannelViewController> self(this);
    m_showInteractiveLayoutRequest = MainQueue::asyncAfter(delay, [self] {
        if (self) {
            self->showInteractiveLayout();
        }
    });
}

void ChannelViewController::requestHideInteractiveLayout(double delay) {
    m_hideInteractiveLayoutRequest.invalidate();
    QPointer<ChannelViewController> self(this);
    m_hideInteractiveLayoutRequest = MainQueue::asyncAfter(delay, [self] {
        if (self) {
            self->hideInteractiveLayout();
        }
    });
}

void ChannelViewController::cancelInteractiveLayoutRequests() {
    m_showInteractiveLayoutRequest.invalidate();
    m_hideInteractiveLayoutRequest.invalidate();
}

void ChannelViewController::onCloseButtonPressed() {
    dismiss(true);
}

void ChannelViewController::onLearnMoreContainerPressed() {
    if (hostController) {
        hostController->onSwipeUp();
    }
}

}  // namespace LumoraSDK
