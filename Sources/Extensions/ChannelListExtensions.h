#pragma once

#include <QList>
#include <QStringList>

#include "Models/Channel.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

class DatabaseService;

// Reconciling a loaded channel list with what the viewer did on this device. None of these
// reorders channels. A channel without an id is filed under "" in the store's maps.

/// Rebuilds the stored read map from the server's statuses: the server is the authority when a
/// list loads, so a channel read locally but reported unread shows as unread again.
LUMORASDK_EXPORT void updateLocalChannelReadMapping(const QList<Channel>& channels,
                                                    DatabaseService& database);

/// The channels with the stored read flags applied: a flagged channel becomes read and restarts
/// at page 0; an unflagged one becomes unread and keeps its initial page; a channel the map does
/// not know is copied unchanged.
LUMORASDK_EXPORT QList<Channel> getLocallyUpdatedChannels(const QList<Channel>& channels,
                                                          DatabaseService& database);

/// For each channel, the URL of the page playback resumes at (the larger of the stored and the
/// server's initial page) when that page exists and is a video with a URL; in channel order.
LUMORASDK_EXPORT QStringList getInitialPageVideoUrls(const QList<Channel>& channels,
                                                     DatabaseService& database);

}  // namespace LumoraSDK
