#include "VideoPrefetchService.h"

#include <QUrl>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "Platform/Scheduler.h"
#include "Platform/VideoPlayerItem.h"
#include "Services/Logger.h"

namespace LumoraSDK {

namespace {
struct Entry {
    QString key;
    std::shared_ptr<VideoPlayerItem> item;
};

struct Cache {
    int limit = 20;
    std::vector<Entry> entries;  // oldest first; the list is the only index
    // Items still preparing; they join `entries` once ready.
    std::set<std::shared_ptr<VideoPlayerItem>> preparing;
};

Cache& cache() {
    static Cache instance;
    return instance;
}

void debug(const QString& message) {
    logger().log(message, LogLevel::debug);
}
}  // namespace

int VideoPrefetchService::cacheLimit() {
    return cache().limit;
}

void VideoPrefetchService::setCacheLimit(int limit) {
    cache().limit = limit;
}

bool VideoPrefetchService::cacheContainsKey(const QString& key) {
    return getCacheKeyIndex(key).has_value();
}

std::shared_ptr<VideoPlayerItem> VideoPrefetchService::findCachedVideoItem(const QString& key) {
    const auto index = getCacheKeyIndex(key);
    return index ? cache().entries[*index].item : nullptr;
}

std::optional<int> VideoPrefetchService::getCacheKeyIndex(const QString& key) {
    const auto& entries = cache().entries;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i].key == key) {
            return static_cast<int>(i);
        }
    }
    return std::nullopt;
}

void VideoPrefetchService::getCachedVideoItem(const QString& videoUrl, bool /*shouldOpenNew*/,
                                              ItemHandler onComplete) {
    if (cacheContainsKey(videoUrl)) {
        onComplete(findCachedVideoItem(videoUrl));
        return;
    }
    debug(QStringLiteral("getCachedVideoItem - no cached AVPlayerItem for ") + videoUrl +
          QStringLiteral("! opening new stream"));
    addVideoItem(videoUrl, [videoUrl, onComplete = std::move(onComplete)] {
        onComplete(findCachedVideoItem(videoUrl));
    });
}

void VideoPrefetchService::addVideoItem(const QString& videoUrl, std::function<void()> onComplete) {
    const QUrl url(videoUrl, QUrl::StrictMode);
    if (videoUrl.isEmpty() || !url.isValid()) {
        debug(QStringLiteral("addPrefetchVideoItem - invalid url ") + videoUrl +
              QStringLiteral(", do nothing"));
        onComplete();
        return;
    }
    if (findCachedVideoItem(videoUrl)) {
        debug(QStringLiteral("addPrefetchVideoItem - ") + videoUrl +
              QStringLiteral(" already cached, do nothing"));
        onComplete();
        return;
    }
    Cache& state = cache();
    if (!state.entries.empty() && state.limit - 1 < static_cast<int>(state.entries.size())) {
        debug(QStringLiteral("addPrefetchVideoItem - cache limit reached!"));
        removeCachedVideoItems({state.entries.front().key});
    }
    // An emptied entry for the same address must not linger behind the fresh one.
    removeCachedVideoItems({videoUrl});

    auto holder = std::make_shared<std::shared_ptr<VideoPlayerItem>>();
    *holder = std::make_shared<VideoPlayerItem>(url, [holder, videoUrl,
                                                      onComplete = std::move(onComplete)] {
        // Finish on a later turn: the item may not be fully constructed when a cached
        // local file reports its status synchronously.
        MainQueue::async([holder, videoUrl, onComplete] {
            std::shared_ptr<VideoPlayerItem> item = *holder;
            Cache& state = cache();
            state.preparing.erase(item);
            state.entries.push_back({videoUrl, item});
            debug(videoUrl +
                  QStringLiteral(
                      " - addPrefetchVideoItem loadValuesAsynchronously key index %1: complete ")
                      .arg(state.entries.size() - 1) +
                  item->description());
            holder->reset();
            onComplete();
        });
    });
    state.preparing.insert(*holder);
}

void VideoPrefetchService::removeCachedVideoItems(const QStringList& videoUrls) {
    for (const QString& url : videoUrls) {
        const auto index = getCacheKeyIndex(url);
        if (!index) {
            continue;
        }
        auto& entries = cache().entries;
        Entry& entry = entries[*index];
        debug(QStringLiteral("removeCachedVideoItems - releasing item at key index %1: url ")
                  .arg(*index) +
              url + QStringLiteral(" -> ") +
              (entry.item ? entry.item->description() : QStringLiteral("nil")));
        entry.item.reset();
        entries.erase(entries.begin() + *index);
    }
}

void VideoPrefetchService::clearCacheQueue() {
    auto& entries = cache().entries;
    for (Entry& entry : entries) {
        entry.item.reset();
    }
    entries.clear();
}

void VideoPrefetchService::prefetchVideoItems(const QStringList& videoUrls) {
    clearCacheQueue();
    for (const QString& url : videoUrls) {
        addVideoItem(url, [] {});
    }
}

QStringList VideoPrefetchService::cachedVideoUrls() {
    QStringList keys;
    for (const Entry& entry : cache().entries) {
        keys.append(entry.key);
    }
    return keys;
}

}  // namespace LumoraSDK
