// The demo-data record, decoded and written back.
#include "FuzzSupport.h"
#include "Models/DemoData.h"

using namespace LumoraSDK;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    LumoraFuzz::silenceLogs();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (const auto demo = DemoData::fromJson(LumoraFuzz::object(data, size))) {
        (void)DemoData::fromJson(demo->serialize());
    }
    return 0;
}
