#include "DemoData.h"

#include "Extensions/ColorExtensions.h"
#include "Models/JsonFields.h"

namespace LumoraSDK {

namespace {
namespace Key {
constexpr QLatin1StringView topContentImageUrl("demoAppHeaderImageUrl");
constexpr QLatin1StringView bottomContentImageUrl("demoAppFooterImageUrl");
constexpr QLatin1StringView tabBarImageUrl("demoAppTabBarImageUrl");
constexpr QLatin1StringView themeColor("themeColorHex");
constexpr QLatin1StringView apiKey("secret");
constexpr QLatin1StringView title("title");
constexpr QLatin1StringView appStoreIdentifier("appStoreIdentifier");
constexpr QLatin1StringView id("id");
constexpr QLatin1StringView platform("platform");
}  // namespace Key

QJsonObject colorObject(const QColor& color) {
    return {{QStringLiteral("red"), color.redF()},
            {QStringLiteral("green"), color.greenF()},
            {QStringLiteral("blue"), color.blueF()},
            {QStringLiteral("alpha"), color.alphaF()}};
}
}  // namespace

std::optional<DemoData> DemoData::fromJson(const std::optional<QJsonObject>& json) {
    using JsonFields::string;
    if (!json) {
        return std::nullopt;
    }
    DemoData data;
    data.topContentImageUrl = string(*json, Key::topContentImageUrl);
    data.bottomContentImageUrl = string(*json, Key::bottomContentImageUrl);
    data.tabBarImageUrl = string(*json, Key::tabBarImageUrl);
    if (const auto hex = string(*json, Key::themeColor)) {
        data.themeColor = colorFromHexString(*hex, 1.0);
    }
    data.apiKey = string(*json, Key::apiKey);
    data.title = string(*json, Key::title);
    data.appStoreIdentifier = string(*json, Key::appStoreIdentifier);
    data.id = string(*json, Key::id);
    data.platform = string(*json, Key::platform);
    return data;
}

QJsonObject DemoData::serialize() const {
    using JsonFields::insertIfPresent;
    QJsonObject json;
    insertIfPresent(json, Key::topContentImageUrl, topContentImageUrl);
    insertIfPresent(json, Key::bottomContentImageUrl, bottomContentImageUrl);
    insertIfPresent(json, Key::tabBarImageUrl, tabBarImageUrl);
    if (themeColor) {
        // The colour value itself rather than its hex text: a serialized record keeps the colour
        // but deliberately does not decode back into one.
        json.insert(Key::themeColor, colorObject(*themeColor));
    }
    insertIfPresent(json, Key::apiKey, apiKey);
    insertIfPresent(json, Key::title, title);
    insertIfPresent(json, Key::appStoreIdentifier, appStoreIdentifier);
    insertIfPresent(json, Key::id, id);
    insertIfPresent(json, Key::platform, platform);
    return json;
}

}  // namespace LumoraSDK
