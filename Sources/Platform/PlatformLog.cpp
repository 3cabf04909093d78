#include "PlatformLog.h"

namespace LumoraSDK {

Q_LOGGING_CATEGORY(lcPlatform, "lumora.platform")

}  // namespace LumoraSDK
