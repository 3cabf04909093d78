#pragma once

#include <QJsonObject>
#include <QString>
#include <optional>

#include <LumoraSDK/Models/Serializable.h>
#include <LumoraSDK/lumorasdk_export.h>

namespace LumoraSDK {

/// The brand's colour pair, each "#" and six hexadecimal digits (see colorFromHexString).
struct LUMORASDK_EXPORT Branding {
    std::optional<QString> primaryColor{};    ///< "primaryColor": the first ring colour
    std::optional<QString> secondaryColor{};  ///< "secondaryColor": the second ring colour

    /// Golden yellow "#F5C92C" and red "#E21219": the colours used until a branding arrives.
    static const Branding defaultColors;

    /// No branding for an empty object; a colour that is not a string is absent.
    static std::optional<Branding> fromJson(const QJsonObject& json);
    /// The present colours under their JSON keys.
    QJsonObject serialize() const;

    /// Both colours equal.
    friend bool operator==(const Branding&, const Branding&) = default;
};

static_assert(Serializable<Branding>);

}  // namespace LumoraSDK
