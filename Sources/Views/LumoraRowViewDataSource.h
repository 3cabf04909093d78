#pragma once

#include <QList>
#include <QMarginsF>
#include <QPointer>
#include <QSizeF>
#include <functional>

#include "Enums/LumoraRowViewCellType.h"
#include "Enums/LumoraRowViewStyle.h"
#include "Models/Branding.h"
#include "Models/Channel.h"
#include "Platform/CollectionView/CollectionViewDataSource.h"
#include "Platform/CollectionView/CollectionViewDelegate.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

class LumoraRowView;

/// Feeds the row's strip: the channels on show, the size and placement of their cells, and the
/// row's record of where each cell stands on screen (the player grows from a cell's centre and
/// shrinks back into it). It also tells the row when a programmatic scroll has ended.
///
/// The strip has one section. The row replaces `dataItems` whole; the data source never edits it.
class LUMORASDK_EXPORT LumoraRowViewDataSource : public CollectionViewDataSource,
                                                 public CollectionViewDelegate {
public:
    /// A round cell is this much of its height wide.
    static constexpr qreal kRoundWidthRatio = 0.65;
    /// A square cell is a 9:16 card at 95 % of the height: 0.95 × 0.5625 of it wide.
    static constexpr qreal kSquareWidthRatio = 0.5343749999999999;
    static constexpr qreal kSquareHeightRatio = 0.95;

    LumoraRowViewDataSource(QList<Channel> dataItems, qreal customHeightMultiplier,
                            QMarginsF customSectionInsets, qreal customCellSpacing,
                            LumoraRowViewCellType cellType, Branding branding,
                            LumoraRowViewStyle uiStyle);

    QList<Channel> dataItems;
    /// The fraction of the strip's height a cell takes (the row's cellScale).
    qreal customHeightMultiplier;
    QMarginsF customSectionInsets;
    qreal customCellSpacing;
    LumoraRowViewCellType cellType;
    Branding branding;
    LumoraRowViewStyle uiStyle;
    QPointer<LumoraRowView> rowInstance;
    /// Set by the row while it scrolls the strip itself; cleared when that scroll ends.
    bool isAutoScrolling = false;
    /// Handed to every cell: called with a channel index when the player opened from it closes.
    std::function<void(int)> onChannelContainerClosed = [](int) {};
    std::function<void()> onAutoScrollComplete = [] {};

    /// The reuse identifier of the cell class for `type` (its class name).
    static QString reuseIdentifier(LumoraRowViewCellType type);
    /// The cell size for a strip `stripHeight` high.
    static QSizeF cellSize(LumoraRowViewCellType type, qreal stripHeight, qreal multiplier);

    /// Records the window-coordinate centre of every visible real cell in the row's cellCenters,
    /// within the list's current length (the list never grows here).
    static void updateVisibleCellCenterPositions(CollectionView& collectionView);

    // CollectionViewDataSource
    int numberOfItems(CollectionView& view, int section) override;
    QString reuseIdentifier(CollectionView& view, const IndexPath& indexPath) override;
    void configureCell(CollectionView& view, CollectionViewCell& cell,
                       const IndexPath& indexPath) override;
    QSizeF sizeForItem(CollectionView& view, const IndexPath& indexPath) override;
    qreal minimumLineSpacing(CollectionView& view, int section) override;
    QMarginsF insetForSection(CollectionView& view, int section) override;

    // CollectionViewDelegate
    void scrollViewDidEndScrollingAnimation(CollectionView& view) override;
};

}  // namespace LumoraSDK
