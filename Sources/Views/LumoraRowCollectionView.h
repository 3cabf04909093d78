#pragma once

#include <QtQml/qqmlregistration.h>
#include <functional>

#include "Platform/CollectionView/CollectionView.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// The row's strip. Adds a programmatic scroll that reports its end: the row scrolls to a cell
/// this way before it opens the player from it.
class LUMORASDK_EXPORT LumoraRowCollectionView : public LumoraSDK::CollectionView {
    Q_OBJECT
    QML_ELEMENT

public:
    explicit LumoraRowCollectionView(QQuickItem* parent = nullptr);

    /// Scrolls with touches and clicks turned off and runs `completion` once, when the scroll
    /// has ended; then lets the user touch the strip again. Without animation, or for an item
    /// the strip does not have, nothing moves over time and the completion runs at once.
    /// Another scroll started before the end cuts it short: its completion is dropped and
    /// touches come back.
    void scrollToItem(const IndexPath& indexPath, ScrollPosition position, bool animated,
                      std::function<void()> completion);
    void scrollToItem(const IndexPath& indexPath, ScrollPosition position, bool animated);

private:
    void cancelAutoScroll();

    bool m_autoScrolling = false;
};

}  // namespace LumoraSDK
