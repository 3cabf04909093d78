#include "MediaFiles.h"

#include "HttpUtil.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <map>
#include <memory>

namespace LumoraSDK::DevServer {

namespace {

constexpr size_t kChunkSize = 64 * 1024;

bool parseNumber(std::string_view text, uint64_t& value) {
    if (text.empty()) {
        return false;
    }
    auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return ec == std::errc() && ptr == text.data() + text.size();
}

std::string httpDate(std::time_t time) {
    std::tm utc{};
    gmtime_r(&time, &utc);
    char text[64];
    std::strftime(text, sizeof text, "%a, %d %b %Y %H:%M:%S GMT", &utc);
    return text;
}

/// Whether the client's copy is still the file: If-None-Match decides when present (RFC 9110),
/// else If-Modified-Since.
bool stillValid(const httplib::Request& request, const std::string& etag,
                std::time_t modifiedSeconds) {
    if (request.has_header("If-None-Match")) {
        const std::string tags = request.get_header_value("If-None-Match");
        return tags == "*" || tags.find(etag) != std::string::npos;
    }
    if (request.has_header("If-Modified-Since")) {
        std::tm since{};
        const std::string text = request.get_header_value("If-Modified-Since");
        if (strptime(text.c_str(), "%a, %d %b %Y %H:%M:%S GMT", &since) != nullptr) {
            return modifiedSeconds <= timegm(&since);
        }
    }
    return false;
}

}  // namespace

MediaFiles::MediaFiles(const ContentLibrary& content, int maxAgeSeconds)
    : m_content(content), m_maxAgeSeconds(maxAgeSeconds) {}

std::string MediaFiles::contentType(const std::filesystem::path& file) {
    static const std::map<std::string, std::string> types{
        {".mp4", "video/mp4"},
        {".m4a", "audio/mp4"},
        {".png", "image/png"},
        {".jpg", "image/jpeg"},
        {".jpeg", "image/jpeg"},
        {".gif", "image/gif"},
        {".webp", "image/webp"},
        {".svg", "image/svg+xml"},
        {".html", "text/html; charset=utf-8"},
        {".css", "text/css; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".json", "application/json"},
        {".txt", "text/plain; charset=utf-8"},
    };
    std::string extension = file.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    const auto found = types.find(extension);
    return found == types.end() ? "application/octet-stream" : found->second;
}

MediaFiles::RangeResult MediaFiles::parseRange(const std::string& header, uint64_t size,
                                               ByteRange& range) {
    constexpr std::string_view unit = "bytes=";
    std::string_view value(header);
    if (!value.starts_with(unit) || value.find(',') != std::string_view::npos) {
        return RangeResult::Whole;
    }
    value.remove_prefix(unit.size());
    const auto dash = value.find('-');
    if (dash == std::string_view::npos) {
        return RangeResult::Whole;
    }
    const auto firstText = value.substr(0, dash);
    const auto lastText = value.substr(dash + 1);
    uint64_t first = 0;
    uint64_t last = 0;
    if (firstText.empty()) {
        // "-N": the last N bytes.
        if (!parseNumber(lastText, last)) {
            return RangeResult::Whole;
        }
        if (last == 0 || size == 0) {
            return RangeResult::Unsatisfiable;
        }
        range = {size - std::min(last, size), size - 1};
        return RangeResult::Partial;
    }
    if (!parseNumber(firstText, first) || (!lastText.empty() && !parseNumber(lastText, last))) {
        return RangeResult::Whole;
    }
    if (!lastText.empty() && last < first) {
        return RangeResult::Whole;
    }
    if (first >= size) {
        return RangeResult::Unsatisfiable;
    }
    range = {first, lastText.empty() ? size - 1 : std::min(last, size - 1)};
    return RangeResult::Partial;
}

void MediaFiles::serve(const std::string& relativePath, const httplib::Request& request,
                       httplib::Response& response) const {
    const auto file = m_content.file(relativePath);
    std::error_code ec;
    const uint64_t size = file ? std::filesystem::file_size(*file, ec) : 0;
    auto stream = file && !ec ? std::make_shared<std::ifstream>(*file, std::ios::binary) : nullptr;
    if (!stream || !*stream) {
        setError(response, 404, "not-found", "no such file: " + relativePath);
        return;
    }
    response.set_header("Accept-Ranges", "bytes");
    // Clients keep media in their disk caches for the max age, then revalidate it.
    // A max age of 0 asks clients to revalidate every time, within the same second too.
    response.set_header("Cache-Control",
                        m_maxAgeSeconds == 0
                            ? std::string("public, max-age=0, must-revalidate")
                            : "public, max-age=" + std::to_string(m_maxAgeSeconds));
    const auto modified = std::filesystem::last_write_time(*file, ec);
    const auto modifiedNs =
        std::chrono::duration_cast<std::chrono::nanoseconds>(modified.time_since_epoch()).count();
    const std::time_t modifiedSeconds =
        std::chrono::system_clock::to_time_t(std::chrono::file_clock::to_sys(modified));
    char etag[64];
    std::snprintf(etag, sizeof etag, "\"%llx-%llx\"", static_cast<unsigned long long>(size),
                  static_cast<unsigned long long>(modifiedNs));
    response.set_header("ETag", etag);
    response.set_header("Last-Modified", httpDate(modifiedSeconds));
    if (stillValid(request, etag, modifiedSeconds)) {
        response.status = 304;
        return;
    }
    ByteRange range{0, size == 0 ? 0 : size - 1};
    switch (parseRange(request.get_header_value("Range"), size, range)) {
        case RangeResult::Unsatisfiable:
            response.status = 416;
            response.set_header("Content-Range", "bytes */" + std::to_string(size));
            return;
        case RangeResult::Partial:
            response.status = 206;
            response.set_header("Content-Range", "bytes " + std::to_string(range.first) + "-" +
                                                     std::to_string(range.last) + "/" +
                                                     std::to_string(size));
            break;
        case RangeResult::Whole:
            response.status = 200;
            break;
    }
    const uint64_t length = size == 0 ? 0 : range.last - range.first + 1;
    const uint64_t start = range.first;
    if (response.status == 200 && request.has_param("chunked")) {
        // The whole file without a Content-Length, as a streaming server sends it: clients see
        // an unknown size until the last chunk.
        response.set_chunked_content_provider(contentType(*file),
                                              [stream](size_t offset, httplib::DataSink& sink) {
                                                  char buffer[kChunkSize];
                                                  stream->seekg(std::streamoff(offset));
                                                  stream->read(buffer, std::streamsize(kChunkSize));
                                                  const auto got = stream->gcount();
                                                  if (got <= 0) {
                                                      sink.done();
                                                      return true;
                                                  }
                                                  return sink.write(buffer, size_t(got));
                                              });
        return;
    }
    response.set_content_provider(
        length, contentType(*file),
        [stream, start](size_t offset, size_t wanted, httplib::DataSink& sink) {
            char buffer[kChunkSize];
            stream->seekg(std::streamoff(start + offset));
            stream->read(buffer, std::streamsize(std::min(wanted, kChunkSize)));
            const auto got = stream->gcount();
            return got > 0 && sink.write(buffer, size_t(got));
        });
}

}  // namespace LumoraSDK::DevServer
