#include "UserInput.h"

#include "Models/JsonFields.h"

namespace LumoraSDK {

namespace {
constexpr QLatin1StringView kExternalIdKey("externalId");

// A string as a quoted literal, so that quotes or line breaks inside it stay readable.
QString quoted(const QString& text) {
    QString result;
    result.reserve(text.size() + 2);
    result += u'"';
    for (const QChar c : text) {
        switch (c.unicode()) {
            case u'"':
                result += QLatin1String("\\\"");
                break;
            case u'\\':
                result += QLatin1String("\\\\");
                break;
            case u'\n':
                result += QLatin1String("\\n");
                break;
            case u'\r':
                result += QLatin1String("\\r");
                break;
            case u'\t':
                result += QLatin1String("\\t");
                break;
            default:
                result += c;
        }
    }
    result += u'"';
    return result;
}
}  // namespace

std::optional<UserInput> UserInput::fromJson(const QJsonObject& json) {
    if (json.isEmpty()) {
        return std::nullopt;
    }
    return UserInput{JsonFields::string(json, kExternalIdKey)};
}

QJsonObject UserInput::serialize() const {
    QJsonObject json;
    JsonFields::insertIfPresent(json, kExternalIdKey, externalId);
    return json;
}

QString UserInput::description() const {
    const QString value = externalId ? QStringLiteral("Optional(%1)").arg(quoted(*externalId))
                                     : QStringLiteral("nil");
    return QStringLiteral("UserInput(externalId: %1)").arg(value);
}

}  // namespace LumoraSDK
