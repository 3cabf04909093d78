#include "Services/AttributedStringService.h"

namespace LumoraSDK {

AttributedStringService::AttributedStringService() = default;
AttributedStringService::~AttributedStringService() = default;

}  // namespace LumoraSDK
