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
/// playback discovers failures. Entries and preparations together stay within the limit, and an
/// address has at most one player at a time. GUI thread only.
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
    /// Empties the cache, then prepares each address in order. Addresses already cached or
    /// being prepared keep their player rather than opening another.
    static void prefetchVideoItems(const QStringList& videoUrls);
    /// Releases every player, cached or still preparing; waiting callers are not called. Runs
    /// by itself when the application quits, before its windows go.
    static void releaseAll();

    /// The cached addresses, oldest first.
    static QStringList cachedVideoUrls();

private:
    static bool cacheContainsKey(const QString& key);
    static std::shared_ptr<VideoPlayerItem> findCachedVideoItem(const QString& key);
    static std::optional<int> getCacheKeyIndex(const QString& key);
    static void addVideoItem(const QString& videoUrl, std::function<void()> onComplete);
    /// Releases every entry and every preparation nobody waits for, except those of `keep`.
    static void clearCacheQueue(const QStringList& keep = {});
};

}  // namespace LumoraSDK
