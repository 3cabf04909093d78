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

private:
    NetworkingService();
    struct Private;
    std::unique_ptr<Private> d;

    void send(const QByteArray& method, QNetworkRequest request, const QByteArray& body,
              Completion completion);
};

}  // namespace LumoraSDK
