#include "DevRoutes.h"

#include "HttpUtil.h"

#include <QJsonDocument>
#include <cstdlib>

namespace LumoraSDK::DevServer {

namespace {

constexpr size_t kIndexEventCount = 20;

std::string escapeHtml(const QString& text) {
    return text.toHtmlEscaped().toStdString();
}

std::string link(const QString& url, const QString& label) {
    return "<a href=\"" + escapeHtml(url) + "\">" + escapeHtml(label) + "</a>";
}

}  // namespace

DevRoutes::DevRoutes(const ContentLibrary& content, UserDirectory& users, EventJournal& journal,
                     FaultTable& faults, bool tls)
    : m_content(content), m_users(users), m_journal(journal), m_faults(faults), m_tls(tls) {}

void DevRoutes::handle(const httplib::Request& request, httplib::Response& response) {
    const std::string& method = request.method;
    const std::string& path = request.path;
    const bool get = method == "GET" || method == "HEAD";
    if (path == "/" && get) {
        response.status = 200;
        response.set_content(indexPage(requestBaseUrl(request, m_tls)), "text/html; charset=utf-8");
    } else if (path == "/dev/events" && get) {
        // ?after=N: only what came after event N, for clients that poll.
        const std::string after = request.get_param_value("after");
        setJson(response, 200, m_journal.events(after.empty() ? -1 : std::atoll(after.c_str())));
    } else if (path == "/dev/requests" && get) {
        setJson(response, 200,
                m_journal.requests(request.has_param("prefix") ? request.get_param_value("prefix")
                                                               : "/api/"));
    } else if (path == "/dev/reset" && method == "POST") {
        m_journal.clear();
        m_users.clear();
        m_faults.clear();
        setJson(response, 200, QJsonObject{});
    } else if (path == "/dev/faults" && get) {
        setJson(response, 200, m_faults.toJson());
    } else if (path == "/dev/faults" && method == "POST") {
        postFault(request, response);
    } else if (path == "/dev/faults" && method == "DELETE") {
        m_faults.clear();
        setJson(response, 200, QJsonObject{});
    } else if (path == "/" || path == "/dev/events" || path == "/dev/requests" ||
               path == "/dev/reset" || path == "/dev/faults") {
        setError(response, 405, "method-not-allowed", method + " is not answered on " + path);
    } else {
        setError(response, 404, "not-found", "no route " + path);
    }
}

void DevRoutes::postFault(const httplib::Request& request, httplib::Response& response) {
    const auto body = jsonObjectBody(request);
    if (!body) {
        setError(response, 400, "bad-request", "the body must be a JSON object");
        return;
    }
    std::string error;
    const auto fault = Fault::fromJson(*body, error);
    if (!fault) {
        setError(response, 400, "bad-request", error);
        return;
    }
    m_faults.set(*fault);
    logLine("fault set: " +
            QJsonDocument(fault->toJson()).toJson(QJsonDocument::Compact).toStdString());
    setJson(response, 200, fault->toJson());
}

std::string DevRoutes::indexPage(const std::string& baseUrl) const {
    std::string html = R"(<!doctype html>
<html><head><meta charset="utf-8"><title>lumora-devserver</title>
<style>body{font-family:sans-serif;margin:2em;max-width:70em}td,th{padding:.2em .6em;text-align:left;vertical-align:top}
img{width:48px;height:48px;border-radius:50%}code{background:#eee;padding:0 .2em}</style></head><body>
<h1>lumora-devserver</h1>
<p>Content API for LumoraSDK at <code>)" +
                       escapeHtml(QString::fromStdString(baseUrl)) +
                       R"(</code>, content from <code>)" +
                       escapeHtml(QString::fromStdString(m_content.directory().string())) +
                       R"(</code>.</p>
<h2>Routes</h2><ul>
<li><code>POST /api/auth</code>, <code>POST /api/app/user/updateExternalId</code>,
<code>GET /api/app/channel/channelsForUser</code>,
<code>POST /api/app/viewingHistory/recordViewingHistory</code>,
<code>POST /api/app/activity/recordActivity</code> (header <code>x-lumora-api-key</code>; bearer token)</li>
<li><code>GET /media/&lt;path&gt;</code> (Range supported), <code>GET /pages/&lt;name&gt;.html</code></li>
<li><a href="/dev/events">GET /dev/events</a>, <a href="/dev/requests">GET /dev/requests</a>,
<a href="/dev/faults">GET /dev/faults</a>, <code>POST /dev/faults</code>, <code>DELETE /dev/faults</code>,
<code>POST /dev/reset</code></li></ul>
<h2>Channels</h2><table><tr><th></th><th>id</th><th>title</th><th>status</th><th>pages</th></tr>
)";
    for (const auto& value : m_content.channelsFor({}, baseUrl)) {
        const auto channel = value.toObject();
        html += "<tr><td><img alt=\"\" src=\"" +
                escapeHtml(channel.value("profilePictureUrl").toString()) + "\"></td><td>" +
                escapeHtml(channel.value("id").toString()) + "</td><td>" +
                escapeHtml(channel.value("title").toString()) + "</td><td>" +
                escapeHtml(channel.value("status").toString()) + "</td><td>";
        int number = 0;
        for (const auto& pageValue : channel.value("pages").toArray()) {
            const auto page = pageValue.toObject();
            html += link(page.value("url").toString(),
                         QString("%1 %2").arg(++number).arg(page.value("type").toString())) +
                    " (" + std::to_string(page.value("duration").toInt()) + " s";
            if (page.contains("swipeUpUrl")) {
                html += ", " + link(page.value("swipeUpUrl").toString(), "swipe-up");
            }
            html += ")<br>";
        }
        html += "</td></tr>\n";
    }
    html +=
        "</table>\n<h2>Recent events</h2><table><tr><th>seq</th><th>kind</th><th>user</th>"
        "<th>body</th></tr>\n";
    for (const auto& value : m_journal.recentEvents(kIndexEventCount)) {
        const auto event = value.toObject();
        html += "<tr><td>" + std::to_string(event.value("seq").toInteger()) + "</td><td>" +
                escapeHtml(event.value("kind").toString()) + "</td><td>" +
                escapeHtml(event.value("user").toString()) + "</td><td><code>" +
                escapeHtml(QString::fromUtf8(
                    QJsonDocument(event.value("body").toObject()).toJson(QJsonDocument::Compact))) +
                "</code></td></tr>\n";
    }
    html += "</table></body></html>\n";
    return html;
}

}  // namespace LumoraSDK::DevServer
