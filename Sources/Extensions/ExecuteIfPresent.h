#pragma once

#include <functional>
#include <ranges>

namespace LumoraSDK {

/// Calls `body` with `list` only when the list is not empty.
template <std::ranges::sized_range List, typename Body>
void executeIfPresent(const List& list, Body&& body) {
    if (!std::ranges::empty(list)) {
        std::invoke(std::forward<Body>(body), list);
    }
}

}  // namespace LumoraSDK
