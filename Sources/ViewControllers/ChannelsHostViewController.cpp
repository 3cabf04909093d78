#include "ViewControllers/ChannelsHostViewController.h"

#include <QColor>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <algorithm>

#include "Enums/ActivityType.h"
#include "Extensions/ViewExtensions.h"
#include "Lumora.h"
#include "Platform/CollectionView/CollectionView.h"
#include "Platform/NotificationCenter.h"
#include "Platform/UserDefaults.h"
#include "Platform/ViewAnimation.h"
#include "Services/AnalyticsService.h"
#include "Services/DatabaseService.h"
#include "Services/Logger.h"
#include "Services/VideoPrefetchService.h"
#include "ViewControllers/ChannelViewController.h"
#include "ViewControllers/ChannelsHostStage.h"
#include "Views/ChannelMediaCollectionDataSource.h"
#include "Views/ChannelsCollectionViewCell.h"
#include "Views/LumoraRowView.h"
#include "Views/LumoraRowViewCell/LumoraRowViewCell.h"

namespace LumoraSDK {

namespace {
const QString kTypeName = QStringLiteral("ChannelsHostViewController");

}  // namespace

std::function<void(ChannelsHostViewController&)> ChannelsHostViewController::instructionsPresenter;

ChannelsHostViewController::ChannelsHostViewController(QObject* parent)
    : PresentableViewController(parent)
    , startingAudioCategory(AudioSession::sharedInstance().category())
    , startingAudioCategoryOptions(AudioSession::sharedInstance().categoryOptions())
    , startingAudioMode(AudioSession::sharedInstance().mode()) {}

ChannelsHostViewController::~ChannelsHostViewController() {
    m_animation.invalidate();
    longHoldTimer.invalidate();
    videoNode.reset();
    NotificationCenter::defaultCenter().removeObserver(this);
    if (m_channelsCollectionView) {
        m_channelsCollectionView->setDelegate(nullptr);
        m_channelsCollectionView->setDataSource(nullptr);
    }
}

QString ChannelsHostViewController::description() const {
    return QStringLiteral("LumoraSDK.ChannelsHostViewController");
}

// ---------------------------------------------------------------------------------------------
// Opening

ChannelsHostViewController* ChannelsHostViewController::presentChannel(
    int index, LumoraRowView* row, std::function<void()> /*onOpened*/,
    std::function<void(int)> onDismissed) {
    if (!row || row->isChannelHostActive()) {
        log(kTypeName + QStringLiteral(" - will not present channel - ") +
            QStringLiteral(" already has an active host!"));
        return nullptr;
    }
    row->setChannelHostActive(true);
    QQmlEngine* engine = qmlEngine(row) ? qmlEngine(row) : engineFor(row->window());
    auto* host = instantiateFromStoryboard<ChannelsHostViewController>(*engine);
    host->m_engine = engine;

    const QList<Channel>& channels = DatabaseService::sharedInstance().allChannelsData();
    if (index < 0 || index >= channels.size()) {
        qFatal("ChannelsHostViewController: channel index %d out of range", index);
    }
    const Channel& tapped = channels[index];
    if (!tapped.status || tapped.status == Status::Unread) {
        QStringList readIds;
        for (const Channel& channel : channels) {
            if (channel.status == Status::Read) {
                readIds.append(channel.id.value_or(QString()));
            }
        }
        log(kTypeName +
            QStringLiteral(" - starting from unread channel,\ndropping read channels ") +
            QStringLiteral("[") + readIds.join(QStringLiteral(", ")) + QStringLiteral("]"));
        QList<ChannelViewController*>& players = host->contentViewControllers();
        QList<ChannelViewController*> kept;
        for (ChannelViewController* player : players) {
            if (player->channel && player->channel->status == Status::Read) {
                delete player;
            } else {
                kept.append(player);
            }
        }
        players = kept;
    }
    host->rowInstance = row;
    // The index is the tapped cell's, also after read channels were dropped: content lists put
    // unread channels first, so a tapped unread channel keeps its place. A list that does not
    // leaves the index past the end, which is a content error the player cannot show.
    host->startingIndex = index;
    if (index >= host->contentViewControllers().size()) {
        qFatal(
            "ChannelsHostViewController: starting index %d out of range of %d channels left "
            "after dropping read ones",
            index, int(host->contentViewControllers().size()));
    }
    host->onDismissed = [row = QPointer<LumoraRowView>(row),
                         onDismissed = std::move(onDismissed)](int dismissedIndex) {
        if (row) {
            row->setChannelHostActive(false);
        }
        if (onDismissed) {
            onDismissed(dismissedIndex);
        }
    };
    getGlobalContext(row->window())->present(host, false);
    log(kTypeName + QStringLiteral(" - openChannelsHost at ") + QString::number(index));
    return host;
}

void ChannelsHostViewController::installAsChannelPresenter() {
    LumoraRowViewCell::channelPresenter = [](int index, LumoraRowView* row,
                                             std::function<void(int)> onDismissed) {
        presentChannel(
            index, row, [] {}, std::move(onDismissed));
    };
}

QList<ChannelViewController*>& ChannelsHostViewController::contentViewControllers() {
    if (!m_contentViewControllers) {
        m_contentViewControllers = getContentViewControllers();
    }
    return *m_contentViewControllers;
}

QList<ChannelViewController*> ChannelsHostViewController::getContentViewControllers() {
    QList<ChannelViewController*> players;
    QQmlEngine* engine = m_engine ? m_engine.data() : engineFor(keyWindow());
    for (const Channel& channel : DatabaseService::sharedInstance().allChannelsData()) {
        auto* player = instantiateFromStoryboard<ChannelViewController>(*engine);
        player->setParent(this);
        player->channel = channel;
        players.append(player);
    }
    return players;
}

ChannelViewController* ChannelsHostViewController::currentChannelViewController() const {
    if (m_isClosed || !m_currentVisibleChannelIndex || !m_contentViewControllers) {
        return nullptr;
    }
    const int index = *m_currentVisibleChannelIndex;
    return index >= 0 && index < m_contentViewControllers->size()
               ? m_contentViewControllers->at(index)
               : nullptr;
}

// ---------------------------------------------------------------------------------------------
// Lifecycle

void ChannelsHostViewController::viewDidLoad() {
    PresentableViewController::viewDidLoad();
    m_container = outlet(QStringLiteral("channelsCollectionContainerView"));
    m_channelsCollectionView = outlet<CollectionView>(QStringLiteral("channelsCollectionView"));
    m_progressLoadingViewContainer = outlet(QStringLiteral("progressLoadingViewContainer"));
    m_progressLoadingViewText = outlet(QStringLiteral("progressLoadingViewText"));
    m_learnMoreButtonHitArea = outlet(QStringLiteral("learnMoreButtonHitArea"));
    m_closeButtonHitArea = outlet(QStringLiteral("closeButtonHitArea"));
    m_shareButtonHitArea = outlet(QStringLiteral("shareButtonHitArea"));
    m_previousButton = outlet(QStringLiteral("previousButton"));
    m_previousButtonGradient = outlet(QStringLiteral("previousButtonGradient"));
    m_channelsCollectionView->setPagingEnabled(true);
    m_channelsCollectionView->setScrollDirection(CollectionView::ScrollDirection::horizontal);
    ChannelsCollectionDataSource::registerIn(*m_channelsCollectionView);
    setupGestures();
    m_stage = std::make_unique<ChannelsHostStage>(*this);
}

void ChannelsHostViewController::viewWillAppear(bool animated) {
    PresentableViewController::viewWillAppear(animated);
    NotificationCenter::defaultCenter().addObserver(
        this, Lumora::onChannelMediaReady,
        [this](const Notification& notification) { onChannelMediaReady(notification); });

    for (ChannelViewController* player : contentViewControllers()) {
        player->hostController = this;
    }
    m_channelsCollectionView->setDelegate(nullptr);
    m_channelsCollectionView->setDataSource(nullptr);
    channelsCollectionDataSource =
        std::make_unique<ChannelsCollectionDataSource>(contentViewControllers());
    QPointer<ChannelsHostViewController> self(this);
    channelsCollectionDataSource->onScrollViewDidScroll = [self](qreal progress,
                                                                 NavigationDirection direction) {
        if (self) {
            self->applyCubeTransition(progress, direction);
        }
    };
    setupChannelCollectionInteractions();
    m_channelsCollectionView->setDataSource(channelsCollectionDataSource.get());
    m_channelsCollectionView->setDelegate(channelsCollectionDataSource.get());

    // The media pauses while the viewer cannot see it, and stops before the application quits.
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this,
            &ChannelsHostViewController::onSightChanged, Qt::UniqueConnection);
    if (QQuickWindow* onWindow = window()) {
        connect(onWindow, &QWindow::activeChanged, this,
                &ChannelsHostViewController::onSightChanged, Qt::UniqueConnection);
        connect(onWindow, &QWindow::visibilityChanged, this,
                &ChannelsHostViewController::onSightChanged, Qt::UniqueConnection);
    }
    connect(qGuiApp, &QCoreApplication::aboutToQuit, this,
            &ChannelsHostViewController::stopAllMedia, Qt::UniqueConnection);

