#pragma once

#include <QObject>
#include <QPointF>

#include "Scheduler.h"

class QQuickItem;

namespace LumoraSDK {

class CollectionView;

/// The scrolling side of a CollectionView: offsets in content terms, programmatic scrolls
/// (animated on the Scheduler clock, so tests drive them by hand) and the user's drags, all
/// reported to the view's delegate.
class CollectionViewScroller final : public QObject {
    Q_OBJECT

public:
    CollectionViewScroller(CollectionView& view, QQuickItem& list);
    ~CollectionViewScroller() override;

    /// The list's own content position (its contentX, contentY).
    QPointF listPosition() const;
    /// The position from the start of the content, section insets included.
    QPointF contentOffset() const;
    void setContentOffset(const QPointF& offset, bool animated);
    /// Brings `item` to the start, end or centre (a ListView position mode) of the viewport.
    void scrollToItem(int item, int positionMode, bool animated);
    /// Cuts a programmatic scroll short, unreported.
    void stop();
    bool isDragging() const;
    bool isDecelerating() const;

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

    CollectionView& m_view;
    QQuickItem& m_list;
    Timer m_animation;
    bool m_quiet = false;
    bool m_dragEnding = false;
    bool m_userDecelerating = false;
};

}  // namespace LumoraSDK
