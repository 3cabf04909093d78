#include "NetworkingService.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QThread>
#include <QUrlQuery>

#include "Lumora.h"
#include "Platform/UserDefaults.h"
#include "Services/DatabaseService.h"
#include "Services/Logger.h"

namespace LumoraSDK {

namespace {

/// Headers whose values are credentials: the API key and the bearer token.
bool isSecretHeader(const QString& name) {
    return name.compare(QLatin1String("x-lumora-api-key"), Qt::CaseInsensitive) == 0 ||
           name.compare(QLatin1String("Authorization"), Qt::CaseInsensitive) == 0;
}

/// Headers as printed in a log line: credentials are replaced, so a log shared for support
/// never hands out the key or the viewer's session.
QString describeOptional(const std::optional<HttpHeaders>& map) {
    if (!map) {
        return QStringLiteral("nil");
    }
    QStringList pairs;
    for (auto it = map->begin(); it != map->end(); ++it) {
        pairs.append(QStringLiteral("\"%1\": \"%2\"")
                         .arg(it.key(), isSecretHeader(it.key()) ? QStringLiteral("<redacted>")
                                                                 : it.value()));
    }
    return QStringLiteral("Optional([%1])")
        .arg(pairs.isEmpty() ? QStringLiteral(":") : pairs.join(QStringLiteral(", ")));
}

QString describeOptional(const std::optional<QJsonObject>& object) {
    if (!object) {
        return QStringLiteral("nil");
    }
    return QStringLiteral("Optional(%1)")
        .arg(QString::fromUtf8(QJsonDocument(*object).toJson(QJsonDocument::Compact)));
}

/// Only absolute URLs with a host can be sent.
std::optional<QUrl> usableUrl(const QString& path) {
    const QUrl url(path, QUrl::StrictMode);
    if (!url.isValid() || url.isRelative() || url.host().isEmpty()) {
        return std::nullopt;
    }
    return url;
}

// Redirects are followed as the platform's URL session does: up to ten hops, never from HTTPS
// down to HTTP, and the API key and token only to the origin the caller addressed.
constexpr int kMaximumRedirects = 10;
const QByteArray kApiKeyHeader = QByteArrayLiteral("x-lumora-api-key");
const QByteArray kAuthorizationHeader = QByteArrayLiteral("Authorization");

/// One request and the redirects it is sent on, on the network thread. The completion runs once,
/// with the last answer or with none when a hop is refused.
struct Transfer : std::enable_shared_from_this<Transfer> {
    QNetworkAccessManager* manager = nullptr;
    QUrl origin;  // where the caller sent it: the key and token go only to this origin
    QByteArray verb;
    NetworkingService::Completion completion;
    int redirects = 0;

