#pragma once

#include <QImage>
#include <QList>
#include <QString>
#include <QUrl>
#include <functional>
#include <memory>

#include "lumorasdk_export.h"

namespace LumoraSDK {

/// Remote images for the interface: fetched over HTTP on a thread of its own, kept in a disk
/// cache and a bounded memory cache, decoded off the GUI thread.
///
/// Every load completes exactly once on the GUI thread, whatever happens: a missing, broken or
/// non-image answer completes with a null image, so no cell waits for ever.
class LUMORASDK_EXPORT ImageManager {
public:
    struct Result {
        QImage image;   // null when nothing usable arrived
        QString error;  // transport error text, if the request failed outright
        bool fromMemory = false;
        bool noData = false;  // the server answered without a body
    };
    using Completion = std::function<void(const Result&)>;

    static ImageManager& sharedInstance();
    ~ImageManager();

    /// Where the disk cache lives; by default the application's cache directory.
    static void setCacheDirectory(const QString& path);

    /// Completes on a later turn of the GUI thread, also for an image already in memory. The disk
    /// cache follows HTTP freshness: stale entries are revalidated with the server.
    void loadImage(const QUrl& url, Completion completion);
    /// Warms the caches; duplicate and invalid addresses are ignored.
    void prefetchImages(const QList<QUrl>& urls);
    /// The decoded image when it is in the memory cache.
    QImage cachedImage(const QUrl& url) const;
    /// Drops the memory cache (the disk cache stays).
    void clearMemoryCache();

private:
    ImageManager();
    struct Private;
    std::unique_ptr<Private> d;
};

}  // namespace LumoraSDK
