#pragma once

#include <QColor>
#include <QJsonObject>
#include <QString>
#include <optional>

#include "Models/Serializable.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// One configuration of a showcase app: the mock host screens around the row, a theme colour,
/// the API key to start the SDK with and the app's identity. Nothing in the SDK reads it.
struct LUMORASDK_EXPORT DemoData {
    std::optional<QString> topContentImageUrl{};     // "demoAppHeaderImageUrl"
    std::optional<QString> bottomContentImageUrl{};  // "demoAppFooterImageUrl"
    std::optional<QString> tabBarImageUrl{};         // "demoAppTabBarImageUrl"
    std::optional<QColor> themeColor{};              // "themeColorHex", a hex colour text
    std::optional<QString> apiKey{};                 // "secret"
    std::optional<QString> title{};                  // "title"
    std::optional<QString> appStoreIdentifier{};     // "appStoreIdentifier"
    std::optional<QString> id{};                     // "id"
    std::optional<QString> platform{};               // "platform"

    /// No value without an object; otherwise each field is read when its value is a string
    /// (the theme colour through colorFromHexString at full alpha) and absent when it is not.
    static std::optional<DemoData> fromJson(const std::optional<QJsonObject>& json);

    /// Every present field under its key. "themeColorHex" receives the colour itself as an
    /// object of component fractions, not a hex text, so a serialized record does not read back
    /// with its colour.
    QJsonObject serialize() const;

    friend bool operator==(const DemoData&, const DemoData&) = default;
};

static_assert(Serializable<DemoData>);

}  // namespace LumoraSDK