    view()->setOpacity(0);
    MainQueue::async([self] {
        if (!self) {
            return;
        }
        self->scrollPagerTo(self->startingIndex, false);
        self->setCurrentVisibleChannelIndex(self->startingIndex);
        self->view()->setOpacity(1);
        self->openFromCellCenter();
    });
}

void ChannelsHostViewController::viewDidAppear(bool animated) {
    PresentableViewController::viewDidAppear(animated);
    // The player's keys reach it while it is on screen.
    view()->forceActiveFocus();
    QPointer<ChannelsHostViewController> self(this);
    if (!takeInstructionsAlreadyShown()) {
        MainQueue::async([self] {
            if (!self) {
                return;
            }
            self->isPresentingInstructions = true;
            self->pauseAllMedia();
            instructionsPresenter(*self);
        });
        return;
    }
    MainQueue::async([self] {
        if (self) {
            self->onChannelTransitionComplete();
        }
    });
}

bool ChannelsHostViewController::takeInstructionsAlreadyShown() {
    if (!instructionsPresenter) {
        return true;
    }
    UserDefaults& defaults = DatabaseService::sharedInstance().userDefaults();
    if (defaults.boolValue(DatabaseService::Key::hasShownInstructions)) {
        return true;
    }
    defaults.setValue(DatabaseService::Key::hasShownInstructions, true);
    return false;
}

