#include "ImageManager.h"

#include <QBuffer>
#include <QCache>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QImageReader>
#include <QMutex>
#include <QMutexLocker>
#include <QNetworkAccessManager>
#include <QNetworkDiskCache>
#include <QNetworkReply>
#include <QStandardPaths>
#include <QThread>

#include "Scheduler.h"

namespace LumoraSDK {

namespace {
constexpr qint64 kDiskCacheBytes = 200LL * 1024 * 1024;
constexpr int kMemoryCacheKilobytes = 96 * 1024;
// Larger pictures are scaled down on decode: nothing on screen needs more.
constexpr int kMaxDecodedSide = 2048;

QMutex g_directoryMutex;
QString g_cacheDirectory;

QImage decode(const QByteArray& bytes) {
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.isValid() && std::max(size.width(), size.height()) > kMaxDecodedSide) {
        reader.setScaledSize(size.scaled(kMaxDecodedSide, kMaxDecodedSide, Qt::KeepAspectRatio));
    }
    QImage image = reader.read();
    if (!image.isNull() && image.format() != QImage::Format_ARGB32_Premultiplied) {
        image = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    }
    return image;
}
}  // namespace

struct ImageManager::Private {
    QThread thread;
    QNetworkAccessManager* manager = nullptr;  // lives on `thread`
    mutable QMutex mutex;
    QCache<QString, QImage> memory{kMemoryCacheKilobytes};
    // Loads in flight, so concurrent requests for one address share one fetch.
    QHash<QString, QList<Completion>> waiting;

    void remember(const QString& key, const QImage& image) {
        if (image.isNull()) {
            return;
        }
        const int cost = std::max<qsizetype>(1, image.sizeInBytes() / 1024);
        memory.insert(key, new QImage(image), cost);
    }
};

ImageManager& ImageManager::sharedInstance() {
    static ImageManager* instance = new ImageManager();  // outlives late completions
    return *instance;
}

void ImageManager::setCacheDirectory(const QString& path) {
    QMutexLocker lock(&g_directoryMutex);
    g_cacheDirectory = path;
}

ImageManager::ImageManager() : d(std::make_unique<Private>()) {
    QString directory;
    {
        QMutexLocker lock(&g_directoryMutex);
        directory = g_cacheDirectory;
    }
    if (directory.isEmpty()) {
        directory = QStandardPaths::writableLocation(QStandardPaths::CacheLocation) +
                    QStringLiteral("/LumoraImages");
    }
    // Pictures a viewer was shown are nobody else's business: the cache is owner-only. The
    // cache writes each entry through an owner-only temporary file.
    QDir().mkpath(directory);
    QFile::setPermissions(directory,
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    d->thread.setObjectName(QStringLiteral("LumoraImages"));
    d->thread.start();
    d->manager = new QNetworkAccessManager();
    auto* disk = new QNetworkDiskCache(d->manager);
    disk->setCacheDirectory(directory);
    disk->setMaximumCacheSize(kDiskCacheBytes);
    d->manager->setCache(disk);
    d->manager->moveToThread(&d->thread);
    QObject::connect(&d->thread, &QThread::finished, d->manager, &QObject::deleteLater);
}

ImageManager::~ImageManager() {
    d->thread.quit();
    d->thread.wait();
}

QImage ImageManager::cachedImage(const QUrl& url) const {
    QMutexLocker lock(&d->mutex);
    const QImage* image = d->memory.object(url.toString());
    return image ? *image : QImage();
}

void ImageManager::clearMemoryCache() {
    QMutexLocker lock(&d->mutex);
    d->memory.clear();
}

void ImageManager::loadImage(const QUrl& url, Completion completion) {
    if (!url.isValid() || url.isRelative()) {
        MainQueue::async([completion] {
            completion({QImage(), QStringLiteral("Invalid url"), false});
        });
        return;
    }
    const QString key = url.toString();
    {
        QMutexLocker lock(&d->mutex);
        if (const QImage* image = d->memory.object(key)) {
            // Still on a later turn, like every other completion: callers never see it re-enter.
            MainQueue::async([completion = std::move(completion), copy = *image] {
                completion({copy, QString(), true});
            });
            return;
        }
        auto waiting = d->waiting.find(key);
        if (waiting != d->waiting.end()) {
            waiting->append(std::move(completion));
            return;
        }
        d->waiting.insert(key, {std::move(completion)});
    }
    Private* p = d.get();
    QMetaObject::invokeMethod(p->manager, [p, url, key] {
        // The default cache control honours HTTP freshness: a fresh entry answers from the disk,
        // a stale one is revalidated (If-None-Match / If-Modified-Since) and a 304 reuses it.
        QNetworkRequest request(url);
        request.setTransferTimeout(60000);
        QNetworkReply* reply = p->manager->get(request);
        QObject::connect(reply, &QNetworkReply::finished, reply, [p, reply, key] {
            reply->deleteLater();
            const bool transportFailed =
                !reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid() &&
                reply->error() != QNetworkReply::NoError;
            // Whatever the status, a body that decodes is an image; anything else is none.
            const QByteArray body = reply->readAll();
            const QImage image = decode(body);
            const QString error = transportFailed ? reply->errorString() : QString();
            const bool noData = !transportFailed && body.isEmpty();
            if (image.isNull()) {
                // An error page or a broken answer must not stand in for the picture next time.
                p->manager->cache()->remove(reply->request().url());
            }
            QList<Completion> completions;
            {
                QMutexLocker lock(&p->mutex);
                p->remember(key, image);
                completions = p->waiting.take(key);
            }
            MainQueue::async([completions, image, error, noData] {
                for (const Completion& completion : completions) {
                    completion({image, error, false, noData});
                }
            });
        });
    });
}

void ImageManager::prefetchImages(const QList<QUrl>& urls) {
    for (const QUrl& url : urls) {
        if (url.isValid() && !url.isRelative() && cachedImage(url).isNull()) {
            loadImage(url, [](const Result&) {});
        }
    }
}

}  // namespace LumoraSDK
