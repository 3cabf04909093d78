#include "Views/LumoraRowViewDataSource.h"

#include "Platform/CollectionView/CollectionView.h"
#include "Views/LumoraRowView.h"
#include "Views/LumoraRowViewCell/LumoraRowViewCell.h"

namespace LumoraSDK {

LumoraRowViewDataSource::LumoraRowViewDataSource(QList<Channel> dataItems,
                                                 qreal customHeightMultiplier,
                                                 QMarginsF customSectionInsets,
                                                 qreal customCellSpacing,
                                                 LumoraRowViewCellType cellType, Branding branding,
                                                 LumoraRowViewStyle uiStyle)
    : dataItems(std::move(dataItems))
    , customHeightMultiplier(customHeightMultiplier)
    , customSectionInsets(customSectionInsets)
    , customCellSpacing(customCellSpacing)
    , cellType(cellType)
    , branding(std::move(branding))
    , uiStyle(uiStyle) {}

QString LumoraRowViewDataSource::reuseIdentifier(LumoraRowViewCellType type) {
    return type == LumoraRowViewCellType::Round ? QStringLiteral("LumoraRowViewCellRound")
                                                : QStringLiteral("LumoraRowViewCellSquare");
}

QSizeF LumoraRowViewDataSource::cellSize(LumoraRowViewCellType type, qreal stripHeight,
                                         qreal multiplier) {
    const qreal height = stripHeight * multiplier;
    if (type == LumoraRowViewCellType::Round) {
        return QSizeF(height * kRoundWidthRatio, height);
    }
    return QSizeF(height * kSquareWidthRatio, height * kSquareHeightRatio);
}

int LumoraRowViewDataSource::numberOfItems(CollectionView&, int) {
    return int(dataItems.size());
}

QString LumoraRowViewDataSource::reuseIdentifier(CollectionView&, const IndexPath&) {
    return reuseIdentifier(cellType);
}

void LumoraRowViewDataSource::configureCell(CollectionView& view,
                                            CollectionViewCell& collectionCell,
                                            const IndexPath& indexPath) {
    auto* cell = qobject_cast<LumoraRowViewCell*>(&collectionCell);
    if (!cell) {
        qFatal("LumoraRowViewDataSource - the cell for %s is not a LumoraRowViewCell",
               qPrintable(reuseIdentifier(cellType)));
    }
    const int row = indexPath.row();
    if (row < 0 || row >= dataItems.size()) {
        qFatal("LumoraRowViewDataSource - no channel at index %d of %d", row,
               int(dataItems.size()));
    }
    cell->rowInstance = rowInstance;
    cell->setup(row, dataItems.at(row), branding, uiStyle);
    cell->onChannelContainerDismissed = onChannelContainerClosed;
    // The record keeps its length: the row sizes it to the channel list it loads.
    cell->onCenterPositionUpdated = [row = rowInstance](int index, QPointF center) {
        if (row && index < row->cellCenters().size()) {
            row->cellCenters()[index] = center;
        }
    };
    // Holds the strip only: a change of style or cell type replaces this data source while
    // the cell lives on.
    cell->onCellClicked = [view = QPointer<CollectionView>(&view)] {
        if (view) {
            updateVisibleCellCenterPositions(*view);
        }
    };
    cell->updateCenterPosition();
    cell->adjustScale(customHeightMultiplier);

    // Centred across the strip, whatever the cell's height.
    const qreal offset = (view.height() - cell->height()) * 0.5;
    cell->setY(offset + view.bounds().y());
}

QSizeF LumoraRowViewDataSource::sizeForItem(CollectionView& view, const IndexPath&) {
    return cellSize(cellType, view.height(), customHeightMultiplier);
}

qreal LumoraRowViewDataSource::minimumLineSpacing(CollectionView&, int) {
    return customCellSpacing;
}

QMarginsF LumoraRowViewDataSource::insetForSection(CollectionView&, int) {
    return customSectionInsets;
}

void LumoraRowViewDataSource::updateVisibleCellCenterPositions(CollectionView& collectionView) {
    for (CollectionViewCell* visible : collectionView.visibleCells()) {
        if (auto* cell = qobject_cast<LumoraRowViewCell*>(visible)) {
            cell->updateCenterPosition();
        }
    }
}

void LumoraRowViewDataSource::scrollViewDidEndScrollingAnimation(CollectionView&) {
    if (!isAutoScrolling) {
        return;
    }
    isAutoScrolling = false;
    onAutoScrollComplete();
}

}  // namespace LumoraSDK
