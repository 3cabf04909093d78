#include "CollectionView/CollectionViewScroller.h"

#include <QPointer>
#include <QQuickItem>
#include <QScopedValueRollback>
#include <utility>

#include "ViewAnimation.h"

namespace LumoraSDK {

CollectionViewScroller::CollectionViewScroller(QQuickItem& list, QObject* parent)
    : QObject(parent), m_list(list) {
    connect(&m_list, SIGNAL(contentXChanged()), this, SLOT(onContentMoved()));
    connect(&m_list, SIGNAL(contentYChanged()), this, SLOT(onContentMoved()));
    connect(&m_list, SIGNAL(dragStarted()), this, SLOT(onDragStarted()));
    connect(&m_list, SIGNAL(dragEnded()), this, SLOT(onDragEnded()));
    connect(&m_list, SIGNAL(flickStarted()), this, SLOT(onFlickStarted()));
    connect(&m_list, SIGNAL(movementEnded()), this, SLOT(onMovementEnded()));
}

CollectionViewScroller::~CollectionViewScroller() {
    stop();
}

QPointF CollectionViewScroller::listPosition() const {
    return QPointF(m_list.property("contentX").toReal(), m_list.property("contentY").toReal());
}

void CollectionViewScroller::setListPosition(const QPointF& position) {
    if (m_horizontal) {
        m_list.setProperty("contentX", position.x());
    } else {
        m_list.setProperty("contentY", position.y());
    }
}

QPointF CollectionViewScroller::listPositionForOffset(const QPointF& offset) const {
    // The list counts from its origin, which moves when items come before the visible ones, and
    // puts its margins (the section insets) outside that.
    return offset +
           QPointF(m_list.property("originX").toReal() - m_list.property("leftMargin").toReal(),
                   m_list.property("originY").toReal() - m_list.property("topMargin").toReal());
}

QPointF CollectionViewScroller::contentOffset() const {
    return listPosition() - listPositionForOffset(QPointF());
}

void CollectionViewScroller::setContentOffset(const QPointF& offset, bool animated) {
    stop();
    const QPointF target = listPositionForOffset(offset);
    if (animated) {
        animate(listPosition(), target);
    } else {
        setListPosition(target);
    }
}

void CollectionViewScroller::scrollToItem(int item, int positionMode, bool animated) {
    stop();
    const QPointF start = listPosition();
    QPointF target;
    {
        // The list finds the target itself; the content jumps there and, when animating, back.
        QScopedValueRollback<bool> quiet(m_quiet, animated);
        QMetaObject::invokeMethod(&m_list, "positionViewAtIndex", Q_ARG(int, item),
                                  Q_ARG(int, positionMode));
        target = listPosition();
        if (animated) {
            setListPosition(start);
        }
    }
    if (animated) {
        animate(start, target);
    }
}

void CollectionViewScroller::animate(const QPointF& from, const QPointF& to) {
    m_animationFrom = from;
    m_animationTo = to;
    m_animation = ViewAnimation::animate(
        m_animationDuration,
        [this](double progress) {
            setListPosition(m_animationFrom + (m_animationTo - m_animationFrom) * progress);
        },
        [self = QPointer<CollectionViewScroller>(this)](bool finished) {
            if (self && finished) {
                emit self->didEndScrollingAnimation();
            }
        });
}

void CollectionViewScroller::stop() {
    m_animation.invalidate();
}

CollectionViewScroller::Placement CollectionViewScroller::placement() const {
    const QPointF origin = listPositionForOffset(QPointF());
    return {listPosition() - origin, m_animationFrom - origin, m_animationTo - origin};
}

void CollectionViewScroller::restorePlacement(const Placement& placement, qreal factor) {
    const QPointF origin = listPositionForOffset(QPointF());
    m_animationFrom = origin + placement.animationFrom * factor;
    m_animationTo = origin + placement.animationTo * factor;
    QScopedValueRollback<bool> quiet(m_quiet, true);
    setListPosition(origin + placement.offset * factor);
}

void CollectionViewScroller::onContentMoved() {
    if (!m_quiet) {
        emit didScroll();
    }
}

void CollectionViewScroller::onDragStarted() {
    stop();
    m_userDecelerating = false;
    emit willBeginDragging();
}

void CollectionViewScroller::onDragEnded() {
    // Whether the content keeps moving is known only once the release has been handled: a flick
    // starts or the movement ends within it, and a snap or a rebound shows after it.
    m_dragEnding = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_dragEnding) {
                reportDragEnd(m_list.property("moving").toBool());
            }
        },
        Qt::QueuedConnection);
}

void CollectionViewScroller::onFlickStarted() {
    if (m_dragEnding) {
        reportDragEnd(true);
    }
}

void CollectionViewScroller::onMovementEnded() {
    if (m_dragEnding) {
        reportDragEnd(false);
        return;
    }
    if (std::exchange(m_userDecelerating, false)) {
        emit didEndDecelerating();
    }
}

void CollectionViewScroller::reportDragEnd(bool willDecelerate) {
    m_dragEnding = false;
    m_userDecelerating = willDecelerate;
    emit didEndDragging(willDecelerate);
}

bool CollectionViewScroller::isDragging() const {
    return m_list.property("dragging").toBool();
}

bool CollectionViewScroller::isDecelerating() const {
    return m_list.property("moving").toBool() && !isDragging();
}

}  // namespace LumoraSDK
