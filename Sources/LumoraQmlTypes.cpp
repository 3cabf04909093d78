// Makes the SDK's items available to QML as `import LumoraSDK` in every application that links
// the library, without a call from the host.
#include <QCoreApplication>
#include <QQmlEngine>

#include "Lumora.h"
#include "Platform/CollectionView/CollectionView.h"
#include "Platform/ImageView.h"
#include "ViewControllers/ChannelsHostViewController.h"
#include "ViewControllers/InstructionsViewController.h"
#include "Views/ChannelMediaCollectionViewCell.h"
#include "Views/ChannelProgressCollectionViewCell.h"
#include "Views/ChannelsCollectionViewCell.h"
#include "Views/FrameButtonView.h"
#include "Views/LumoraRowCollectionView.h"
#include "Views/LumoraRowView.h"
#include "Views/LumoraRowViewCell/LumoraRowViewCell.h"
#include "Views/LumoraRowViewCell/LumoraRowViewCellRound.h"
#include "Views/LumoraRowViewCell/LumoraRowViewCellSquare.h"
#include "Views/PassthroughTouchButton.h"
#include "Views/PassthroughTouchView.h"

namespace {
void registerLumoraQmlTypes() {
    using namespace LumoraSDK;
    // Interface files name their images in the SDK's resource bundle.
    ImageView::setInterfaceBundle(&Lumora::resourceBundle);
    constexpr const char* uri = "LumoraSDK";
    qmlRegisterType<ImageView>(uri, 1, 0, "ImageView");
    qmlRegisterType<FrameButtonView>(uri, 1, 0, "FrameButtonView");
    qmlRegisterType<LumoraRowView>(uri, 1, 0, "LumoraRowView");
    qmlRegisterType<LumoraRowCollectionView>(uri, 1, 0, "LumoraRowCollectionView");
    qmlRegisterUncreatableType<LumoraRowViewCell>(uri, 1, 0, "LumoraRowViewCell",
                                                  QStringLiteral("the base of the row's cells"));
    qmlRegisterType<LumoraRowViewCellRound>(uri, 1, 0, "LumoraRowViewCellRound");
    qmlRegisterType<LumoraRowViewCellSquare>(uri, 1, 0, "LumoraRowViewCellSquare");
    qmlRegisterType<ChannelProgressCollectionViewCell>(uri, 1, 0,
                                                       "ChannelProgressCollectionViewCell");
    qmlRegisterType<ChannelMediaCollectionViewCell>(uri, 1, 0, "ChannelMediaCollectionViewCell");
    qmlRegisterType<CollectionView>(uri, 1, 0, "CollectionView");
    qmlRegisterType<ChannelsCollectionViewCell>(uri, 1, 0, "ChannelsCollectionViewCell");
    qmlRegisterType<PassthroughTouchView>(uri, 1, 0, "PassthroughTouchView");
    qmlRegisterType<PassthroughTouchButton>(uri, 1, 0, "PassthroughTouchButton");
    // A tap on a row cell opens the full-screen player.
    ChannelsHostViewController::installAsChannelPresenter();
    // The first time the player opens on a device it explains its gestures.
    InstructionsViewController::installAsInstructionsPresenter();
}
}  // namespace

Q_COREAPP_STARTUP_FUNCTION(registerLumoraQmlTypes)
