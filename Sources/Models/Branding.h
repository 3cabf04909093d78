#pragma once

#include <QJsonObject>
#include <QString>
#include <optional>

#include "Models/Serializable.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// The brand's colour pair, each "#" and six hexadecimal digits (see colorFromHexString).
struct LUMORASDK_EXPORT Branding {
    std::optional<QString> primaryColor{};    // "primaryColor"
    std::optional<QString> secondaryColor{};  // "secondaryColor"

    /// Golden yellow "#F5C92C" and red "#E21219": the colours used until a branding arrives.
    static const Branding defaultColors;

    static std::optional<Branding> fromJson(const QJsonObject& json);
    QJsonObject serialize() const;

    friend bool operator==(const Branding&, const Branding&) = default;
};

static_assert(Serializable<Branding>);

}  // namespace LumoraSDK
