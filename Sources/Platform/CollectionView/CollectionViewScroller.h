#pragma once

#include <QObject>
#include <QPointF>

#include "Scheduler.h"

class QQuickItem;

namespace LumoraSDK {

/// The scrolling side of a CollectionView's list: offsets in content terms, programmatic scrolls
/// (animated on the Scheduler clock, so tests drive them by hand) and the user's drags, each
/// announced by a signal that the view passes on to its delegate.
class CollectionViewScroller final : public QObject {
    Q_OBJECT

public:
    CollectionViewScroller(QQuickItem& list, QObject* parent);
    ~CollectionViewScroller() override;

    /// Along which axis the content moves.
    void setHorizontal(bool horizontal) { m_horizontal = horizontal; }
    /// Seconds an animated programmatic scroll takes.
    void setAnimationDuration(double seconds) { m_animationDuration = seconds; }

    /// The list's own content position (its contentX, contentY).
    QPointF listPosition() const;
    /// The position from the start of the content, section insets included.
    QPointF contentOffset() const;
    void setContentOffset(const QPointF& offset, bool animated);
    /// Brings `item` to the start, end or centre (a ListView position mode) of the viewport.
    void scrollToItem(int item, int positionMode, bool animated);
    /// Cuts a programmatic scroll short, unreported.
    void stop();
    /// Where the content stands and where a programmatic scroll goes from and to, as offsets
    /// from the start of the content.
    struct Placement {
        QPointF offset;
        QPointF animationFrom;
        QPointF animationTo;
    };
    Placement placement() const;
    /// Puts the content, and a programmatic scroll's way, back at `placement` stretched by
    /// `factor`, unreported: once the items have been resized, the same ones stand where they
    /// stood.
    void restorePlacement(const Placement& placement, qreal factor);
    bool isDragging() const;
    bool isDecelerating() const;

Q_SIGNALS:
    /// The content moved, other than by the jumps of scrollToItem's own measuring.
    void didScroll();
    void willBeginDragging();
    void didEndDragging(bool willDecelerate);
    /// The content came to rest after a drag that left it moving.
    void didEndDecelerating();
    /// An animated programmatic scroll reached its target.
    void didEndScrollingAnimation();

private Q_SLOTS:
    void onContentMoved();
    void onDragStarted();
    void onDragEnded();
    void onFlickStarted();
    void onMovementEnded();

private:
    void setListPosition(const QPointF& position);
    QPointF listPositionForOffset(const QPointF& offset) const;
    void animate(const QPointF& from, const QPointF& to);
    void reportDragEnd(bool willDecelerate);

    QQuickItem& m_list;
    Timer m_animation;
    QPointF m_animationFrom;
    QPointF m_animationTo;
    bool m_horizontal = true;
    double m_animationDuration = 0;
    bool m_quiet = false;
    bool m_dragEnding = false;
    bool m_userDecelerating = false;
};

}  // namespace LumoraSDK
