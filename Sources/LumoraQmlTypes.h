#pragma once

// The platform's items that the bundle's scenes are made of, in the QML module LumoraSDK. The
// platform layer is not a QML module of its own, so its items join the SDK's here.
//
// The SDK's QML types name their base classes in full (`public LumoraSDK::CollectionViewCell`):
// the type information links a type to its base by the name written there.
#include <QtQml/qqmlregistration.h>

#include "Platform/CollectionView/CollectionView.h"
#include "Platform/ImageView.h"

namespace LumoraSDK {

struct ImageViewForeign {
    Q_GADGET
    QML_FOREIGN(LumoraSDK::ImageView)
    QML_NAMED_ELEMENT(ImageView)
};

struct CollectionViewForeign {
    Q_GADGET
    QML_FOREIGN(LumoraSDK::CollectionView)
    QML_NAMED_ELEMENT(CollectionView)
};

}  // namespace LumoraSDK
