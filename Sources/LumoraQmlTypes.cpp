// Makes the SDK's items available to QML as `import LumoraSDK` in every application that links
// the library, without a call from the host.
#include <QCoreApplication>
#include <QQmlEngine>

#include "Views/FrameButtonView.h"
#include "Views/ImageView.h"

namespace {
void registerLumoraQmlTypes()
{
    using namespace LumoraSDK;
    constexpr const char* uri = "LumoraSDK";
    qmlRegisterType<ImageView>(uri, 1, 0, "ImageView");
    qmlRegisterType<FrameButtonView>(uri, 1, 0, "FrameButtonView");
}
}  // namespace

Q_COREAPP_STARTUP_FUNCTION(registerLumoraQmlTypes)
