#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

#include "lumorasdk_export.h"

namespace LumoraSDK {

class VideoPlayerItem;

/// A process-wide, first-in first-out cache of prepared videos, one per address (compared as
/// exact text), so that a page starts its video without opening the stream from scratch.
///
/// Entries are appended only once their video has finished preparing, successfully or not:
/// playback discovers failures. GUI thread only.
class LUMORASDK_EXPORT VideoPrefetchService {
public:
    using ItemHandler = std::function<void(std::shared_ptr<VideoPlayerItem>)>;

    /// Most entries held; read on every insertion.
    static int cacheLimit();
    static void setCacheLimit(int limit);

    /// Hands over the cached item at once when the address has an entry (possibly none, if the
    /// entry was emptied); otherwise prepares it, caches it and hands it over when ready.
    static void getCachedVideoItem(const QString& videoUrl, bool shouldOpenNew,
                                   ItemHandler onComplete);
    /// Releases and removes the entries of these addresses; unknown addresses are skipped.
    static void removeCachedVideoItems(const QStringList& videoUrls);
    /// Empties the cache, then prepares each address in order.
    static void prefetchVideoItems(const QStringList& videoUrls);

    /// The cached addresses, oldest first.
    static QStringList cachedVideoUrls();

private:
    static bool cacheContainsKey(const QString& key);
    static std::shared_ptr<VideoPlayerItem> findCachedVideoItem(const QString& key);
    static std::optional<int> getCacheKeyIndex(const QString& key);
    static void addVideoItem(const QString& videoUrl, std::function<void()> onComplete);
    static void clearCacheQueue();
};

}  // namespace LumoraSDK
