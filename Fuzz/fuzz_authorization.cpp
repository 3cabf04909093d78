// The registration answer, decoded and written back.
#include "FuzzSupport.h"
#include "Models/Authorization.h"

using namespace LumoraSDK;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    LumoraFuzz::silenceLogs();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (const auto json = LumoraFuzz::object(data, size)) {
        if (const auto authorization = Authorization::fromJson(*json)) {
            (void)Authorization::fromJson(authorization->serialize());
        }
    }
    return 0;
}
