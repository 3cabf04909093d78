#pragma once

#include <QtQml/qqmlregistration.h>
#include <optional>

#include "Platform/CollectionView/CollectionViewCell.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// One channel of the player's pager: the page player's view sits in the content view, which the
/// cube transition turns.
class LUMORASDK_EXPORT ChannelsCollectionViewCell : public LumoraSDK::CollectionViewCell {
    Q_OBJECT
    QML_ELEMENT

public:
    explicit ChannelsCollectionViewCell(QQuickItem* parent = nullptr);

    /// The reuse identifier, the class name.
    static QString identifier() { return QStringLiteral("ChannelsCollectionViewCell"); }

    /// The index of the page player shown; absent until the cell is filled.
    std::optional<int> channelIndex;

    /// A reused cell must not keep the view of the page player it showed before.
    void prepareForReuse() override;

protected:
    /// The page player's view fills the cell at any size.
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
};

}  // namespace LumoraSDK
