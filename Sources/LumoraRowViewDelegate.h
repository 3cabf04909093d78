#pragma once

#include <optional>

#include <LumoraSDK/Enums/RequestStatusError.h>
#include <LumoraSDK/lumorasdk_export.h>

namespace LumoraSDK {

/// What a host learns from a LumoraRowView: when a channel load starts and ends, and when the
/// player opened from the row was closed. Every call arrives on the GUI thread. The row does not
/// own its delegate; unset it before destroying the delegate. Each operation does nothing unless
/// overridden.
///
/// QML hosts get the same three events as the row's signals.
class LUMORASDK_EXPORT LumoraRowViewDelegate {
public:
    virtual ~LumoraRowViewDelegate() = default;

    /// A load of the channels started.
    virtual void onChannelsDataLoadStarted() {}
    /// `dataCount` is the number of channels received on success; on failure, the number held in
    /// the SDK's shared channel list (what the row still shows, 0 while it shows placeholders).
    virtual void onChannelsDataLoadComplete(bool /*success*/,
                                            const std::optional<RequestError>& /*error*/,
                                            int /*dataCount*/) {}
    /// The player opened from the row was closed and has shrunk back into its cell.
    virtual void onChannelDismissed() {}
};

}  // namespace LumoraSDK
