// What the SDK's scenes need before the first one loads, in every application that links the
// library, without a call from the host. The QML types themselves register with the module.
#include "LumoraQmlTypes.h"

#include <QCoreApplication>

#include "Lumora.h"
#include "ViewControllers/ChannelsHostViewController.h"
#include "ViewControllers/InstructionsViewController.h"

namespace {
void prepareLumoraScenes() {
    using namespace LumoraSDK;
    // Interface files name their images in the SDK's resource bundle.
    ImageView::setInterfaceBundle(&Lumora::resourceBundle);
    // A tap on a row cell opens the full-screen player.
    ChannelsHostViewController::installAsChannelPresenter();
    // The first time the player opens on a device it explains its gestures.
    InstructionsViewController::installAsInstructionsPresenter();
}
}  // namespace

Q_COREAPP_STARTUP_FUNCTION(prepareLumoraScenes)
