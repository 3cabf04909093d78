#include "Fault.h"

#include <QJsonDocument>
#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace LumoraSDK::DevServer {

namespace {

constexpr std::array<std::pair<Fault::BodyKind, const char*>, 6> kBodyKinds{{
    {Fault::BodyKind::Malformed, "malformed"},
    {Fault::BodyKind::Truncated, "truncated"},
    {Fault::BodyKind::Huge, "huge"},
    {Fault::BodyKind::Nested, "nested"},
    {Fault::BodyKind::InvalidUtf8, "invalid-utf8"},
    {Fault::BodyKind::WrongType, "wrong-type"},
}};

std::string compact(const QJsonArray& array) {
    return QJsonDocument(array).toJson(QJsonDocument::Compact).toStdString();
}

bool isInteger(const QJsonValue& value) {
    return value.isDouble() && value.toDouble() == double(value.toInteger());
}

}  // namespace

std::optional<Fault> Fault::fromJson(const QJsonObject& object, std::string& error,
                                     const std::string& route) {
    Fault fault;
    fault.route = route.empty() ? object.value("route").toString().toStdString() : route;
    if (fault.route.empty() || fault.route[0] != '/') {
        error = "\"route\" must be a path starting with \"/\"";
        return std::nullopt;
    }
    auto integer = [&](const char* key, int minimum, int maximum, auto& out) {
        if (!object.contains(key)) {
            return true;
        }
        const auto value = object.value(key);
        if (!isInteger(value) || value.toInteger() < minimum || value.toInteger() > maximum) {
            error = "\"" + std::string(key) + "\" must be an integer from " +
                    std::to_string(minimum) + " to " + std::to_string(maximum);
            return false;
        }
        out = int(value.toInteger());
        return true;
    };
    auto text = [&](const char* key, std::optional<std::string>& out) {
        if (!object.contains(key)) {
            return true;
        }
        if (!object.value(key).isString()) {
            error = "\"" + std::string(key) + "\" must be a string";
            return false;
        }
        out = object.value(key).toString().toStdString();
        return true;
    };
    if (!integer("status", 100, 599, fault.status) ||
        !integer("delayMs", 0, 600000, fault.delayMs) ||
        !integer("times", 1, 1000000, fault.times) || !text("body", fault.body) ||
        !text("contentType", fault.contentType) || !text("location", fault.location)) {
        return std::nullopt;
    }
    if (object.contains("drop")) {
        if (!object.value("drop").isBool()) {
            error = "\"drop\" must be a boolean";
            return std::nullopt;
        }
        fault.drop = object.value("drop").toBool();
    }
    if (object.contains("bodyKind")) {
        const auto name = object.value("bodyKind").toString().toStdString();
        for (const auto& [kind, kindName] : kBodyKinds) {
            if (name == kindName) {
                fault.bodyKind = kind;
            }
        }
        if (!fault.bodyKind) {
            error =
                "\"bodyKind\" must be one of malformed, truncated, huge, nested, "
                "invalid-utf8, wrong-type";
            return std::nullopt;
        }
    }
    return fault;
}

QJsonObject Fault::toJson() const {
    QJsonObject object{{"route", QString::fromStdString(route)}, {"delayMs", delayMs}};
    if (status) {
        object.insert("status", *status);
    }
    if (body) {
        object.insert("body", QString::fromStdString(*body));
    }
    for (const auto& [kind, kindName] : kBodyKinds) {
        if (bodyKind == kind) {
            object.insert("bodyKind", kindName);
        }
    }
    if (contentType) {
        object.insert("contentType", QString::fromStdString(*contentType));
    }
    if (location) {
        object.insert("location", QString::fromStdString(*location));
    }
    object.insert("drop", drop);
    if (times) {
        object.insert("times", *times);
    }
    return object;
}

bool Fault::matches(const std::string& path) const {
    if (route.ends_with('*')) {
        return path.starts_with(std::string_view(route).substr(0, route.size() - 1));
    }
    return path == route;
}

size_t Fault::Body::read(size_t offset, size_t length, char* out) const {
    size_t written = 0;
    while (written < length && offset < size()) {
        if (offset < spacesAt) {
            const size_t n = std::min(length - written, spacesAt - offset);
            std::memcpy(out + written, text.data() + offset, n);
            written += n;
            offset += n;
        } else if (offset < spacesAt + spaces) {
            const size_t n = std::min(length - written, spacesAt + spaces - offset);
            std::memset(out + written, ' ', n);
            written += n;
            offset += n;
        } else {
            const size_t n = std::min(length - written, size() - offset);
            std::memcpy(out + written, text.data() + offset - spaces, n);
            written += n;
            offset += n;
        }
    }
    return written;
}

Fault::Body Fault::replacementBody(const QJsonArray& channels) const {
    if (body) {
        return {*body};
    }
    if (!bodyKind) {
        return {R"({"error":"fault","message":"injected by lumora-devserver"})"};
    }
    switch (*bodyKind) {
        case BodyKind::Malformed:
            return {R"([{"id": "broken", "title": "Unclosed, "pages": [{,]})"};
        case BodyKind::Truncated: {
            const std::string full = compact(channels);
            return {full.substr(0, full.size() / 2)};
        }
        case BodyKind::Huge: {
            // Still the valid channel list: whitespace before the closing bracket makes it large
            // without making it wrong.
            std::string full = compact(channels);
            const size_t padding = kHugeBodySize > full.size() ? kHugeBodySize - full.size() : 0;
            const size_t before = full.size() - 1;
            return {std::move(full), padding, before};
        }
        case BodyKind::Nested:
            return {std::string(kNestingDepth, '[') + std::string(kNestingDepth, ']')};
        case BodyKind::InvalidUtf8: {
            std::string full = compact(channels);
            const std::string bad = "\xff\xfe\xc3\x28";
            const auto title = full.find("\"title\":\"");
            if (title == std::string::npos) {
                return {"[{\"id\":\"" + bad + "\"}]"};
            }
            full.insert(title + 9, bad);
            return {full};
        }
        case BodyKind::WrongType:
            return {QJsonDocument(QJsonObject{{"channels", channels}})
                        .toJson(QJsonDocument::Compact)
                        .toStdString()};
    }
    return {};
}

}  // namespace LumoraSDK::DevServer
