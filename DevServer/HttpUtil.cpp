#include "HttpUtil.h"

#include <algorithm>
#include <memory>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>
#include <cctype>
#include <cstdio>
#include <mutex>
#include <set>

namespace LumoraSDK::DevServer {

void setJson(httplib::Response& response, int status, const QJsonValue& value) {
    QJsonDocument document;
    if (value.isArray()) {
        document = QJsonDocument(value.toArray());
    } else {
        document = QJsonDocument(value.toObject());
    }
    setJsonBody(
        response, status,
        std::make_shared<const std::string>(document.toJson(QJsonDocument::Compact).toStdString()));
}

void setJsonBody(httplib::Response& response, int status, std::shared_ptr<const std::string> body) {
    response.status = status;
    // Through a provider of known length, which the library never compresses: left to it, a
    // client offering brotli gets the channel list at brotli's top quality, seconds per megabyte.
    // Loopback needs no compression.
    const size_t size = body->size();
    response.set_content_provider(
        size, kJsonContentType,
        [body = std::move(body)](size_t offset, size_t length, httplib::DataSink& sink) {
            return sink.write(body->data() + offset, std::min(length, body->size() - offset));
        });
}

void setError(httplib::Response& response, int status, const std::string& error,
              const std::string& message) {
    setJson(response, status,
            QJsonObject{{"error", QString::fromStdString(error)},
                        {"message", QString::fromStdString(message)}});
}

std::optional<QJsonObject> jsonObjectBody(const httplib::Request& request) {
    QJsonParseError parseError{};
    const auto document = QJsonDocument::fromJson(
        QByteArray::fromRawData(request.body.data(), qsizetype(request.body.size())), &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject()) {
        return std::nullopt;
    }
    return document.object();
}

QJsonObject headersAsJson(const httplib::Headers& headers) {
    // The library files the connection's endpoints among the headers; the client sent none of them.
    static const std::set<std::string> kConnectionEntries{"LOCAL_ADDR", "LOCAL_PORT", "REMOTE_ADDR",
                                                          "REMOTE_PORT"};
    QJsonObject result;
    for (const auto& [name, value] : headers) {
        if (kConnectionEntries.count(name)) {
            continue;
        }
        const QString key = textOf(name);
        const QString text = textOf(value);
        const auto existing = result.value(key);
        result.insert(key, existing.isString() ? existing.toString() + ", " + text : text);
    }
    return result;
}

std::string requestBaseUrl(const httplib::Request& request, bool tls) {
    std::string host = request.get_header_value("Host");
    const bool plausible =
        !host.empty() && host.size() < 256 &&
        host.find_first_not_of(
            "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.:-[]") ==
            std::string::npos;
    if (!plausible) {
        const bool v6 = request.local_addr.find(':') != std::string::npos;
        host = (v6 ? "[" + request.local_addr + "]" : request.local_addr) + ":" +
               std::to_string(request.local_port);
    }
    return std::string(tls ? "https://" : "http://") + host;
}

std::string encodePath(const std::string& path) {
    static const char* hex = "0123456789ABCDEF";
    std::string result;
    for (unsigned char c : path) {
        if (std::isalnum(c) || c == '-' || c == '.' || c == '_' || c == '~' || c == '/') {
            result += char(c);
        } else {
            result += '%';
            result += hex[c >> 4];
            result += hex[c & 15];
        }
    }
    return result;
}

std::string rawQuery(const httplib::Request& request) {
    const auto mark = request.target.find('?');
    return mark == std::string::npos ? std::string() : request.target.substr(mark + 1);
}

QString textOf(const std::string& bytes) {
    return QString::fromUtf8(bytes.data(), qsizetype(bytes.size()));
}

void logLine(const std::string& line) {
    static std::mutex mutex;
    std::lock_guard lock(mutex);
    std::fprintf(stderr, "%s\n", line.c_str());
    std::fflush(stderr);
}

}  // namespace LumoraSDK::DevServer
