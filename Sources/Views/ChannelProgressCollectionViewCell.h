#pragma once

#include <QtQml/qqmlregistration.h>
#include <QPointer>
#include <QString>
#include <QUrl>

#include "Platform/CollectionView/CollectionViewCell.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

class CollectionView;
class ShapeLayer;

/// One segment of a channel's page progress bar: a faint white track with a white fill over it,
/// as wide as the segment times its fill fraction. Both are drawn layers of the content view,
/// made anew on every change of the fill rather than resized.
class LUMORASDK_EXPORT ChannelProgressCollectionViewCell : public LumoraSDK::CollectionViewCell {
    Q_OBJECT
    QML_ELEMENT

public:
    /// Opacity of the white track under the fill.
    static constexpr qreal kTrackOpacity = 0.3;
    /// The fill reaches past the segment when its fraction does (a run's last tick can overshoot
    /// 1.0, and a run of no length reports an infinite fraction), but never further than this:
    /// far enough to cross any bar, and a size the painter can hold.
    static constexpr qreal kMaximumFillWidth = 8192;

    /// A cell made in code: nothing is drawn until its first update.
    explicit ChannelProgressCollectionViewCell(QQuickItem* parent = nullptr);
    ~ChannelProgressCollectionViewCell() override;

    /// The reuse identifier, which is the class's name.
    static QString identifier();
    /// The cell's interface file in the SDK's resource bundle.
    static QUrl interfaceUrl();
    /// Makes `view` create these cells from the interface file under identifier().
    static void registerIn(CollectionView& view);

    /// Adds a track layer and a fill layer for `progress` to the content view, at stacking
    /// positions 0 and 1. Earlier layers stay; callers remove them first.
    void initProgressLayers(qreal progress);
    /// Empties the segment. The track is laid down twice, so a recycled segment shows a brighter
    /// track until its next update replaces all of its layers.
    void prepareForReuse() override;

    /// The page this segment stands for.
    int progressIndex = -1;
    /// The fill fraction last set; a new cell's drawing does not follow it until the first
    /// update.
    qreal progressPercent = 1.0;
    /// The fill layer drawn last.
    QPointer<ShapeLayer> foregroundProgressLayer;

protected:
    /// A cell made from its interface file starts out drawn empty.
    void componentComplete() override;
    /// A resized segment stretches what it shows: the fill keeps its share of the track.
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
};

}  // namespace LumoraSDK
