#include "VideoPrefetchService.h"

#include <QCoreApplication>
#include <QUrl>
#include <algorithm>
#include <optional>
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

/// An address being prepared, and who waits to play it.
struct Preparation {
    QString key;
    std::shared_ptr<VideoPlayerItem> item;
    std::vector<std::function<void()>> waiters;
};

struct Cache {
    int limit = 20;
    std::vector<Entry> entries;  // oldest first; the list is the only index
    // Addresses still preparing, oldest first; they join `entries` once ready. They count
    // against the limit, so that prefetching never has more than `limit` players open.
    std::vector<Preparation> preparing;
    bool releasesOnQuit = false;
};

Cache& cache() {
    static Cache instance;
    return instance;
}

void debug(const QString& message) {
    logger().log(message, LogLevel::debug);
}

Preparation* preparationFor(const QString& key) {
    for (Preparation& preparation : cache().preparing) {
        if (preparation.key == key) {
            return &preparation;
        }
    }
    return nullptr;
}

/// Stops preparing the oldest address nobody waits for, else the oldest of all (its waiters
/// hear of no item).
void cancelOldestPreparation() {
    auto& preparing = cache().preparing;
    if (preparing.empty()) {
        return;
    }
    auto victim = std::find_if(preparing.begin(), preparing.end(),
                               [](const Preparation& p) { return p.waiters.empty(); });
    if (victim == preparing.end()) {
        victim = preparing.begin();
    }
    debug(QStringLiteral("addPrefetchVideoItem - cancelling the preparation of ") + victim->key);
    const std::vector<std::function<void()>> waiters = std::move(victim->waiters);
    preparing.erase(victim);
    for (const auto& waiter : waiters) {
        waiter();
    }
}

/// Players must be gone before the application's windows and display are: a media back end
/// still holding one then crashes on its way out.
void releaseAllBeforeQuit() {
    Cache& state = cache();
    if (std::exchange(state.releasesOnQuit, true) || !QCoreApplication::instance()) {
        return;
    }
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit,
                     &VideoPrefetchService::releaseAll);
    qAddPostRoutine(&VideoPrefetchService::releaseAll);
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
    auto handOver = [videoUrl, onComplete = std::move(onComplete)] {
        onComplete(findCachedVideoItem(videoUrl));
    };
    if (Preparation* preparation = preparationFor(videoUrl)) {
        // Already on its way (prefetched): one player per address.
        preparation->waiters.push_back(std::move(handOver));
        return;
    }
    addVideoItem(videoUrl, std::move(handOver));
}

void VideoPrefetchService::addVideoItem(const QString& videoUrl, std::function<void()> onComplete) {
    const QUrl url(videoUrl, QUrl::StrictMode);
    if (videoUrl.isEmpty() || !url.isValid()) {
        debug(QStringLiteral("addPrefetchVideoItem - invalid url ") + videoUrl +
              QStringLiteral(", do nothing"));
        if (onComplete) {
            onComplete();
        }
        return;
    }
    if (findCachedVideoItem(videoUrl)) {
        debug(QStringLiteral("addPrefetchVideoItem - ") + videoUrl +
              QStringLiteral(" already cached, do nothing"));
        if (onComplete) {
            onComplete();
        }
        return;
    }
    if (Preparation* preparation = preparationFor(videoUrl)) {
        debug(QStringLiteral("addPrefetchVideoItem - ") + videoUrl +
              QStringLiteral(" already preparing, do nothing"));
        if (onComplete) {
            preparation->waiters.push_back(std::move(onComplete));
        }
        return;
    }
    Cache& state = cache();
    releaseAllBeforeQuit();
    const auto held = [&state] { return int(state.entries.size() + state.preparing.size()); };
    if (held() > 0 && state.limit - 1 < held()) {
        debug(QStringLiteral("addPrefetchVideoItem - cache limit reached!"));
        if (!state.entries.empty()) {
            removeCachedVideoItems({state.entries.front().key});
        } else {
            cancelOldestPreparation();
        }
    }
    // An emptied entry for the same address must not linger behind the fresh one.
    removeCachedVideoItems({videoUrl});

    auto prepared = std::make_shared<std::weak_ptr<VideoPlayerItem>>();
    auto item = std::make_shared<VideoPlayerItem>(url, videoUrl, [videoUrl, prepared] {
        // Finish on a later turn: the item may not be fully constructed when a cached local
        // file reports its status synchronously.
        MainQueue::async([videoUrl, prepared] {
            Cache& state = cache();
            const std::shared_ptr<VideoPlayerItem> mine = prepared->lock();
            auto preparation =
                std::find_if(state.preparing.begin(), state.preparing.end(),
                             [&](const Preparation& p) { return mine && p.item == mine; });
            if (preparation == state.preparing.end()) {
                return;  // released meanwhile
            }
            const std::shared_ptr<VideoPlayerItem> item = preparation->item;
            const std::vector<std::function<void()>> waiters = std::move(preparation->waiters);
            state.preparing.erase(preparation);
            state.entries.push_back({videoUrl, item});
            debug(videoUrl +
                  QStringLiteral(
                      " - addPrefetchVideoItem loadValuesAsynchronously key index %1: complete ")
                      .arg(state.entries.size() - 1) +
                  item->description());
            for (const auto& waiter : waiters) {
                waiter();
            }
        });
    });
    *prepared = item;
    state.preparing.push_back({videoUrl, std::move(item), {}});
    if (onComplete) {
        state.preparing.back().waiters.push_back(std::move(onComplete));
    }
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

void VideoPrefetchService::clearCacheQueue(const QStringList& keep) {
    Cache& state = cache();
    std::erase_if(state.entries, [&](Entry& entry) {
        if (keep.contains(entry.key)) {
            return false;
        }
        entry.item.reset();
        return true;
    });
    // Preparations somebody waits for to play are kept; the others stop.
    std::erase_if(state.preparing, [&](const Preparation& preparation) {
        return preparation.waiters.empty() && !keep.contains(preparation.key);
    });
}

void VideoPrefetchService::prefetchVideoItems(const QStringList& videoUrls) {
    // Addresses asked for again keep their prepared player (the video on screen among them)
    // instead of opening a second one.
    clearCacheQueue(videoUrls);
    for (const QString& url : videoUrls) {
        addVideoItem(url, {});
    }
}

void VideoPrefetchService::releaseAll() {
    Cache& state = cache();
    state.entries.clear();
    state.preparing.clear();
}

QStringList VideoPrefetchService::cachedVideoUrls() {
    QStringList keys;
    for (const Entry& entry : cache().entries) {
        keys.append(entry.key);
    }
    return keys;
}

}  // namespace LumoraSDK
