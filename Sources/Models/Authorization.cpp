#include "Authorization.h"

#include "Models/JsonFields.h"

namespace LumoraSDK {

namespace {
constexpr QLatin1StringView kAccessTokenKey("access_token");
constexpr QLatin1StringView kExpiresInKey("expires_in");
}  // namespace

std::optional<Authorization> Authorization::fromJson(const QJsonObject& json) {
    if (json.isEmpty()) {
        return std::nullopt;
    }
    return Authorization{JsonFields::string(json, kAccessTokenKey),
                         JsonFields::integer(json, kExpiresInKey)};
}

QJsonObject Authorization::serialize() const {
    QJsonObject json;
    JsonFields::insertIfPresent(json, kAccessTokenKey, accessToken);
    JsonFields::insertIfPresent(json, kExpiresInKey, expiresIn);
    return json;
}

}  // namespace LumoraSDK
