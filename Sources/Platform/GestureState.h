#pragma once

namespace LumoraSDK {

/// Phases of a touch gesture as the interface's pointer handlers report them to the logic that
/// interprets them. The numbers are what log lines print.
enum class GestureState { Possible = 0, Began = 1, Changed = 2, Ended = 3, Cancelled = 4, Failed = 5 };

}  // namespace LumoraSDK
