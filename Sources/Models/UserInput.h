#pragma once

#include <QJsonObject>
#include <QString>
#include <optional>

#include <LumoraSDK/Models/Serializable.h>
#include <LumoraSDK/lumorasdk_export.h>

namespace LumoraSDK {

/// The host's details about its user, passed to the facade's user-details call.
struct LUMORASDK_EXPORT UserInput {
    std::optional<QString> externalId{};  ///< "externalId": the host's own id for its user

    /// No user input for an empty object; an id that is not a string is absent.
    static std::optional<UserInput> fromJson(const QJsonObject& json);
    /// {"externalId": ...} when the id is present, else {}.
    QJsonObject serialize() const;

    /// `UserInput(externalId: Optional("abc"))`, or `UserInput(externalId: nil)` without an id;
    /// log lines print a user input this way.
    QString description() const;

    /// The ids equal.
    friend bool operator==(const UserInput&, const UserInput&) = default;
};

static_assert(Serializable<UserInput>);

}  // namespace LumoraSDK