void ChannelsHostViewController::viewDidDisappear(bool animated) {
    PresentableViewController::viewDidDisappear(animated);
    NotificationCenter::defaultCenter().removeObserver(this);
    AudioSession::sharedInstance().setCategory(startingAudioCategory, startingAudioMode,
                                               startingAudioCategoryOptions);
}

void ChannelsHostViewController::dismiss(bool animated, Completion completion) {
    QPointer<ChannelsHostViewController> self(this);
    // The player goes with everything presented over it (a web page, the instructions).
    dismissWithPresented(animated, [self, completion = std::move(completion)] {
        if (self) {
            self->stopAllMedia();
        }
        if (completion) {
            completion();
        }
        if (!self) {
            return;
        }
        ChannelViewController* player = self->currentChannelViewController();
        // Work still queued for the player (a click, a video's end, the pager coming to rest)
        // finds it closed and starts nothing.
        self->m_isClosed = true;
        if (!self->m_currentVisibleChannelIndex) {
            return;
        }
        const std::optional<Page> page = player ? player->currentPage() : std::nullopt;
        AnalyticsService::sharedInstance().trackActivity(
            ActivityType::DismissedChannel,
            player && player->channel ? player->channel->id : std::nullopt,
            page ? page->id : std::nullopt);
        self->onDismissed(*self->m_currentVisibleChannelIndex);
    });
}

// ---------------------------------------------------------------------------------------------
// The visible channel

void ChannelsHostViewController::setCurrentVisibleChannelIndex(std::optional<int> index) {
    m_currentVisibleChannelIndex = index;
    if (index && rowInstance && *index != rowInstance->currentlyOpenChannelIndex()) {
        rowInstance->setCurrentlyOpenChannelIndex(*index);
        NotificationCenter::defaultCenter().post(Lumora::openChannelDidChange);
    }
    onChannelIndexUpdated(index);
    if (m_stage) {
        m_stage->refresh();
    }
}

void ChannelsHostViewController::onChannelIndexUpdated(std::optional<int> newIndex) {
    if (!newIndex || m_isClosed) {
        return;
    }
    const QList<ChannelViewController*>& players = contentViewControllers();
    if (*newIndex < 0 || *newIndex >= players.size()) {
        log(description() + QStringLiteral(" onChannelIndexUpdated - no channel at index ") +
            QString::number(*newIndex));
        return;
    }
    ChannelViewController* player = players[*newIndex];
    if (player->channel) {
        // The server's initial page, not necessarily the page that will show.
        const qint64 initialPage = player->channel->initialPage.value_or(0);
        const QList<Page>& pages = player->channel->pages;
        const std::optional<QString> pageId =
            initialPage >= 0 && initialPage < pages.size() ? pages[initialPage].id : std::nullopt;
        AnalyticsService::sharedInstance().trackActivity(ActivityType::OpenedChannel,
                                                         player->channel->id, pageId);
    }
    // The channel left behind stops, whatever it started while the pager moved.
    for (ChannelViewController* other : players) {
        if (other != player) {
            other->pauseCurrentMedia();
        }
    }
    QPointer<ChannelsHostViewController> self(this);
    QPointer<ChannelViewController> target(player);
    MainQueue::async([self, target] {
        if (self) {
            self->replaceVideoNode();
        }
        if (target) {
            target->setupVideoContainer();
        }
    });
    player->resumeCurrentMedia();
}

