#include "Page.h"

#include "Models/EntityDecoding.h"

namespace LumoraSDK {

namespace Key = EntityDecoding::PageKey;

std::optional<Page> Page::fromJson(const QJsonObject& json) {
    return EntityDecoding::decodePage(json);
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
