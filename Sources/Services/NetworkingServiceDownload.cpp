// Media downloads of the NetworkingService: a page's file fetched whole into the caches directory,
// for sharing.
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QStandardPaths>
#include <QTemporaryFile>
#include <memory>

#include "Services/Logger.h"
#include "Services/NetworkingService.h"

namespace LumoraSDK {

namespace {

const QString kDownloadLog =
    QStringLiteral("performDownloadToCacheRequest(_:onProgressUpdated:completion:) - ");
/// The longest file name most file systems take, in bytes.
constexpr int kMaximumNameBytes = 255;
/// A shortened name keeps this much of the full name's hash, and an extension up to this long.
constexpr int kNameHashLength = 16;
constexpr int kMaximumKeptExtension = 16;
constexpr QFile::Permissions kOwnerOnlyFolder =
    QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;

/// `name` cut to fit the file system: its start, a hash of the whole name (so two long paths
/// still get two files) and its extension (so the file still opens with the right program).
QString shortenedName(const QString& name) {
    const QByteArray hash =
        QCryptographicHash::hash(name.toUtf8(), QCryptographicHash::Sha256).toHex();
    QString extension = QFileInfo(name).suffix();
    if (extension.size() > kMaximumKeptExtension) {
        extension.clear();
    }
    const QString tail = QLatin1Char('-') + QString::fromLatin1(hash.left(kNameHashLength)) +
                         (extension.isEmpty() ? QString() : QLatin1Char('.') + extension);
    const int room = kMaximumNameBytes - int(tail.toUtf8().size());
    QString start = name.left(room);
    // Cut whole characters only, never half of one.
    while (start.toUtf8().size() > room || (!start.isEmpty() && start.back().isHighSurrogate())) {
        start.chop(1);
    }
    return start + tail;
}

void failDownload(const NetworkingService::DownloadCompletion& completion, const QString& line,
                  const QString& error) {
    logger().log(kDownloadLog + line + error, LogLevel::error);
    completion(false, CustomRequestError{error}, std::nullopt);
}

}  // namespace

std::optional<QString> NetworkingService::cacheFileName(const QUrl& url) {
    // Split the encoded path, so that an encoded "/" inside a component is not a separator.
    QStringList components;
    for (const QString& part :
         url.path(QUrl::FullyEncoded).split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        const QString component = QUrl::fromPercentEncoding(part.toUtf8());
        if (component.contains(QLatin1Char('/')) || component.contains(QChar(0))) {
            return std::nullopt;
        }
        components.append(component);
    }
    if (components.isEmpty()) {
        return std::nullopt;
    }
    // The root contributes only its separator, so every name starts with "-" and can never be
    // "." or "..".
    QString name = QLatin1Char('-') + components.join(QLatin1Char('-'));
    name.removeIf([](QChar c) { return c.isSpace(); });
    return name.toUtf8().size() > kMaximumNameBytes ? shortenedName(name) : name;
}

QString NetworkingService::defaultCachesDirectory() {
    const QString caches = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    return caches.isEmpty() ? QString() : caches + QStringLiteral("/SharedMedia");
}

std::optional<QString> NetworkingService::resolveCachesDirectory(const QString& path) {
    if (path.isEmpty()) {
        logger().log(QStringLiteral("NetworkingService - no caches directory on this system"),
                     LogLevel::error);
        return std::nullopt;
    }
    const QFileInfo info(path);
    // Downloaded media is the viewer's own: only its owner may list or read it.
    if (!info.exists() &&
        !(QDir().mkpath(info.absolutePath()) && QDir().mkdir(path, kOwnerOnlyFolder))) {
        logger().log(QStringLiteral("NetworkingService - cannot create caches directory ") + path,
                     LogLevel::error);
        return std::nullopt;
    }
    if (!QFileInfo(path).isDir() || !QFile::setPermissions(path, kOwnerOnlyFolder)) {
        logger().log(QStringLiteral("NetworkingService - caches directory unusable: ") + path,
                     LogLevel::error);
        return std::nullopt;
    }
    return QFileInfo(path).absoluteFilePath();
}

bool NetworkingService::setCachesDirectory(const QString& path) {
    m_cachesDirectory = resolveCachesDirectory(path);
    return m_cachesDirectory.has_value();
}

std::optional<QUrl> NetworkingService::createURLInCachesDirectory(const QUrl& url) const {
    const std::optional<QString> name = cacheFileName(url);
    if (!m_cachesDirectory || !name) {
        return std::nullopt;
    }
    return QUrl::fromLocalFile(QDir(*m_cachesDirectory).filePath(*name));
}

bool NetworkingService::performDownloadToCacheRequest(const QUrl& url,
                                                      DownloadProgress onProgressUpdated,
                                                      DownloadCompletion completion) {
    logger().log(kDownloadLog + QStringLiteral("url:") + url.toString(), LogLevel::info);
    const std::optional<QUrl> destination = createURLInCachesDirectory(url);
    if (!destination) {
        logger().log(kDownloadLog + QStringLiteral("cannot create url in caches directory."),
                     LogLevel::error);
        return false;
    }
    const QString folder = *m_cachesDirectory;
    QMetaObject::invokeMethod(networkManager(), [this, url, folder, destination = *destination,
                                                 onProgressUpdated = std::move(onProgressUpdated),
                                                 completion = std::move(completion)]() mutable {
        // The body goes to a hidden file beside the destination and takes the destination's
        // name only once complete, so a failed or interrupted transfer leaves nothing under it.
        auto partial =
            std::make_shared<QTemporaryFile>(folder + QStringLiteral("/.download-XXXXXX"));
        if (!partial->open()) {
            failDownload(completion, QStringLiteral("cannot write to file: "),
                         partial->errorString());
            return;
        }
        m_onProgressUpdated = std::move(onProgressUpdated);

        QNetworkRequest request(url);
        request.setTransferTimeout(kTimeoutSeconds * 1000);
        QNetworkReply* reply = networkManager()->get(request);
        auto written = std::make_shared<qint64>(0);
        auto writeError = std::make_shared<QString>();
        QObject::connect(
            reply, &QNetworkReply::readyRead, reply, [this, reply, partial, written, writeError] {
                const QByteArray chunk = reply->readAll();
                if (partial->write(chunk) != chunk.size()) {
                    *writeError = partial->errorString();
                    reply->abort();
                    return;
                }
                *written += chunk.size();
                const QVariant length = reply->header(QNetworkRequest::ContentLengthHeader);
                const double expected = length.isValid() ? length.toDouble() : -1.0;
                if (m_onProgressUpdated) {
                    m_onProgressUpdated(double(*written) / expected);
                }
            });
        QObject::connect(
            reply, &QNetworkReply::finished, reply,
            [reply, partial, writeError, destination, completion = std::move(completion)] {
                reply->deleteLater();
                if (!writeError->isEmpty()) {
                    failDownload(completion, QStringLiteral("cannot write to file: "), *writeError);
                    return;
                }
                // An error status is a failed transfer too: its page is not the media.
                if (reply->error() != QNetworkReply::NoError) {
                    failDownload(completion, QStringLiteral("error while downloading the file: "),
                                 reply->errorString());
                    return;
                }
                // Never replaces a file already there: the rename refuses an existing name.
                if (!partial->flush() || !partial->rename(destination.toLocalFile())) {
                    failDownload(completion, QStringLiteral("cannot write to file: "),
                                 partial->errorString());
                    return;
                }
                partial->setAutoRemove(false);
                completion(true, std::nullopt, destination);
            });
    });
    return true;
}

}  // namespace LumoraSDK
