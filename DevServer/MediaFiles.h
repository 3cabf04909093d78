#pragma once

#include "ContentLibrary.h"

#include <httplib.h>
#include <filesystem>
#include <optional>
#include <string>

namespace LumoraSDK::DevServer {

/// Serves the files of a content directory, with single byte ranges, so that video players can
/// seek and resume.
class MediaFiles {
public:
    /// How long clients may use a file without asking again, unless told otherwise.
    static constexpr int kDefaultMaxAgeSeconds = 86400;

    explicit MediaFiles(const ContentLibrary& content, int maxAgeSeconds = kDefaultMaxAgeSeconds);

    /// Answers with the file at `relativePath`, its whole body or the requested byte range;
    /// 404 for a path that is not a file of the content directory. Every answer carries an ETag
    /// and Last-Modified; a request whose If-None-Match or If-Modified-Since still holds gets 304.
    void serve(const std::string& relativePath, const httplib::Request& request,
               httplib::Response& response) const;

    static std::string contentType(const std::filesystem::path& file);

    /// A byte range [first, last] of a body of `size` bytes.
    struct ByteRange {
        uint64_t first = 0;
        uint64_t last = 0;
    };
    enum class RangeResult { Whole, Partial, Unsatisfiable };
    /// Reads a Range header value. A missing, malformed or multi-range header means the whole
    /// body (a server may ignore Range).
    static RangeResult parseRange(const std::string& header, uint64_t size, ByteRange& range);

private:
    const ContentLibrary& m_content;
    const int m_maxAgeSeconds;
};

}  // namespace LumoraSDK::DevServer
