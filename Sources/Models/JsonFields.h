#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QLatin1StringView>
#include <QString>
#include <cmath>
#include <optional>

namespace LumoraSDK::JsonFields {

// Readers for one field of a JSON object. Each keeps the value only when it has exactly the
// expected JSON type and answers "absent" for anything else, so a single malformed field never
// fails a whole entity. `Value` is QJsonValue or QJsonValueConstRef: the readers work on the
// object's own storage rather than on QJsonValue copies.

template <typename Value>
std::optional<QString> string(const Value& value) {
    if (!value.isString()) {
        return std::nullopt;
    }
    return value.toString();
}

/// A JSON number with an integral value within 64 bits; 3.5, 1e30 and "3" are not integers.
template <typename Value>
std::optional<qint64> integer(const Value& value) {
    if (!value.isDouble()) {
        return std::nullopt;
    }
    // -2^63 and 2^63 are exact doubles; 2^63 itself is one past the largest qint64. Written so
    // that NaN fails the range check too.
    constexpr double kLimit = 9223372036854775808.0;
    const double number = value.toDouble();
    if (!(number >= -kLimit && number < kLimit) || number != std::trunc(number)) {
        return std::nullopt;
    }
    return static_cast<qint64>(number);
}

/// A JSON true or false; 0, 1 and "true" are not Booleans.
template <typename Value>
std::optional<bool> boolean(const Value& value) {
    if (!value.isBool()) {
        return std::nullopt;
    }
    return value.toBool();
}

/// A string converted by one of the enums' `...FromRawValue` functions.
template <typename Enum, typename Value>
std::optional<Enum> rawValued(const Value& value,
                              std::optional<Enum> (*fromRawValue)(const QString&)) {
    if (!value.isString()) {
        return std::nullopt;
    }
    return fromRawValue(value.toString());
}

/// Calls `visit(key, value)` for every member, in the object's (sorted) key order.
///
/// Channel lists are decoded on every load, and for the many-field page and channel objects one
/// pass over the members is measurably cheaper than a binary-search lookup per field, even
/// though each visited key is materialised as a QString.
template <typename Visit>
void forEachMember(const QJsonObject& json, Visit visit) {
    for (auto it = json.constBegin(), end = json.constEnd(); it != end; ++it) {
        visit(it.key(), *it);
    }
}

/// Applies `read` to the value under `key`; a missing key is absent.
template <typename Read>
auto field(const QJsonObject& json, QLatin1StringView key, Read read)
    -> decltype(read(*json.constBegin())) {
    const auto it = json.constFind(key);
    if (it == json.constEnd()) {
        return std::nullopt;
    }
    return read(*it);
}

inline std::optional<QString> string(const QJsonObject& json, QLatin1StringView key) {
    return field(json, key, [](const QJsonValueConstRef& v) { return string(v); });
}

inline std::optional<qint64> integer(const QJsonObject& json, QLatin1StringView key) {
    return field(json, key, [](const QJsonValueConstRef& v) { return integer(v); });
}

inline std::optional<bool> boolean(const QJsonObject& json, QLatin1StringView key) {
    return field(json, key, [](const QJsonValueConstRef& v) { return boolean(v); });
}

template <typename Enum>
std::optional<Enum> rawValued(const QJsonObject& json, QLatin1StringView key,
                              std::optional<Enum> (*fromRawValue)(const QString&)) {
    return field(json, key, [fromRawValue](const QJsonValueConstRef& v) {
        return rawValued(v, fromRawValue);
    });
}

/// Writes a present value under `key`; an absent one leaves the key out rather than writing null.
template <typename T>
void insertIfPresent(QJsonObject& json, QLatin1StringView key, const std::optional<T>& value) {
    if (value) {
        json.insert(key, *value);
    }
}

}  // namespace LumoraSDK::JsonFields
