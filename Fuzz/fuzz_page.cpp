// One page object, decoded and written back.
#include "FuzzSupport.h"
#include "Models/Page.h"

using namespace LumoraSDK;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    LumoraFuzz::silenceLogs();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (const auto json = LumoraFuzz::object(data, size)) {
        if (const auto page = Page::fromJson(*json)) {
            (void)Page::fromJson(page->serialize());
            (void)page->isVideo();
        }
    }
    return 0;
}
