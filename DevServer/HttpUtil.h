#pragma once

#include <httplib.h>
#include <QJsonObject>
#include <QJsonValue>
#include <memory>
#include <optional>
#include <string>

namespace LumoraSDK::DevServer {

inline constexpr const char* kJsonContentType = "application/json";

/// Answers `status` with `value` as compact JSON.
void setJson(httplib::Response& response, int status, const QJsonValue& value);
/// Answers `status` with `body`, JSON text already serialized.
void setJsonBody(httplib::Response& response, int status, std::shared_ptr<const std::string> body);
/// Answers `status` with {"error": error, "message": message}.
void setError(httplib::Response& response, int status, const std::string& error,
              const std::string& message);

/// The request body as a JSON object; nothing when it is empty, not JSON or not an object.
std::optional<QJsonObject> jsonObjectBody(const httplib::Request& request);

/// Header names exactly as received; repeated headers are joined with ", ".
QJsonObject headersAsJson(const httplib::Headers& headers);

/// "http(s)://<Host header>", so that links work over whichever address and port the client used.
std::string requestBaseUrl(const httplib::Request& request, bool tls);

/// Percent-encodes everything but unreserved characters and "/".
std::string encodePath(const std::string& path);

/// The raw query of the request target, without "?".
std::string rawQuery(const httplib::Request& request);

/// Text of bytes that may not be UTF-8, for JSON output.
QString textOf(const std::string& bytes);

/// Writes one line to standard error; lines of concurrent threads do not interleave.
void logLine(const std::string& line);

}  // namespace LumoraSDK::DevServer
