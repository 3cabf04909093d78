#include "Models/ChannelList.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QThread>
#include <algorithm>
#include <future>
#include <vector>

namespace LumoraSDK {

namespace {

// Below this many bytes a part costs more in thread start-up than it saves in decoding.
constexpr qsizetype kMinimumPartBytes = 128 * 1024;

bool isJsonSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// The list when `json` is an array made only of objects.
std::optional<QJsonArray> parseList(const QByteArray& json) {
    const QJsonDocument document = QJsonDocument::fromJson(json);
    QJsonArray list = document.array();
    if (!document.isArray() ||
        !std::all_of(list.begin(), list.end(), [](const QJsonValue& v) { return v.isObject(); })) {
        return std::nullopt;
    }
    return list;
}

QList<Channel> decodeList(const QJsonArray& list) {
    QList<Channel> channels;
    channels.reserve(list.size());
    for (const QJsonValue& value : list) {
        if (auto channel = Channel::fromJson(value.toObject())) {
            channels.append(std::move(*channel));
        }
    }
    return channels;
}

/// Where the top-level array of `json` opens and closes, and the commas between its elements.
struct ArrayOutline {
    qsizetype open = 0, close = 0;
    QList<qsizetype> commas;
};

/// Nothing unless `json` is one bracketed text with only white space around it; whether what is
/// between the brackets is valid is left to the parser, part by part.
std::optional<ArrayOutline> outline(const QByteArray& json) {
    const char* text = json.constData();
    const qsizetype size = json.size();
    qsizetype i = 0;
    while (i < size && isJsonSpace(text[i])) {
        ++i;
    }
    if (i == size || text[i] != '[') {
        return std::nullopt;
    }
    ArrayOutline result;
    result.open = i;
    int depth = 0;
    bool inString = false;
    for (; i < size; ++i) {
        const char c = text[i];
        if (inString) {
            if (c == '\\') {
                ++i;
            } else if (c == '"') {
                inString = false;
            }
        } else if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            ++depth;
        } else if (c == ']' || c == '}') {
            if (--depth == 0) {
                break;
            }
        } else if (c == ',' && depth == 1) {
            result.commas.append(i);
        }
    }
    if (i >= size || text[i] != ']') {
        return std::nullopt;
    }
    result.close = i;
    while (++i < size) {
        if (!isJsonSpace(text[i])) {
            return std::nullopt;
        }
    }
    return result;
}

/// The elements between two separators, bracketed as a list of their own. An empty stretch
/// (",," or "[,") would read as an empty list, so it is refused here: the whole text is invalid.
std::optional<QJsonArray> parsePart(const QByteArray& json, qsizetype from, qsizetype to) {
    const QByteArrayView elements(json.constData() + from, to - from);
    if (std::all_of(elements.begin(), elements.end(), isJsonSpace)) {
        return std::nullopt;
    }
    QByteArray part;
    part.reserve(elements.size() + 2);
    part.append('[').append(elements).append(']');
    return parseList(part);
}

/// `work(k)` for every k below `count`, the first on this thread and the others beside it.
template <typename Work>
auto sideBySide(size_t count, const Work& work) {
    std::vector<std::future<decltype(work(0))>> others;
    for (size_t k = 1; k < count; ++k) {
        others.push_back(std::async(std::launch::async, work, k));
    }
    std::vector<decltype(work(0))> results;
    results.push_back(work(0));
    for (auto& other : others) {
        results.push_back(other.get());
    }
    return results;
}

}  // namespace

std::optional<QList<Channel>> decodeChannelList(const QByteArray& json, int parts) {
    if (parts <= 0) {
        parts =
            int(std::min<qsizetype>(QThread::idealThreadCount(), json.size() / kMinimumPartBytes));
    }
    const auto shape = parts > 1 ? outline(json) : std::nullopt;
    if (!shape || shape->commas.isEmpty()) {
        const auto list = parseList(json);
        return list ? std::optional(decodeList(*list)) : std::nullopt;
    }
    // Cut at the first separator past each even share of the text.
    std::vector<qsizetype> cuts{shape->open};
    for (int k = 1; k < parts; ++k) {
        const qsizetype target = shape->open + (shape->close - shape->open) * k / parts;
        const auto comma = std::lower_bound(shape->commas.cbegin(), shape->commas.cend(), target);
        if (comma != shape->commas.cend() && *comma > cuts.back()) {
            cuts.push_back(*comma);
        }
    }
    cuts.push_back(shape->close);

    // Every part is parsed and checked before any channel is decoded, as in a whole parse: a
    // list with a stray non-object decodes nothing at all.
    const auto lists = sideBySide(
        cuts.size() - 1, [&](size_t k) { return parsePart(json, cuts[k] + 1, cuts[k + 1]); });
    if (!std::all_of(lists.cbegin(), lists.cend(),
                     [](const auto& list) { return list.has_value(); })) {
        return std::nullopt;
    }
    auto decoded = sideBySide(lists.size(), [&](size_t k) { return decodeList(*lists[k]); });
    QList<Channel> channels = std::move(decoded.front());
    for (size_t k = 1; k < decoded.size(); ++k) {
        channels.append(std::move(decoded[k]));
    }
    return channels;
}

}  // namespace LumoraSDK
