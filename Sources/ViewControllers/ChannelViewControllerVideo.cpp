// Video pages of the page player: the host's shared video node is loaded for the current page
// (from the prefetch cache when it can), shown in the page's video area and started; its time
// updates move the page's progress segment, and reaching the video's own length ends the page.
#include <QQmlEngine>
#include <QQuickItem>

#include "Lumora.h"
#include "Platform/CollectionView/CollectionView.h"
#include "Platform/Layers/ShapeLayer.h"
#include "Platform/VideoNode.h"
#include "Platform/VideoPlayerItem.h"
#include "Services/Logger.h"
#include "Services/VideoPrefetchService.h"
#include "ViewControllers/ChannelViewController.h"
#include "ViewControllers/ChannelsHostViewController.h"
#include "Views/ChannelMediaCollectionDataSource.h"
#include "Views/ChannelMediaCollectionViewCell.h"
#include "Views/ChannelProgressCollectionDataSource.h"

namespace LumoraSDK {

namespace {

/// Corner radius of the video's backdrop; screens with square corners need none.
qreal videoCornerRadius() {
    return Lumora::isScreenStandardPortrait() ? 0 : 12;
}
}  // namespace

QString ChannelViewController::getVideoNodeUrl() const {
    return hostController && hostController->videoNode ? hostController->videoNode->assetUrl()
                                                       : QString();
}

void ChannelViewController::prepareCurrentVideoSet(std::function<void()> onComplete) {
    const std::optional<Page> page = currentPage();
    if (!page || !page->url) {
        log(description() + QStringLiteral(" prepareCurrentVideoSet - page has no video url"));
        return;
    }
    const int row = currentIndex();
    m_videoContainerView->setVisible(false);
    QPointer<ChannelViewController> self(this);
    auto start = [self, row, onComplete = std::move(onComplete)] {
        if (!self || self->currentIndex() != row) {
            return;
        }
        self->m_videoContainerView->setVisible(true);
        self->notifyAndStartVideo(row);
        if (onComplete) {
            onComplete();
        }
    };
    if (*page->url == getVideoNodeUrl()) {
        start();
        return;
    }
    loadVideo(*page->url, std::move(start));
}

void ChannelViewController::loadVideo(const QString& videoUrl, std::function<void()> onComplete) {
    QPointer<ChannelViewController> self(this);
    VideoPrefetchService::getCachedVideoItem(
        videoUrl, true,
        [self, videoUrl,
         onComplete = std::move(onComplete)](std::shared_ptr<VideoPlayerItem> item) {
            if (!self || !self->hostController) {
                return;
            }
            // The viewer may have moved on while the video loaded; the node then keeps what
            // is on screen now.
            const std::optional<Page> current = self->currentPage();
            if (self->hostController->currentChannelViewController() != self || !current ||
                current->url != videoUrl) {
                log(description() + QStringLiteral(" loadVideo - ") + videoUrl +
                    QStringLiteral(" no longer shown, not loaded"));
                return;
            }
            VideoNode& node = self->hostController->replaceVideoNode();
            node.setAsset(std::move(item));
            node.setDelegate(self.data());
            log(description() + QStringLiteral(" loadVideo - ") + videoUrl +
                QStringLiteral(" video is ready"));
            self->setupVideoContainer(onComplete);
        });
}

void ChannelViewController::setupVideoContainer(std::function<void()> onComplete) {
    QPointer<ChannelViewController> self(this);
    MainQueue::async([self, onComplete = std::move(onComplete)] {
        if (!self) {
            return;
        }
        QQuickItem* container = self->m_videoContainerView;
        VideoNode* node = self->hostController ? self->hostController->videoNode.get() : nullptr;
        QQmlEngine* engine = qmlEngine(container);
        if (node && engine) {
            if (!self->m_videoBackground) {
                auto* background = new ShapeLayer;
                background->setFillColor(Qt::black);
                background->insertInto(container, 0);
                self->m_videoBackground = background;
            }
            if (QQuickItem* view = node->view(*engine)) {
                view->setParentItem(container);
                // Above the backdrop, below anything else the container holds.
                view->stackAfter(self->m_videoBackground);
            }
            self->layoutVideoContainer();
        }
        if (onComplete) {
            onComplete();
        }
    });
}

void ChannelViewController::layoutVideoContainer() {
    QQuickItem* container = m_videoContainerView;
    auto* backdrop = qobject_cast<ShapeLayer*>(m_videoBackground.data());
    if (!container || !backdrop) {
        return;
    }
    backdrop->setSize(container->size());
    backdrop->setPath(
        roundedRectPath(QRectF(QPointF(), container->size()), AllCorners, videoCornerRadius()));
    VideoNode* node = hostController ? hostController->videoNode.get() : nullptr;
    if (QQuickItem* view = node ? node->existingView() : nullptr;
        view && view->parentItem() == container) {
        view->setSize(container->size());
    }
}

void ChannelViewController::notifyAndStartVideo(int idx) {
    log(description() + QStringLiteral(" notifyAndStartVideo - at ") + QString::number(idx) +
        QStringLiteral(" loaded in container: CURRENT ") + getVideoNodeUrl());
    VideoNode* node = hostController ? hostController->videoNode.get() : nullptr;
    const std::optional<Page> page = currentPage();
    if (node && node->currentItemDuration() && page && idx == currentIndex()) {
        log(description() + QStringLiteral(" notifyAndStartVideo - video length: ") +
            QString::number(*node->currentItemDuration()) + QStringLiteral("s, page duration: ") +
            QString::number(page->duration.value_or(0)));
    }
    if (node) {
        // A page started again (after the previous page, or a restart) hears its node again.
        node->setDelegate(this);
    }
    if (ChannelMediaCollectionViewCell* cell = getVisibleMediaCell(idx)) {
        cell->setMediaReady(true);
    }
    shouldUpdateVideoProgress = true;
    startVideo();
}

void ChannelViewController::startVideo() {
    if (!hostController || !hostController->videoNode) {
        return;
    }
    if (const std::optional<QString> reason = playbackBlockedReason()) {
        log(description() + QStringLiteral(" startVideo - not now, ") + *reason);
        return;
    }
    VideoNode& node = *hostController->videoNode;
    node.setMuted(!hostController->isSoundOn());
    node.playImmediately();
}

void ChannelViewController::videoNodeDidPlayToTimeInterval(VideoNode& node, double seconds) {
    m_videoContainerView->setOpacity(1.0);
    m_mediaCollectionView->setVisible(true);
    const QString prefix = getVideoNodeUrl() + QStringLiteral(" - didPlayToTimeInterval ");
    if (isSharing) {
        log(prefix + QStringLiteral(" - pause because share sheet is up"));
        pauseCurrentMedia();
        return;
    }
    if (hostController && hostController->isPresentingInstructions) {
        log(prefix + QStringLiteral(" - pause because instructions are up"));
        pauseCurrentMedia();
        return;
    }
    if (const std::optional<QString> reason = playbackBlockedReason()) {
        log(prefix + QStringLiteral(" - pause because ") + *reason);
        pauseCurrentMedia();
        return;
    }
    const std::optional<double> duration = node.currentItemDuration();
    if (!node.player() || !duration) {
        log(prefix + QStringLiteral(" - currentItem has no duration"));
        pauseCurrentMedia();
        return;
    }
    const std::optional<Page> page = currentPage();
    const bool isCurrentPageVideo = page && page->url == node.assetUrl();
    if (seconds < *duration) {
        if (!mediaCollectionViewDataSource || !shouldUpdateVideoProgress || !isCurrentPageVideo) {
            return;
        }
        const int row = currentIndex();
        const qreal fraction = seconds / *duration;
        QPointer<ChannelViewController> self(this);
        MainQueue::async([self, row, fraction] {
            if (self && self->progressCollectionViewDataSource && self->m_progressCollectionView) {
                self->progressCollectionViewDataSource->updateProgress(
                    *self->m_progressCollectionView, row, fraction);
            }
        });
        return;
    }
    if (isCurrentPageVideo) {
        log(prefix + QStringLiteral(" - videoDidPlay toEnd for page duration"));
        node.clearDelegate();
        if (hostController) {
            hostController->onNextButtonPressed(false);
        }
    }
}

void ChannelViewController::videoNodeDidStallAtTimeInterval(VideoNode&, double seconds) {
    log(QStringLiteral("videoNode ") + getVideoNodeUrl() +
        QStringLiteral(" - didStallAtTimeInterval ") + QString::number(seconds));
    m_videoContainerView->setOpacity(0.8);
    m_mediaCollectionView->setVisible(false);
}

}  // namespace LumoraSDK
