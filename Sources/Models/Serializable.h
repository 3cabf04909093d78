#pragma once

#include <QJsonObject>
#include <concepts>
#include <optional>

namespace LumoraSDK {

/// A value that converts from and to a JSON object.
///
/// `fromJson` gives no value only for an empty object (or, where the parameter is optional, for
/// no object); a malformed field becomes an absent field instead of failing the whole value.
/// `serialize` writes every present field under its key and leaves absent ones out.
template <typename T>
concept Serializable = requires(const T& value, const QJsonObject& json) {
    { T::fromJson(json) } -> std::same_as<std::optional<T>>;
    { value.serialize() } -> std::same_as<QJsonObject>;
};

}  // namespace LumoraSDK
