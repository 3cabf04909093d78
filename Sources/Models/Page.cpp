#include "Page.h"

#include "Models/JsonFields.h"

namespace LumoraSDK {

namespace {
namespace Key {
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
}  // namespace Key
}  // namespace

std::optional<Page> Page::fromJson(const QJsonObject& json) {
    using namespace JsonFields;
    if (json.isEmpty()) {
        return std::nullopt;
    }
    // One pass over the members; see JsonFields::forEachMember.
    Page page;
    forEachMember(json, [&page](const QString& key, const QJsonValueConstRef& value) {
        if (key == Key::type) {
            page.mediaType = rawValued(value, &pageTypeFromRawValue);
        } else if (key == Key::duration) {
            page.duration = integer(value);
        } else if (key == Key::url) {
            page.url = string(value);
        } else if (key == Key::swipeUpText) {
            page.swipeUpText = string(value);
        } else if (key == Key::swipeUpUrl) {
            page.swipeUpUrl = string(value);
        } else if (key == Key::showSwipeUpUi) {
            page.showSwipeUpUI = boolean(value);
        } else if (key == Key::playcardUrl) {
            page.playcardUrl = string(value);
        } else if (key == Key::sortOrder) {
            page.sortOrder = integer(value);
        } else if (key == Key::id) {
            page.id = string(value);
        } else if (key == Key::status) {
            page.status = rawValued(value, &statusFromRawValue);
        } else if (key == Key::skippable) {
            page.isSkippable = boolean(value);
        }
    });
    return page;
}

QJsonObject Page::serialize() const {
    using JsonFields::insertIfPresent;
    QJsonObject json;
    if (mediaType) {
        json.insert(Key::type, rawValue(*mediaType));
    }
    insertIfPresent(json, Key::duration, duration);
    insertIfPresent(json, Key::url, url);
    insertIfPresent(json, Key::swipeUpText, swipeUpText);
    insertIfPresent(json, Key::swipeUpUrl, swipeUpUrl);
    insertIfPresent(json, Key::showSwipeUpUi, showSwipeUpUI);
    insertIfPresent(json, Key::playcardUrl, playcardUrl);
    insertIfPresent(json, Key::sortOrder, sortOrder);
    insertIfPresent(json, Key::id, id);
    if (status) {
        json.insert(Key::status, rawValue(*status));
    }
    insertIfPresent(json, Key::skippable, isSkippable);
    return json;
}

}  // namespace LumoraSDK
