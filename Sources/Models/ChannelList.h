#pragma once

#include <QByteArray>
#include <QList>
#include <optional>

#include "Models/Channel.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// The channel list the API answers: a JSON array of channel objects, decoded in order, with
/// Channel::fromJson's rules for each. Nothing when the text is not an array made only of
/// objects.
///
/// A long list is cut at the commas between its elements and the parts decoded side by side,
/// `parts` of them (0: as many as the list's size and the machine's cores make worthwhile). The
/// result is the one decoding the text whole gives, for any text.
LUMORASDK_EXPORT std::optional<QList<Channel>> decodeChannelList(const QByteArray& json,
                                                                 int parts = 0);

}  // namespace LumoraSDK
