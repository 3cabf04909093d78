// The host's media: sound, the one video node, and when pages may play at all.

#include <QGuiApplication>
#include <QQuickWindow>

#include "Platform/NotificationCenter.h"
#include "Services/Logger.h"
#include "ViewControllers/ChannelViewController.h"
#include "ViewControllers/ChannelsHostStage.h"
#include "ViewControllers/ChannelsHostViewController.h"
#include "Views/ChannelMediaCollectionDataSource.h"
#include "Views/ChannelsCollectionViewCell.h"

namespace LumoraSDK {

void ChannelsHostViewController::onOutputVolumeChanged() {
    AudioSession& session = AudioSession::sharedInstance();
    session.setCategory(AudioSession::Category::Playback, AudioSession::Mode::Default,
                        AudioSession::kMixWithOthers);
    session.setActive(true);
    isSoundMutedByViewer = false;
    if (videoNode) {
        videoNode->setMuted(!isSoundOn());
    }
    if (m_stage) {
        m_stage->refresh();
    }
}

bool ChannelsHostViewController::isSoundOn() const {
    return !isSoundMutedByViewer && AudioSession::sharedInstance().isOutputAudible();
}

VideoNode& ChannelsHostViewController::replaceVideoNode() {
    // The old node gives its player back to the prefetch cache, paused and without outputs.
    videoNode = std::make_unique<VideoNode>();
    videoNode->setMuted(!isSoundOn());
    return *videoNode;
}

void ChannelsHostViewController::seekVideoToStart() {
    if (videoNode) {
        videoNode->seekToStart();
    }
}

void ChannelsHostViewController::pauseVideo() {
    if (videoNode) {
        videoNode->pause();
    }
}

void ChannelsHostViewController::pauseAllMedia() {
    QPointer<ChannelsHostViewController> self(this);
    MainQueue::async([self] {
        if (self) {
            self->pauseEveryPage();
        }
    });
}

void ChannelsHostViewController::pauseEveryPage() {
    if (m_contentViewControllers) {
        for (ChannelViewController* player : *m_contentViewControllers) {
            player->pauseCurrentMedia();
        }
    }
}

void ChannelsHostViewController::stopAllMedia() {
    longHoldTimer.invalidate();
    pauseEveryPage();
    // The node hands its player back to the prefetch cache, paused and without outputs.
    videoNode.reset();
}

std::optional<QString> ChannelsHostViewController::mediaPlaybackBlockedReason() const {
    if (presentedViewController()) {
        return QStringLiteral("a screen is over the player");
    }
    if (m_isHeld) {
        return QStringLiteral("the player is held");
    }
    if (m_outOfSight) {
        return QStringLiteral("the player is out of sight");
    }
    // Paused with the play/pause control: only that control resumes.
    if (isPausedByViewer) {
        return QStringLiteral("the viewer paused");
    }
    return std::nullopt;
}

bool ChannelsHostViewController::isInViewersSight() const {
    const QQuickWindow* onWindow = window();
    if (!onWindow) {
        return true;
    }
    const QWindow::Visibility visibility = onWindow->visibility();
    return QGuiApplication::applicationState() == Qt::ApplicationActive && onWindow->isActive() &&
           visibility != QWindow::Hidden && visibility != QWindow::Minimized;
}

void ChannelsHostViewController::onSightChanged() {
    // Only changes count: a window that was never active (a display without a window manager)
    // still plays.
    const bool outOfSight = !isInViewersSight();
    if (outOfSight == m_outOfSight) {
        return;
    }
    m_outOfSight = outOfSight;
    log(description() + (outOfSight ? QStringLiteral(" - out of sight, pausing")
                                    : QStringLiteral(" - back in sight, resuming")));
    ChannelViewController* current = currentChannelViewController();
    if (outOfSight) {
        // At once rather than queued: a return within the same turn must find it paused.
        pauseEveryPage();
    } else if (current) {
        current->resumeCurrentMedia();
    }
}

void ChannelsHostViewController::onChannelMediaReady(const Notification& notification) {
    if (!enableMediaReadyObserver) {
        return;
    }
    const QVariant mediaIndex = notification.userInfo.value(QStringLiteral("mediaIndex"));
    const QVariant isReady = notification.userInfo.value(QStringLiteral("isReady"));
    if (mediaIndex.typeId() != QMetaType::Int || isReady.typeId() != QMetaType::Bool) {
        return;
    }
    ChannelViewController* player = currentChannelViewController();
    if (!player || !player->mediaCollectionViewDataSource ||
        player->currentIndex() != mediaIndex.toInt()) {
        return;
    }
    const bool ready = isReady.toBool();
    log(description() + QStringLiteral(" onChannelMediaReady - callback received media ") +
        QString::number(mediaIndex.toInt()) + QStringLiteral(", start playing? ") +
        (ready ? QStringLiteral("true") : QStringLiteral("false")));
    if (!ready) {
        pauseAllMedia();
        return;
    }
    QPointer<ChannelViewController> target(player);
    MainQueue::async([target] {
        if (target && target->mediaCollectionViewDataSource) {
            target->mediaCollectionViewDataSource->onScrollViewDidEndScrollingAnimation();
        }
    });
}

}  // namespace LumoraSDK
