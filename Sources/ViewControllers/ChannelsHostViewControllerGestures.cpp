// The host's gestures: press and hold to pause, short presses for the next and previous page,
// dragging down to close, dragging up to open the page's link, the enlarged hit areas over the
// page player's controls, and the keys that stand in for them on a desktop.
#include <QGuiApplication>
#include <QKeyEvent>
#include <QQuickItem>
#include <QStyleHints>
#include <algorithm>

#include "Enums/ActivityType.h"
#include "Lumora.h"
#include "Platform/CollectionView/CollectionView.h"
#include "Services/AnalyticsService.h"
#include "Services/Logger.h"
#include "ViewControllers/ChannelViewController.h"
#include "ViewControllers/ChannelsHostStage.h"
#include "ViewControllers/ChannelsHostViewController.h"
#include "ViewControllers/WebViewController.h"

namespace LumoraSDK {

namespace {

bool containsScenePoint(QQuickItem* item, QPointF scenePosition) {
    return item && item->isVisible() && item->isEnabled() && item->property("enabled").toBool() &&
           item->contains(item->mapFromScene(scenePosition));
}
}  // namespace

void ChannelsHostViewController::setupGestures() {
    // The close hit area sits lower where the status bar takes the top of the screen.
    if (m_closeButtonHitArea) {
        m_closeButtonHitArea->setY(Lumora::isScreenStandardPortrait() ? 8 : 28);
    }
    QQuickItem* root = view();
    connect(root, SIGNAL(touchBegan(QPointF)), this, SLOT(onTouchBegan(QPointF)));
    connect(root, SIGNAL(touchMoved(QPointF)), this, SLOT(onTouchMoved(QPointF)));
    connect(root, SIGNAL(touchEnded(bool)), this, SLOT(onTouchEnded(bool)));
    connect(root, SIGNAL(closeHitAreaPressed()), this, SLOT(onCloseButtonHitAreaPressed()));
    connect(root, SIGNAL(learnMoreHitAreaPressed()), this, SLOT(onLearnMoreButtonHitAreaPressed()));
    connect(root, SIGNAL(shareHitAreaPressed()), this, SLOT(onShareButtonHitAreaPressed()));
    root->installEventFilter(this);
}

bool ChannelsHostViewController::eventFilter(QObject* watched, QEvent* event) {
    if (watched == view() &&
        (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease)) {
        auto* key = static_cast<QKeyEvent*>(event);
        const bool used = event->type() == QEvent::KeyPress
                              ? onKeyPressed(key->key(), key->isAutoRepeat())
                              : onKeyReleased(key->key(), key->isAutoRepeat());
        if (used) {
            event->accept();
            return true;
        }
    }
    return PresentableViewController::eventFilter(watched, event);
}

// ---------------------------------------------------------------------------------------------
// Touches from the scene

void ChannelsHostViewController::onTouchBegan(QPointF scenePosition) {
    m_touchPanning = false;
    m_touchTranslation = 0;
    m_touchHoldTarget.reset();
    // The enlarged hit areas and the pointer controls on the card are buttons of their own.
    if (containsScenePoint(m_closeButtonHitArea, scenePosition) ||
        containsScenePoint(m_shareButtonHitArea, scenePosition) ||
        containsScenePoint(m_learnMoreButtonHitArea, scenePosition) ||
        m_stage->isOnCardControl(scenePosition)) {
        return;
    }
    m_touchHoldTarget = containsScenePoint(m_previousButton, scenePosition) ? HoldTarget::Previous
                                                                            : HoldTarget::Next;
    onButtonHold(GestureState::Began, *m_touchHoldTarget);
}

void ChannelsHostViewController::onTouchMoved(QPointF translation) {
    m_touchTranslation = translation.y();
    if (!m_touchPanning) {
        if (translation.manhattanLength() < QGuiApplication::styleHints()->startDragDistance()) {
            return;
        }
        m_touchPanning = true;
        onPan(GestureState::Began, m_touchTranslation);
    }
    onPan(GestureState::Changed, m_touchTranslation);
}

void ChannelsHostViewController::onTouchEnded(bool cancelled) {
    const GestureState state = cancelled ? GestureState::Cancelled : GestureState::Ended;
    if (std::exchange(m_touchPanning, false)) {
        onPan(state, m_touchTranslation);
    }
    if (const std::optional<HoldTarget> target = std::exchange(m_touchHoldTarget, std::nullopt)) {
        onButtonHold(state, *target);
    }
}

bool ChannelsHostViewController::onKeyPressed(int key, bool isAutoRepeat) {
    switch (key) {
        case Qt::Key_Right:
        case Qt::Key_Left: {
            const HoldTarget target =
                key == Qt::Key_Right ? HoldTarget::Next : HoldTarget::Previous;
            onButtonHold(GestureState::Began, target);
            onButtonHold(GestureState::Ended, target);
            return true;
        }
        case Qt::Key_Space:
            if (!isAutoRepeat) {
                onButtonHold(GestureState::Began, HoldTarget::Next);
            }
            return true;
        case Qt::Key_Escape:
            onCloseButtonHitAreaPressed();
            return true;
        case Qt::Key_VolumeUp:
        case Qt::Key_VolumeDown:
        case Qt::Key_VolumeMute:
            onOutputVolumeChanged();
            return true;
        default:
            return false;
    }
}

bool ChannelsHostViewController::onKeyReleased(int key, bool isAutoRepeat) {
    if (key != Qt::Key_Space) {
        return false;
    }
    if (!isAutoRepeat) {
        onButtonHold(GestureState::Ended, HoldTarget::Next);
    }
    return true;
}

// ---------------------------------------------------------------------------------------------
// Hold and click

void ChannelsHostViewController::onButtonHold(GestureState state, HoldTarget target) {
    ChannelViewController* player = currentChannelViewController();
    if (!player) {
        return;
    }
    const bool isPrevious = target == HoldTarget::Previous;
    // While the press lasts nothing of the page starts, not even media that arrives meanwhile.
    m_isHeld = state == GestureState::Began;
    if (state == GestureState::Began) {
        if (isPrevious && m_previousButtonGradient) {
            m_previousButtonGradient->setVisible(true);
        }
        longHoldTime = 0;
        longHoldTimer.invalidate();
        QPointer<ChannelsHostViewController> self(this);
        longHoldTimer = Scheduler::current().repeating(kHoldTimerInterval, [self] {
            if (self) {
                self->buttonHoldTimerUpdate();
            }
        });
        longHoldTimer.fire();
        pauseAllMedia();
        player->cancelInteractiveLayoutRequests();
        player->animateDuration = kHoldAnimateDuration;
        // A hold longer than this hides the header and controls.
        player->requestHideInteractiveLayout(kClickThreshold);
        return;
    }
    if (state != GestureState::Ended) {
        return;
    }
    if (isPrevious && m_previousButtonGradient) {
        m_previousButtonGradient->setVisible(false);
    }
    const QString prefix = description() + QStringLiteral(" onButtonHold - ") +
                           QStringLiteral("UIGestureRecognizer.State.ended -> ");
    // The press paused the page on the main queue; a release in the same turn (an arrow key, a
    // fast click) must resume after that pause, not before it.
    const auto resumeAfterPause = [target = QPointer<ChannelViewController>(player)] {
        MainQueue::async([target] {
            if (target) {
                target->resumeCurrentMedia();
            }
        });
    };
    if (longHoldTime < player->animateDuration + kClickThreshold) {
        player->cancelInteractiveLayoutRequests();
        player->animateDuration = 0;
        player->requestShowInteractiveLayout(kClickThreshold);
        const std::optional<Page> page = player->currentPage();
        if (!isPrevious && page && page->isSkippable == false) {
            log(prefix + QStringLiteral("BLOCKED (reason: page not skippable)"));
            resumeAfterPause();
        } else if (channelCollectionViewDidScroll || hasPannedVertically || hasSwipedUp) {
            const QString reason = hasSwipedUp ? QStringLiteral("swiped up")
                                   : hasPannedVertically
                                       ? QStringLiteral("panned vertically")
                                       : QStringLiteral("channel collection view scrolled");
            log(prefix + QStringLiteral("BLOCKED (reason: ") + reason + QStringLiteral(")"));
            // When the pager moved, the arriving channel starts its own media.
            if (!channelCollectionViewDidScroll) {
                resumeAfterPause();
            }
        } else {
            QPointer<ChannelsHostViewController> self(this);
            MainQueue::async([self, isPrevious, prefix] {
                if (!self) {
                    return;
                }
                log(prefix + QStringLiteral("PASSED as click"));
                if (isPrevious) {
                    self->onPrevButtonPressed();
                } else {
                    self->onNextButtonPressed(true);
                }
            });
        }
    } else {
        log(prefix + QStringLiteral("PASSED as hold release"));
        resumeAfterPause();
        player->cancelInteractiveLayoutRequests();
        player->requestShowInteractiveLayout(kClickThreshold);
    }
    channelCollectionViewDidScroll = false;
    hasPannedVertically = false;
    hasSwipedUp = false;
    longHoldTimer.invalidate();
}

// ---------------------------------------------------------------------------------------------
// Pan and swipe up

void ChannelsHostViewController::onPan(GestureState state, qreal translation) {
    const qreal height = view()->height();
    const qreal progress = height > 0 ? 1 - translation / height : 1;
    const qreal scale = std::max(std::min(progress + kPanScaleSlack, 1.0), kPanMinimumScale);
    m_container->setScale(scale);
    if (state == GestureState::Began) {
        return;
    }
    const qreal factor = std::max(progress - kPanOffsetDamping, 0.0);
    if (state == GestureState::Changed) {
        if (!firstPanGestureTranslation) {
            firstPanGestureTranslation = translation;
        }
        hasPannedVertically = translation != 0;
        // The pager follows the finger down, damped, and never rises above its rest position.
        channelsContainerTopOffset = std::max(translation * factor, 0.0);
        m_container->setY(channelsContainerTopOffset);
        setBackgroundOpacity(progress);
        if (translation < kSwipeUpDistance && !hasSwipedUp && *firstPanGestureTranslation < 0) {
            hasSwipedUp = true;
            onSwipeUp();
        }
        return;
    }
    if (state == GestureState::Ended) {
        firstPanGestureTranslation.reset();
        if (factor >= kSpringBackFactor) {
            setBackgroundOpacity(1);
            bounceCollectionViewToTop();
        } else {
            dismissToCellCenter();
        }
        return;
    }
    log(QStringLiteral("panGestureAction - state ") + QString::number(int(state)));
}

void ChannelsHostViewController::onSwipeUp() {
    ChannelViewController* player = currentChannelViewController();
    const std::optional<Page> page = player ? player->currentPage() : std::nullopt;
    const std::optional<QString> link = page ? page->swipeUpUrl : std::nullopt;
    log(description() + QStringLiteral(" swipeUpGestureAction - url ") + link.value_or(QString()));
    pauseAllMedia();
    QPointer<ChannelViewController> target(player);
    const QUrl url(link.value_or(QString()));
    if (!link || link->isEmpty() || !WebViewController::canOpen(url)) {
        if (link && !link->isEmpty()) {
            logger().log(description() + QStringLiteral(" swipeUpGestureAction - refusing ") +
                             *link + QStringLiteral(": only http and https links open"),
                         LogLevel::error);
        }
        MainQueue::async([target] {
            if (target) {
                target->resumeCurrentMedia();
            }
        });
        return;
    }
    AnalyticsService::sharedInstance().trackActivity(
        ActivityType::SwipedUp, player->channel ? player->channel->id : std::nullopt, page->id);
    auto* viewer = instantiateFromStoryboard<WebViewController>(*qmlEngine(view()));
    viewer->branding =
        rowInstance ? std::optional<Branding>(rowInstance->branding()) : std::nullopt;
    viewer->url = url;
    QPointer<ChannelsHostViewController> self(this);
    viewer->onDismissed = [self, target] {
        if (self) {
            self->hasSwipedUp = false;
        }
        if (target) {
            target->cancelInteractiveLayoutRequests();
            target->animateDuration = 0;
            target->requestShowInteractiveLayout(kClickThreshold);
            target->resumeCurrentMedia();
        }
    };
    getGlobalContext(view()->window())->present(viewer, true);
}

// ---------------------------------------------------------------------------------------------
// Hit areas

void ChannelsHostViewController::onLearnMoreButtonHitAreaPressed() {
    if (m_currentVisibleChannelIndex) {
        onSwipeUp();
    }
}

void ChannelsHostViewController::onCloseButtonHitAreaPressed() {
    if (ChannelViewController* player = currentChannelViewController()) {
        player->dismiss(true);
    }
}

void ChannelsHostViewController::onShareButtonHitAreaPressed() {
    if (ChannelViewController* player = currentChannelViewController()) {
        player->onShareButtonPressed();
    }
}

}  // namespace LumoraSDK
