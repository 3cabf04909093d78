#include "MediaFiles.h"

#include "HttpUtil.h"

#include <algorithm>
#include <charconv>
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

}  // namespace

MediaFiles::MediaFiles(const ContentLibrary& content) : m_content(content) {}

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
    // Media never changes under its address: clients may keep it in their disk caches.
    response.set_header("Cache-Control", "public, max-age=86400");
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
