#pragma once

#include <QJsonObject>
#include <QString>
#include <optional>

#include "Models/Serializable.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// What registering a user returns. The token is kept until logout or the end of the process;
/// `expiresIn` travels with it but nothing checks or refreshes it.
struct LUMORASDK_EXPORT Authorization {
    std::optional<QString> accessToken{};  // "access_token"
    std::optional<qint64> expiresIn{};     // "expires_in", in seconds

    static std::optional<Authorization> fromJson(const QJsonObject& json);
    QJsonObject serialize() const;

    friend bool operator==(const Authorization&, const Authorization&) = default;
};

static_assert(Serializable<Authorization>);

}  // namespace LumoraSDK