    void start(const QByteArray& method, const QNetworkRequest& request, const QByteArray& body);
    void finish(QNetworkReply* reply, const QByteArray& method, const QNetworkRequest& request,
                const QByteArray& body);
    void fail(const QString& reason) {
        logger().log(QString::fromLatin1(verb) + QStringLiteral(" response error: ") + reason,
                     LogLevel::error);
        NetworkingService::checkStatusCodeOK(std::nullopt);
        completion(std::nullopt, std::nullopt, false);
    }
};

bool isRedirect(int status) {
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

bool sameOrigin(const QUrl& a, const QUrl& b) {
    auto port = [](const QUrl& url) {
        return url.port(url.scheme() == QLatin1String("https") ? 443 : 80);
    };
    return a.scheme() == b.scheme() && a.host().compare(b.host(), Qt::CaseInsensitive) == 0 &&
           port(a) == port(b);
}

void Transfer::start(const QByteArray& method, const QNetworkRequest& request,
                     const QByteArray& body) {
    QNetworkReply* reply = manager->sendCustomRequest(request, method, body);
    // The reply keeps this transfer alive until its last hop has finished.
    QObject::connect(reply, &QNetworkReply::finished, reply,
                     [self = shared_from_this(), reply, method, request, body] {
                         self->finish(reply, method, request, body);
                     });
}

void Transfer::finish(QNetworkReply* reply, const QByteArray& method,
                      const QNetworkRequest& request, const QByteArray& body) {
    reply->deleteLater();
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    const QByteArray location = reply->rawHeader("Location");
    if (status.isValid() && isRedirect(status.toInt()) && !location.isEmpty()) {
        const QUrl from = reply->url();
        const QUrl to = from.resolved(QUrl::fromEncoded(location));
        if (redirects == kMaximumRedirects) {
            fail(QStringLiteral("too many redirects (more than %1), the last to %2")
                     .arg(kMaximumRedirects)
                     .arg(to.toString()));
        } else if (to.scheme() != QLatin1String("http") && to.scheme() != QLatin1String("https")) {
            fail(QStringLiteral("redirect to an unsupported address %1").arg(to.toString()));
        } else if (from.scheme() == QLatin1String("https") &&
                   to.scheme() == QLatin1String("http")) {
            fail(QStringLiteral("refused redirect from HTTPS to HTTP (%1)").arg(to.toString()));
        } else {
            ++redirects;
            logger().log(QString::fromLatin1(verb) + QStringLiteral(" redirect %1: %2 -> %3")
                                                         .arg(status.toInt())
                                                         .arg(from.toString(), to.toString()),
                         LogLevel::debug);
            QNetworkRequest next = request;
            next.setUrl(to);
            if (!sameOrigin(origin, to)) {
                next.setRawHeader(kApiKeyHeader, QByteArray());
                next.setRawHeader(kAuthorizationHeader, QByteArray());
            }
            // A 303, and a 301 or 302 after a POST, ask for the new address with a bodiless GET.
            const bool toGet =
                status.toInt() == 303 ||
                (method == "POST" && (status.toInt() == 301 || status.toInt() == 302));
            start(toGet ? QByteArray("GET") : method, next, toGet ? QByteArray() : body);
        }
        return;
    }
    std::optional<HttpResponse> response;
    if (status.isValid()) {
        response = HttpResponse{reply->url(), status.toInt(), reply->rawHeaderPairs()};
    }
    const QString verbText = QString::fromLatin1(verb);
    if (!response) {
        logger().log(verbText + QStringLiteral(" response error: ") + reply->errorString(),
                     LogLevel::error);
    } else {
        logger().log(verbText + QStringLiteral(" response: ") + response->description(),
                     LogLevel::debug);
    }
    std::optional<QByteArray> data;
    if (response) {
        data = reply->readAll();
    }
    const bool ok = NetworkingService::checkStatusCodeOK(
        response ? std::optional<int>(response->statusCode) : std::nullopt);
    completion(response, data, ok);
}

}  // namespace

QString HttpResponse::description() const {
    return QStringLiteral("<HTTPURLResponse> { URL: %1 } { Status Code: %2 }")
        .arg(url.toString())
        .arg(statusCode);
}

void addHeaders(QNetworkRequest& request, const std::optional<HttpHeaders>& headers) {
    if (!headers) {
        return;
    }
    for (auto it = headers->begin(); it != headers->end(); ++it) {
        request.setRawHeader(it.key().toUtf8(), it.value().toUtf8());
    }
}

struct NetworkingService::Private {
    QThread thread;
    QNetworkAccessManager* manager = nullptr;  // lives on `thread`
};

NetworkingService& NetworkingService::sharedInstance() {
    // Never destroyed: completions may still be in flight while the process winds down.
    static NetworkingService* instance = new NetworkingService();
    return *instance;
}

NetworkingService::NetworkingService() : d(std::make_unique<Private>()) {
    d->thread.setObjectName(QStringLiteral("LumoraNetworking"));
    d->thread.start();
    d->manager = new QNetworkAccessManager();
    d->manager->moveToThread(&d->thread);
    QObject::connect(&d->thread, &QThread::finished, d->manager, &QObject::deleteLater);
}

NetworkingService::~NetworkingService() {
    d->thread.quit();
    d->thread.wait();
}

QNetworkAccessManager* NetworkingService::networkManager() const {
    return d->manager;
}

HttpHeaders NetworkingService::requestHeaders() const {
    HttpHeaders headers{
        {QStringLiteral("ClientPlatform"), QStringLiteral("iOS")},
        {QStringLiteral("accept"), QStringLiteral("application/json")},
        {QStringLiteral("Content-Type"), QStringLiteral("application/json")},
    };
    QString userAgent = QLatin1String(kClientLabel) + QStringLiteral(" - Client [iOS]");
    if (const auto version = Lumora::version()) {
        headers.insert(QStringLiteral("ClientVersion"), *version);
        userAgent += QStringLiteral(" - Version [%1]").arg(*version);
    }
    const UserDefaults& store = DatabaseService::sharedInstance().userDefaults();
    if (const auto key = store.string(DatabaseService::Key::apiKey); key && !key->isEmpty()) {
        headers.insert(QString::fromLatin1(kApiKeyHeader), *key);
    }
    if (const auto token = store.string(DatabaseService::Key::accessToken);
        token && !token->isEmpty()) {
        headers.insert(QString::fromLatin1(kAuthorizationHeader),
                       QStringLiteral("Bearer ") + *token);
    }
    headers.insert(QStringLiteral("User-Agent"), userAgent);
    return headers;
}

bool NetworkingService::checkStatusCodeOK(std::optional<int> statusCode) {
    if (!statusCode) {
        logger().log(QStringLiteral("parseStatusCode - status code is nil!"), LogLevel::debug);
        return false;
    }
    return *statusCode == 200 || *statusCode == 201 || *statusCode == 204;
}

QString NetworkingService::fullRequestPath(RequestType type, const std::optional<QString>& id,
                                           const std::optional<RequestAction>& action) const {
    const auto base = Lumora::sharedInstance().baseApiUrl();
    if (!base) {
        qFatal(
            "NetworkingService - no API base URL: run Lumora::initialize with a valid ApiBaseUrl "
            "before making requests");
    }
    QStringList components{path(type)};
    if (id && !id->isEmpty()) {
        components.append(*id);
    }
    if (action) {
        components.append(path(*action));
    }
    QUrl url = *base;
    QString joined = url.path();
    for (const QString& component : components) {
        if (!joined.endsWith(QLatin1Char('/'))) {
            joined += QLatin1Char('/');
        }
        joined += component;
    }
    url.setPath(joined);
    return url.toString(QUrl::FullyEncoded);
}

void NetworkingService::performGetRequest(const QString& path,
                                          const std::optional<HttpHeaders>& params,
                                          const std::optional<HttpHeaders>& headers,
                                          Completion completion) {
    logger().log(QStringLiteral("GET request args - path:%1, params: %2, headers: %3")
                     .arg(path, describeOptional(params), describeOptional(headers)),
                 LogLevel::info);
    auto url = usableUrl(path);
    if (!url) {
        return;  // nothing to send, and nobody is told
    }
    if (params) {
        QUrlQuery query;
        for (auto it = params->begin(); it != params->end(); ++it) {
            query.addQueryItem(it.key(), it.value());
        }
        url->setQuery(query);
    }
    QNetworkRequest request(*url);
    addHeaders(request, headers ? headers : std::optional<HttpHeaders>(requestHeaders()));
    logger().log(QStringLiteral("GET request: ") + url->toString(), LogLevel::debug);
    send("GET", std::move(request), {}, std::move(completion));
}

void NetworkingService::performPostRequest(const QString& path,
                                           const std::optional<QJsonObject>& params,
                                           const std::optional<HttpHeaders>& headers,
                                           Completion completion) {
    logger().log(QStringLiteral("POST request args - path:%1, params: %2, headers: %3")
                     .arg(path, describeOptional(params), describeOptional(headers)),
                 LogLevel::info);
    const auto url = usableUrl(path);
    if (!url) {
        completion(std::nullopt, std::nullopt, false);
        return;
    }
    QNetworkRequest request(*url);
    const QByteArray body =
        params ? QJsonDocument(*params).toJson(QJsonDocument::Compact) : QByteArray();
    addHeaders(request, headers ? headers : std::optional<HttpHeaders>(requestHeaders()));
    logger().log(QStringLiteral("POST request: ") + url->toString(), LogLevel::debug);
    send("POST", std::move(request), body, std::move(completion));
}

void NetworkingService::send(const QByteArray& method, QNetworkRequest request,
                             const QByteArray& body, Completion completion) {
    request.setTransferTimeout(kTimeoutSeconds * 1000);
    // Redirects are followed here rather than by Qt, to decide per hop which headers go along.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    auto transfer = std::make_shared<Transfer>();
    transfer->manager = d->manager;
    transfer->origin = request.url();
    transfer->verb = method;
    transfer->completion = std::move(completion);
    QMetaObject::invokeMethod(
        d->manager, [transfer, method, request, body] { transfer->start(method, request, body); });
}

}  // namespace LumoraSDK
