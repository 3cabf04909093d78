#pragma once

#include <QMarginsF>
#include <QSizeF>
#include <QString>

#include "CollectionView/IndexPath.h"

namespace LumoraSDK {

class CollectionView;
class CollectionViewCell;

/// What a CollectionView asks about its items: how many there are, which kind of cell shows each,
/// how to fill that cell, and how the items are sized and spaced. A view has one section.
class CollectionViewDataSource {
public:
    virtual ~CollectionViewDataSource() = default;

    virtual int numberOfItems(CollectionView& view, int section) = 0;
    /// The reuse identifier (as registered with the view) of the cell for an item.
    virtual QString reuseIdentifier(CollectionView& view, const IndexPath& indexPath) = 0;
    /// Fills a cell for an item: a fresh one, a reused one (after its prepareForReuse) or one
    /// whose item was reloaded.
    virtual void configureCell(CollectionView& view, CollectionViewCell& cell,
                               const IndexPath& indexPath) = 0;
    virtual QSizeF sizeForItem(CollectionView& view, const IndexPath& indexPath) = 0;
    /// The gap between neighbouring items.
    virtual qreal minimumLineSpacing(CollectionView&, int /*section*/) { return 0; }
    /// Space around the section's items, inside the scrollable content.
    virtual QMarginsF insetForSection(CollectionView&, int /*section*/) { return {}; }
};

}  // namespace LumoraSDK
