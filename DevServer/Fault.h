#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <optional>
#include <string>

namespace LumoraSDK::DevServer {

/// A misbehaviour injected on a route: a delay, a replacement answer, or a dropped connection.
struct Fault {
    enum class BodyKind { Malformed, Truncated, Huge, Nested, InvalidUtf8, WrongType };

    /// Size of the Huge body.
    static constexpr size_t kHugeBodySize = 50u * 1024 * 1024;
    /// Nesting depth of the Nested body.
    static constexpr size_t kNestingDepth = 100000;

    std::string route;  // an exact path, or a prefix ending in "*"
    std::optional<int> status;
    int delayMs = 0;
    std::optional<std::string> body;
    std::optional<BodyKind> bodyKind;
    std::optional<std::string> contentType;
    std::optional<std::string> location;  // a Location header, for redirects
    bool drop = false;
    std::optional<int> times;  // requests left; nothing: until cleared

    /// Reads {"route", "status", "delayMs", "body", "bodyKind", "contentType", "location", "drop",
    /// "times"};
    /// `route` is taken from the object unless given. Returns nothing and fills `error` when a
    /// field has the wrong type or value.
    static std::optional<Fault> fromJson(const QJsonObject& object, std::string& error,
                                         const std::string& route = {});
    QJsonObject toJson() const;

    bool matches(const std::string& path) const;
    /// Whether the normal answer is replaced; a fault with only a delay slows the normal answer.
    bool replacesAnswer() const { return drop || status || body || bodyKind; }

    /// A replacement body: `text` with `spaces` blanks inserted at `spacesAt`, so that the huge
    /// body costs no memory.
    struct Body {
        std::string text;
        size_t spaces = 0;
        size_t spacesAt = 0;

        size_t size() const { return text.size() + spaces; }
        /// Up to `length` bytes from `offset` into `out`; returns how many.
        size_t read(size_t offset, size_t length, char* out) const;
    };

    /// The replacement body: `body` if given, else the generated `bodyKind` body built around
    /// `channels` (the list the route would normally answer with), else a short JSON error.
    Body replacementBody(const QJsonArray& channels) const;
};

}  // namespace LumoraSDK::DevServer
