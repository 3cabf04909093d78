#include "ApiRoutes.h"

#include "HttpUtil.h"

#include <QJsonDocument>
#include <array>

namespace LumoraSDK::DevServer {

namespace {

constexpr const char* kApiKeyHeader = "x-lumora-api-key";
constexpr std::string_view kBearerPrefix = "Bearer ";

constexpr std::array<const char*, 9> kActivityTypes{
    "openedChannel",   "dismissedChannel", "skipPage",          "skipChannel",  "completePage",
    "completeChannel", "swipeUpOnPage",    "shareButtonTapped", "previousPage",
};

enum class Route { Auth, UpdateExternalId, Channels, ViewingHistory, Activity };

struct RouteEntry {
    const char* path;
    const char* method;
    Route route;
};

constexpr std::array<RouteEntry, 5> kRoutes{{
    {"/api/auth", "POST", Route::Auth},
    {"/api/app/user/updateExternalId", "POST", Route::UpdateExternalId},
    {"/api/app/channel/channelsForUser", "GET", Route::Channels},
    {"/api/app/viewingHistory/recordViewingHistory", "POST", Route::ViewingHistory},
    {"/api/app/activity/recordActivity", "POST", Route::Activity},
}};

void setEmptyObject(httplib::Response& response) {
    setJson(response, 200, QJsonObject{});
}

void setNotAnObject(httplib::Response& response) {
    setError(response, 400, "bad-request", "the body must be a JSON object");
}

}  // namespace

ApiRoutes::ApiRoutes(const ContentLibrary& content, UserDirectory& users, EventJournal& journal,
                     std::string apiKey, bool tls)
    : m_content(content)
    , m_users(users)
    , m_journal(journal)
    , m_apiKey(std::move(apiKey))
    , m_tls(tls) {}

bool ApiRoutes::isActivityType(const QString& value) {
    for (const char* type : kActivityTypes) {
        if (value == QLatin1String(type)) {
            return true;
        }
    }
    return false;
}

bool ApiRoutes::hasApiKey(const httplib::Request& request) const {
    return request.has_header(kApiKeyHeader) && request.get_header_value(kApiKeyHeader) == m_apiKey;
}

std::string ApiRoutes::bearerToken(const httplib::Request& request) {
    const std::string value = request.get_header_value("Authorization");
    return value.starts_with(kBearerPrefix) ? value.substr(kBearerPrefix.size()) : std::string();
}

void ApiRoutes::handle(const httplib::Request& request, httplib::Response& response) {
    const RouteEntry* entry = nullptr;
    for (const auto& candidate : kRoutes) {
        if (request.path == candidate.path) {
            entry = &candidate;
        }
    }
    if (!entry) {
        setError(response, 404, "not-found", "no API route " + request.path);
        return;
    }
    const bool head = request.method == "HEAD" && std::string_view(entry->method) == "GET";
    if (request.method != entry->method && !head) {
        response.set_header("Allow", entry->method);
        setError(response, 405, "method-not-allowed",
                 request.path + " answers " + entry->method + " only");
        return;
    }
    if (!hasApiKey(request)) {
        setError(response, 401, "unauthorized",
                 std::string("missing or wrong ") + kApiKeyHeader + " header");
        return;
    }
    if (entry->route == Route::Auth) {
        postAuth(request, response);
        return;
    }
    const auto user = m_users.userForToken(bearerToken(request));
    if (!user) {
        setError(response, 401, "unauthorized", "missing or unknown bearer token");
        return;
    }
    switch (entry->route) {
        case Route::Auth:
            break;
        case Route::UpdateExternalId:
            postUpdateExternalId(request, response, *user);
            break;
        case Route::Channels:
            getChannels(request, response, *user);
            break;
        case Route::ViewingHistory:
            postViewingHistory(request, response, *user);
            break;
        case Route::Activity:
            postActivity(request, response, *user);
            break;
    }
}

void ApiRoutes::postAuth(const httplib::Request& request, httplib::Response& response) {
    const auto body = jsonObjectBody(request);
    if (!body) {
        setNotAnObject(response);
        return;
    }
    std::optional<std::string> externalId;
    if (body->contains("externalId")) {
        if (!body->value("externalId").isString()) {
            setError(response, 400, "bad-request", "\"externalId\" must be a string");
            return;
        }
        externalId = body->value("externalId").toString().toStdString();
    }
    const std::string token = m_users.issueToken(externalId);
    setJson(response, 200,
            QJsonObject{{"access_token", QString::fromStdString(token)},
                        {"expires_in", kTokenLifetime}});
}

void ApiRoutes::postUpdateExternalId(const httplib::Request& request, httplib::Response& response,
                                     const User&) {
    const auto body = jsonObjectBody(request);
    if (!body) {
        setNotAnObject(response);
        return;
    }
    if (!body->value("externalId").isString()) {
        setError(response, 400, "bad-request", "\"externalId\" must be a string");
        return;
    }
    m_users.rebind(bearerToken(request), body->value("externalId").toString().toStdString());
    setEmptyObject(response);
}

void ApiRoutes::getChannels(const httplib::Request& request, httplib::Response& response,
                            const User& user) {
    ViewedPages viewed = m_users.viewedPages(user);
    std::string baseUrl = requestBaseUrl(request, m_tls);
    std::shared_ptr<const std::string> body;
    {
        const std::lock_guard lock(m_lastChannelListMutex);
        if (m_lastChannelList.body && m_lastChannelList.viewed == viewed &&
            m_lastChannelList.baseUrl == baseUrl) {
            body = m_lastChannelList.body;
        }
    }
    if (!body) {
        body = std::make_shared<const std::string>(
            QJsonDocument(m_content.channelsFor(viewed, baseUrl))
                .toJson(QJsonDocument::Compact)
                .toStdString());
        const std::lock_guard lock(m_lastChannelListMutex);
        m_lastChannelList = {std::move(viewed), std::move(baseUrl), body};
    }
    setJsonBody(response, 200, std::move(body));
}

void ApiRoutes::postViewingHistory(const httplib::Request& request, httplib::Response& response,
                                   const User& user) {
    const auto body = jsonObjectBody(request);
    if (!body) {
        setNotAnObject(response);
        return;
    }
    m_journal.recordEvent("viewingHistory", user.externalId, *body);
    const auto pageId = body->value("pageStoryId");
    const auto channelId = body->value("ChannelStoryId");
    if (pageId.isString() && channelId.isString()) {
        m_users.recordView(user, channelId.toString().toStdString(),
                           pageId.toString().toStdString());
    }
    setEmptyObject(response);
}

void ApiRoutes::postActivity(const httplib::Request& request, httplib::Response& response,
                             const User& user) {
    const auto body = jsonObjectBody(request);
    if (!body) {
        setNotAnObject(response);
        return;
    }
    if (!isActivityType(body->value("activityItemType").toString())) {
        setError(response, 400, "bad-request", "unknown \"activityItemType\"");
        return;
    }
    m_journal.recordEvent("activity", user.externalId, *body);
    setEmptyObject(response);
}

}  // namespace LumoraSDK::DevServer
