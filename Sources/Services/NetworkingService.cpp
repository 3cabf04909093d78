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
        headers.insert(QStringLiteral("x-lumora-api-key"), *key);
    }
    if (const auto token = store.string(DatabaseService::Key::accessToken);
        token && !token->isEmpty()) {
        headers.insert(QStringLiteral("Authorization"), QStringLiteral("Bearer ") + *token);
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
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    QNetworkAccessManager* manager = d->manager;
    QMetaObject::invokeMethod(
        manager, [manager, method, request, body, completion = std::move(completion)] {
            QNetworkReply* reply = manager->sendCustomRequest(request, method, body);
            QObject::connect(reply, &QNetworkReply::finished, reply, [reply, method, completion] {
                reply->deleteLater();
                const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
                std::optional<HttpResponse> response;
                if (status.isValid()) {
                    response = HttpResponse{reply->url(), status.toInt(), reply->rawHeaderPairs()};
                }
                const QString verb = QString::fromLatin1(method);
                if (!response) {
                    logger().log(verb + QStringLiteral(" response error: ") + reply->errorString(),
                                 LogLevel::error);
                } else {
                    logger().log(verb + QStringLiteral(" response: ") + response->description(),
                                 LogLevel::debug);
                }
                std::optional<QByteArray> data;
                if (response) {
                    data = reply->readAll();
                }
                const bool ok = checkStatusCodeOK(
                    response ? std::optional<int>(response->statusCode) : std::nullopt);
                completion(response, data, ok);
            });
        });
}

}  // namespace LumoraSDK
