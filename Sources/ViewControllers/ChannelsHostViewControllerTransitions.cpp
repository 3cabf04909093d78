// The host's transitions: growing out of the row cell, shrinking back into it, and the cube turn
// and rest handling of the channels pager.
#include <QColor>
#include <QQuickItem>
#include <algorithm>

#include "Enums/ActivityType.h"
#include "Extensions/ViewExtensions.h"
#include "Platform/CollectionView/CollectionView.h"
#include "Platform/ViewAnimation.h"
#include "Services/AnalyticsService.h"
#include "Services/DatabaseService.h"
#include "Services/Logger.h"
#include "ViewControllers/ChannelViewController.h"
#include "ViewControllers/ChannelsHostViewController.h"
#include "Views/ChannelsCollectionViewCell.h"

namespace LumoraSDK {

namespace {

QString describePoint(QPointF point) {
    return QStringLiteral("(%1, %2)").arg(point.x()).arg(point.y());
}

qreal lerp(qreal from, qreal to, double t) {
    return from + (to - from) * t;
}
}  // namespace

// ---------------------------------------------------------------------------------------------
// Grow and shrink

QPointF ChannelsHostViewController::viewCenter() const {
    // The container grows into, and shrinks from, the card it plays in.
    const QQuickItem* card = m_container->parentItem();
    return QPointF(card->width() / 2, card->height() / 2);
}

void ChannelsHostViewController::setContainerCenter(QPointF center) {
    m_container->setPosition(center - QPointF(m_container->width() / 2, m_container->height() / 2));
}

std::optional<QPointF> ChannelsHostViewController::cellCenterFor(std::optional<int> index) const {
    if (!index || !rowInstance) {
        return std::nullopt;
    }
    const QList<std::optional<QPointF>>& centers = std::as_const(*rowInstance).cellCenters();
    if (*index < 0 || *index >= centers.size() || !centers[*index]) {
        return std::nullopt;
    }
    // The row keeps window coordinates; the container moves within its card.
    return m_container->parentItem()->mapFromScene(*centers[*index]);
}

void ChannelsHostViewController::openFromCellCenter(std::function<void()> onComplete) {
    if (m_currentVisibleChannelIndex) {
        m_container->setScale(kClosedScale);
        setBackgroundOpacity(0);
        if (const std::optional<QPointF> center = cellCenterFor(m_currentVisibleChannelIndex)) {
            log(description() + QStringLiteral(" openFromCellCenter - to ") +
                describePoint(*center));
            setContainerCenter(*center);
        }
    }
    animateOpenFromPosition(std::move(onComplete));
}

void ChannelsHostViewController::animateOpenFromPosition(std::function<void()> onComplete) {
    animateContainer(viewCenter(), 1.0, 1.0, [onComplete = std::move(onComplete)] {
        if (onComplete) {
            onComplete();
        }
    });
}

void ChannelsHostViewController::dismissToCellCenter() {
    const std::optional<QPointF> center = cellCenterFor(m_currentVisibleChannelIndex);
    if (m_currentVisibleChannelIndex && center) {
        log(description() + QStringLiteral(" dismissToCellCenter - to ") + describePoint(*center));
        QPointer<ChannelsHostViewController> self(this);
        MainQueue::asyncAfter(kShortDelay, [self, point = *center] {
            if (self) {
                self->animateDismissToPosition(point);
            }
        });
        return;
    }
    log(description() +
        QStringLiteral(
            " - dismissToCellCenter - could not find valid cell center point for index ") +
        (m_currentVisibleChannelIndex ? QString::number(*m_currentVisibleChannelIndex)
                                      : QStringLiteral("nil")));
    animateDismissToPosition(viewCenter());
}

void ChannelsHostViewController::animateDismissToPosition(QPointF point) {
    QPointer<ChannelsHostViewController> self(this);
    animateContainer(point, kClosedScale, 0.0, [self] {
        if (!self) {
            return;
        }
        QPointer<QQuickItem> container = self->m_container;
        self->dismiss(false, [container] {
            if (container) {
                container->setScale(1.0);
            }
        });
    });
}

void ChannelsHostViewController::animateContainer(QPointF center, qreal scale, qreal background,
                                                  std::function<void()> onComplete) {
    m_animation.invalidate();
    QPointer<ChannelsHostViewController> self(this);
    const QPointF fromCenter =
        m_container->position() + QPointF(m_container->width() / 2, m_container->height() / 2);
    const qreal fromScale = m_container->scale();
    const qreal fromBackground = m_backgroundOpacity;
    m_animation = ViewAnimation::animate(
        kOpenCloseDuration,
        [self, fromCenter, center, fromScale, scale, fromBackground, background](double t) {
            if (!self) {
                return;
            }
            self->setBackgroundOpacity(lerp(fromBackground, background, t));
            self->setContainerCenter(
                QPointF(lerp(fromCenter.x(), center.x(), t), lerp(fromCenter.y(), center.y(), t)));
            self->m_container->setScale(lerp(fromScale, scale, t));
        },
        [onComplete = std::move(onComplete)](bool finished) {
            if (finished && onComplete) {
                onComplete();
            }
        });
}

void ChannelsHostViewController::bounceCollectionViewToTop(std::function<void()> completion) {
    m_animation.invalidate();
    QPointer<ChannelsHostViewController> self(this);
    const qreal fromScale = m_container->scale();
    const qreal fromTop = channelsContainerTopOffset;
    m_animation = ViewAnimation::animate(
        kOpenCloseDuration,
        [self, fromScale, fromTop](double t) {
            if (self) {
                self->m_container->setScale(lerp(fromScale, 1.0, t));
                self->channelsContainerTopOffset = lerp(fromTop, 0, t);
                self->m_container->setY(self->channelsContainerTopOffset);
            }
        },
        [completion = std::move(completion)](bool finished) {
            if (finished && completion) {
                completion();
            }
        });
}

void ChannelsHostViewController::setBackgroundOpacity(qreal alpha) {
    m_backgroundOpacity = alpha;
    QColor background = view()->property("color").value<QColor>();
    background.setAlphaF(float(qBound(0.0, alpha, 1.0)));
    view()->setProperty("color", background);
    if (ChannelViewController* player = currentChannelViewController()) {
        // The header's gradient fades faster than the background and is gone below 0.12.
        qreal gradient = (alpha == 1 ? 1 : kTranslucentGradientFactor) * alpha;
        if (gradient < kGradientCutoff) {
            gradient = 0;
        }
        if (player->isViewLoaded() && player->topGradient()) {
            player->topGradient()->setOpacity(gradient);
        }
    }
}

// ---------------------------------------------------------------------------------------------
// The pager

void ChannelsHostViewController::applyCubeTransition(qreal progress,
                                                     NavigationDirection direction) {
    const QList<ChannelsCollectionViewCell*> cells = getVisibleChannelCells(true);
    if (cells.isEmpty()) {
        return;
    }
    const qsizetype count = cells.size();
    QQuickItem* first = cells.first()->contentView();
    QQuickItem* last = cells.last()->contentView();
    // Pivot 1 hinges a face on its right edge, 0 on its left: the two channels turn like the
    // sides of a cube.
    if (direction == NavigationDirection::forward) {
        applyPerspectiveTransform(first, -progress, 1.0);
        if (count >= 2) {
            applyPerspectiveTransform(last, progress == 0 ? 0 : 1 - progress, 0.0);
        }
        return;
    }
    if (count >= 2) {
        applyPerspectiveTransform(last, progress == 0 ? 0 : 1 - progress, 0.0);
        applyPerspectiveTransform(first, -progress, 1.0);
    } else {
        applyPerspectiveTransform(last, progress > 0 ? 0.0 : -0.0, 0.0);
    }
}

void ChannelsHostViewController::setupChannelCollectionInteractions() {
    ChannelsCollectionDataSource& pager = *channelsCollectionDataSource;
    QPointer<ChannelsHostViewController> self(this);
    pager.onScrollViewDidEndScrollingAnimation = [self](NavigationDirection direction) {
        if (self) {
            self->onPagerCameToRest(direction);
        }
    };
    pager.onScrollViewDidEndDecelerating = [self](NavigationDirection direction) {
        if (!self) {
            return;
        }
        if (direction == NavigationDirection::forward) {
            self->trackSkippedChannel();
        }
        self->onPagerCameToRest(direction);
    };
    pager.onDragLimitExceeded = [self](NavigationDirection direction) {
        if (!self || !self->m_currentVisibleChannelIndex || !self->channelsCollectionDataSource) {
            return;
        }
        // Stays installed: a later drag ending on the same end channel closes the host again.
        self->channelsCollectionDataSource->onScrollViewDidEndDraggingPastLimit = [self,
                                                                                   direction] {
            if (!self || !self->m_currentVisibleChannelIndex) {
                return;
            }
            const int index = *self->m_currentVisibleChannelIndex;
            const bool atEnd = direction == NavigationDirection::forward
                                   ? index + 1 >= self->contentViewControllers().size()
                                   : index - 1 < 0;
            if (atEnd) {
                self->dismissToCellCenter();
            }
        };
    };
    pager.onScrollViewWillBeginDragging = [self] {
        if (self) {
            self->channelCollectionViewDidScroll = true;
            self->pauseAllMedia();
        }
    };
}

void ChannelsHostViewController::trackSkippedChannel() {
    ChannelViewController* leaving = currentChannelViewController();
    if (!leaving || !leaving->channel || !leaving->channel->id) {
        return;
    }
    // Only a channel with a stored flag that says unread; one never stored records nothing.
    const QVariantMap read = DatabaseService::sharedInstance().channelIsReadMapping();
    const auto flag = read.constFind(*leaving->channel->id);
    if (flag != read.constEnd() && !flag->toBool()) {
        const std::optional<Page> page = leaving->currentPage();
        AnalyticsService::sharedInstance().trackActivity(
            ActivityType::SkippedChannel, leaving->channel->id, page ? page->id : std::nullopt);
    }
}

void ChannelsHostViewController::onPagerCameToRest(NavigationDirection direction) {
    channelCollectionViewDidScroll = false;
    QPointer<ChannelsHostViewController> self(this);
    MainQueue::async([self, direction] {
        if (!self || self->m_isClosed) {
            return;
        }
        const QList<ChannelsCollectionViewCell*> cells = self->getVisibleChannelCells(true);
        std::optional<int> index;
        if (!cells.isEmpty()) {
            index = (direction == NavigationDirection::reverse ? cells.first() : cells.last())
                        ->channelIndex;
        }
        self->setCurrentVisibleChannelIndex(index);
        self->onChannelTransitionComplete();
    });
}

}  // namespace LumoraSDK