void ChannelsHostViewController::onChannelTransitionComplete() {
    m_channelsCollectionView->setUserInteractionEnabled(true);
    ChannelViewController* player = currentChannelViewController();
    if (!player || !player->mediaCollectionViewDataSource) {
        return;
    }
    player->mediaCollectionViewDataSource->onScrollViewDidEndScrollingAnimation();
    const QStringList videoUrls = player->channelVideoUrls();
    if (!videoUrls.isEmpty()) {
        MainQueue::async([videoUrls] { VideoPrefetchService::prefetchVideoItems(videoUrls); });
    }
    const std::optional<Page> page = player->currentPage();
    player->trackViewingHistory(page ? page->id.value_or(QString()) : QString());
}

void ChannelsHostViewController::scrollPagerTo(int index, bool animated) {
    m_channelsCollectionView->scrollToItem(IndexPath{index, 0},
                                           CollectionView::ScrollPosition::left, animated);
    if (!animated) {
        // The page player of the new item comes on screen now, before anything asks for it.
        m_channelsCollectionView->layoutIfNeeded();
    }
}

void ChannelsHostViewController::onChannelNextLimit() {
    pauseAllMedia();
    if (!m_currentVisibleChannelIndex) {
        return;
    }
    const int next = *m_currentVisibleChannelIndex + 1;
    if (next < contentViewControllers().size()) {
        // Touches come back with onChannelTransitionComplete.
        m_channelsCollectionView->setUserInteractionEnabled(false);
        if (next < m_channelsCollectionView->numberOfItems(0)) {
            scrollPagerTo(next, true);
        }
        return;
    }
    dismissToCellCenter();
}

void ChannelsHostViewController::onChannelPrevLimit() {
    pauseAllMedia();
    if (!m_currentVisibleChannelIndex) {
        return;
    }
    const int previous = *m_currentVisibleChannelIndex - 1;
    if (previous < 0) {
        QPointer<ChannelsHostViewController> self(this);
        MainQueue::asyncAfter(kShortDelay, [self] {
            ChannelViewController* player = self ? self->currentChannelViewController() : nullptr;
            if (!player) {
                return;
            }
            player->shouldUpdateVideoProgress = true;
            self->seekVideoToStart();
            player->resumeCurrentMedia();
        });
        return;
    }
    m_channelsCollectionView->setUserInteractionEnabled(false);
    scrollPagerTo(previous, true);
}

void ChannelsHostViewController::onChannelDismiss() {
    dismissToCellCenter();
}

void ChannelsHostViewController::toggleLoadingView(bool isHidden) {
    QPointer<ChannelsHostViewController> self(this);
    MainQueue::async([self, isHidden] {
        if (self) {
            // Touches are off while the overlay shows.
            self->view()->setEnabled(isHidden);
            self->m_progressLoadingViewContainer->setVisible(!isHidden);
        }
    });
}

QList<ChannelsCollectionViewCell*> ChannelsHostViewController::getVisibleChannelCells(
    bool sorted) const {
    QList<ChannelsCollectionViewCell*> cells;
    for (CollectionViewCell* cell : m_channelsCollectionView->visibleCells()) {
        if (auto* channelCell = qobject_cast<ChannelsCollectionViewCell*>(cell)) {
            cells.append(channelCell);
        }
    }
    if (sorted) {
        std::stable_sort(cells.begin(), cells.end(), [](auto* lhs, auto* rhs) {
            return lhs->channelIndex.value_or(-1) < rhs->channelIndex.value_or(-1);
        });
    }
    return cells;
}

// ---------------------------------------------------------------------------------------------
// Next and previous

void ChannelsHostViewController::onNextButtonPressed(bool isInteractive) {
    enableMediaReadyObserver = false;
    ChannelViewController* player = currentChannelViewController();
    if (!player) {
        return;
    }
    player->goToNextPage();
    if (m_stage) {
        m_stage->refresh();
    }
    const std::optional<Page> page = player->currentPage();
    AnalyticsService::sharedInstance().trackActivity(
        isInteractive ? ActivityType::SkippedPage : ActivityType::CompletedPage,
        player->channel ? player->channel->id : std::nullopt, page ? page->id : std::nullopt);
}

void ChannelsHostViewController::onPrevButtonPressed() {
    enableMediaReadyObserver = false;
    if (ChannelViewController* player = currentChannelViewController()) {
        player->goToPreviousPage();
        if (m_stage) {
            m_stage->refresh();
        }
    }
}

}  // namespace LumoraSDK
