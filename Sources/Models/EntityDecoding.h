#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>

#include "Models/Channel.h"
#include "Models/JsonFields.h"
#include "Models/Page.h"

namespace LumoraSDK::EntityDecoding {

// How a page and a channel read their members, for any JSON reader: QJsonObject's, and the
// faster one the channel list is read with. A reader's value offers isString/toString,
// isDouble/toDouble, isBool/toBool, isArray/toArray and isObject/toObject, as QJsonValue does;
// an object offers isEmptyObject(object) and forEachMember(object, visit), which visits the
// members so that a later duplicate key wins, as QJsonDocument keeps the last.

namespace PageKey {
constexpr QLatin1StringView type("type");
constexpr QLatin1StringView duration("duration");
constexpr QLatin1StringView url("url");
constexpr QLatin1StringView swipeUpText("swipeUpText");
constexpr QLatin1StringView swipeUpUrl("swipeUpUrl");
constexpr QLatin1StringView showSwipeUpUi("showSwipeUpUi");
constexpr QLatin1StringView playcardUrl("playcardUrl");
constexpr QLatin1StringView sortOrder("sortOrder");
constexpr QLatin1StringView id("id");
constexpr QLatin1StringView status("status");
constexpr QLatin1StringView skippable("skippable");
}  // namespace PageKey

namespace ChannelKey {
constexpr QLatin1StringView title("title");
constexpr QLatin1StringView id("id");
constexpr QLatin1StringView initialPage("initialPage");
constexpr QLatin1StringView profilePictureUrl("profilePictureUrl");
constexpr QLatin1StringView status("status");
constexpr QLatin1StringView pages("pages");
}  // namespace ChannelKey

inline bool isKey(const QString& key, QLatin1StringView name) {
    return key == name;
}
inline bool isKey(std::string_view key, QLatin1StringView name) {
    return key.size() == size_t(name.size()) &&
           std::memcmp(key.data(), name.data(), key.size()) == 0;
}

inline bool isEmptyObject(const QJsonObject& object) {
    return object.isEmpty();
}
using JsonFields::forEachMember;

/// No page for an empty object; every field of the wrong JSON type is absent.
template <typename Object>
std::optional<Page> decodePage(const Object& object) {
    using namespace JsonFields;
    if (isEmptyObject(object)) {
        return std::nullopt;
    }
    Page page;
    forEachMember(object, [&page](const auto& key, const auto& value) {
        if (isKey(key, PageKey::type)) {
            page.mediaType = rawValued(value, &pageTypeFromRawValue);
        } else if (isKey(key, PageKey::duration)) {
            page.duration = integer(value);
        } else if (isKey(key, PageKey::url)) {
            page.url = string(value);
        } else if (isKey(key, PageKey::swipeUpText)) {
            page.swipeUpText = string(value);
        } else if (isKey(key, PageKey::swipeUpUrl)) {
            page.swipeUpUrl = string(value);
        } else if (isKey(key, PageKey::showSwipeUpUi)) {
            page.showSwipeUpUI = boolean(value);
        } else if (isKey(key, PageKey::playcardUrl)) {
            page.playcardUrl = string(value);
        } else if (isKey(key, PageKey::sortOrder)) {
            page.sortOrder = integer(value);
        } else if (isKey(key, PageKey::id)) {
            page.id = string(value);
        } else if (isKey(key, PageKey::status)) {
            page.status = rawValued(value, &statusFromRawValue);
        } else if (isKey(key, PageKey::skippable)) {
            page.isSkippable = boolean(value);
        }
    });
    return page;
}

/// The entities a list made only of objects decodes to, in order, leaving out those that decode
/// to nothing (empty objects); nothing at all when any element is not an object.
template <typename Entity, typename List, typename Decode>
std::optional<QList<Entity>> decodeObjects(const List& list, Decode decode) {
    if (!std::all_of(list.begin(), list.end(), [](const auto& e) { return e.isObject(); })) {
        return std::nullopt;
    }
    QList<Entity> entities;
    entities.reserve(qsizetype(list.size()));
    for (const auto& element : list) {
        if (auto entity = decode(element.toObject())) {
            entities.append(std::move(*entity));
        }
    }
    return entities;
}

/// A value that is not a list made only of objects gives no pages at all.
template <typename Value>
QList<Page> decodePages(const Value& value) {
    if (!value.isArray()) {
        return {};
    }
    return decodeObjects<Page>(value.toArray(),
                               [](const auto& object) { return decodePage(object); })
        .value_or(QList<Page>());
}

/// Sorts by "sortOrder", keeping delivered order among equals; stops the process for a
/// multi-page channel with a page without one.
void sortPages(QList<Page>& pages, const std::optional<QString>& channelId);

/// No channel for an empty object.
template <typename Object>
std::optional<Channel> decodeChannel(const Object& object) {
    using namespace JsonFields;
    if (isEmptyObject(object)) {
        return std::nullopt;
    }
    Channel channel;
    forEachMember(object, [&channel](const auto& key, const auto& value) {
        if (isKey(key, ChannelKey::title)) {
            channel.title = string(value);
        } else if (isKey(key, ChannelKey::id)) {
            channel.id = string(value);
        } else if (isKey(key, ChannelKey::initialPage)) {
            channel.initialPage = integer(value);
        } else if (isKey(key, ChannelKey::profilePictureUrl)) {
            channel.profilePictureUrl = string(value);
        } else if (isKey(key, ChannelKey::status)) {
            channel.status = rawValued(value, &statusFromRawValue);
        } else if (isKey(key, ChannelKey::pages)) {
            channel.pages = decodePages(value);
        }
    });
    sortPages(channel.pages, channel.id);
    return channel;
}

}  // namespace LumoraSDK::EntityDecoding
