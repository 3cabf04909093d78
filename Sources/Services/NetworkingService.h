#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QPair>
#include <QString>
#include <QUrl>
#include <functional>
#include <memory>
#include <optional>

#include "Enums/RequestStatusError.h"
#include "Enums/RequestType.h"
#include "lumorasdk_export.h"

class QImage;
class QNetworkAccessManager;
class QNetworkRequest;

namespace LumoraSDK {

class FrameButtonView;

/// The states a button keeps pictures for.
enum class ControlState { Normal };

/// What arrived from the server when it answered at all.
struct HttpResponse {
    QUrl url;
    int statusCode = 0;
    QList<QPair<QByteArray, QByteArray>> headers;

    /// How log lines print the response.
    QString description() const;
};

using HttpHeaders = QMap<QString, QString>;

/// Adds each pair to the request; nothing for an absent dictionary.
LUMORASDK_EXPORT void addHeaders(QNetworkRequest& request,
                                 const std::optional<HttpHeaders>& headers);

/// The SDK's only HTTP client for the content API.
///
/// Requests run on a network thread of their own. Every request that is sent completes exactly
/// once, on that thread, with the response (absent on transport errors), the body and whether
/// the status was acceptable (200, 201 or 204). Callers that touch the interface hop to the
/// main queue themselves. TLS certificates are always verified.
class LUMORASDK_EXPORT NetworkingService {
public:
    using Completion = std::function<void(const std::optional<HttpResponse>& response,
                                          const std::optional<QByteArray>& data, bool ok)>;

    static constexpr int kTimeoutSeconds = 60;
    /// Leads the User-Agent text.
    static constexpr const char* kClientLabel = "Lumora Stories SDK";

    static NetworkingService& sharedInstance();
    ~NetworkingService();

    /// A GET whose path does not form an absolute URL is not sent and never completes.
    void performGetRequest(const QString& path, const std::optional<HttpHeaders>& params,
                           const std::optional<HttpHeaders>& headers, Completion completion);
    /// A POST whose path does not form an absolute URL completes at once, on the calling
    /// thread, with no response.
    void performPostRequest(const QString& path, const std::optional<QJsonObject>& params,
                            const std::optional<HttpHeaders>& headers, Completion completion);

    /// The standard headers, built fresh: client identification, version, API key, token.
    HttpHeaders requestHeaders() const;
    static bool checkStatusCodeOK(std::optional<int> statusCode);
    /// <base URL>/<type path>[/<id>][/<action>]; a missing base URL stops the process.
    QString fullRequestPath(RequestType type, const std::optional<QString>& id,
                            const std::optional<RequestAction>& action) const;

    // Remote images, through the shared ImageManager (disk and memory caches). These callbacks
    // run on the GUI thread.

    /// onComplete with the decoded image, or a null image when the answer is empty or not an
    /// image (whatever the HTTP status); onError for an invalid address or a transport error.
    void getRemoteImage(const QString& url, std::function<void(const QImage&)> onComplete,
                        std::function<void(const RequestError&)> onError);
    /// Sets the loaded image (possibly none) on the button for `state`, then calls onComplete.
    void loadRemoteImage(FrameButtonView* button, ControlState state, const QString& url,
                         std::function<void()> onComplete = {},
                         std::function<void(const RequestError&)> onError = {});

    // Media downloads into the caches directory (NetworkingServiceDownload.cpp). Progress and
    // completion run on the network thread.

    using DownloadProgress = std::function<void(double fraction)>;
    using DownloadCompletion = std::function<void(
        bool success, const std::optional<RequestError>& error, const std::optional<QUrl>& file)>;

    /// Downloads `url` (no API headers) into the caches directory under the name of
    /// cacheFileName(). Progress is written / expected bytes, unclamped: negative when the size
    /// is unknown. Only the download started last reports progress. An existing file of that
    /// name is never replaced: the download then fails with the copy error. Answers false, with
    /// no completion ever, when no destination could be made (no caches directory, or a name
    /// that cannot be a file name).
    bool performDownloadToCacheRequest(const QUrl& url, DownloadProgress onProgressUpdated,
                                       DownloadCompletion completion);
    /// The folder downloads go to, created owner-only (0700); absent when it cannot be made.
    std::optional<QString> cachesDirectory() const { return m_cachesDirectory; }
    /// Puts later downloads into `path` instead of the application's cache location; it is
    /// created owner-only when missing. Answers whether it is usable.
    bool setCachesDirectory(const QString& path);
    /// The one file name a download of `url` gets: its path components, the root included,
    /// joined with "-" and without blanks ("/media/my clip.mp4" gives "-media-myclip.mp4").
    /// Absent when the path has no component, or a component holds a "/" or NUL once decoded.
    /// Names too long for the file system keep their start and extension around a hash.
    static std::optional<QString> cacheFileName(const QUrl& url);

private:
    NetworkingService();
    struct Private;
    std::unique_ptr<Private> d;

    QNetworkAccessManager* networkManager() const;
    std::optional<QUrl> createURLInCachesDirectory(const QUrl& url) const;
    static std::optional<QString> resolveCachesDirectory(const QString& path);
    static QString defaultCachesDirectory();

    std::optional<QString> m_cachesDirectory = resolveCachesDirectory(defaultCachesDirectory());
    /// Written and read on the network thread only.
    DownloadProgress m_onProgressUpdated;

    void send(const QByteArray& method, QNetworkRequest request, const QByteArray& body,
              Completion completion);
};

}  // namespace LumoraSDK
