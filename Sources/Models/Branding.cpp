#include "Branding.h"

#include "Models/JsonFields.h"

namespace LumoraSDK {

namespace {
constexpr QLatin1StringView kPrimaryColorKey("primaryColor");
constexpr QLatin1StringView kSecondaryColorKey("secondaryColor");
}  // namespace

const Branding Branding::defaultColors{QStringLiteral("#F5C92C"), QStringLiteral("#E21219")};

std::optional<Branding> Branding::fromJson(const QJsonObject& json) {
    if (json.isEmpty()) {
        return std::nullopt;
    }
    return Branding{JsonFields::string(json, kPrimaryColorKey),
                    JsonFields::string(json, kSecondaryColorKey)};
}

QJsonObject Branding::serialize() const {
    QJsonObject json;
    JsonFields::insertIfPresent(json, kPrimaryColorKey, primaryColor);
    JsonFields::insertIfPresent(json, kSecondaryColorKey, secondaryColor);
    return json;
}

}  // namespace LumoraSDK
