#pragma once

#include <QByteArray>
#include <QList>
#include <optional>

#include "Models/Channel.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// The channel list the API answers: a JSON array of channel objects, decoded in order with
/// Channel::fromJson's rules. Nothing when the text is not an array made only of objects.
///
/// A feed of a thousand channels is over a megabyte, read on every reload: the text is read with
/// simdjson, and only a text that reader refuses (or could read differently from QJsonDocument)
/// goes the slow way, through QJsonDocument.
LUMORASDK_EXPORT std::optional<QList<Channel>> decodeChannelList(const QByteArray& json);

/// The same through QJsonDocument alone: what decodeChannelList answers, for every text.
LUMORASDK_EXPORT std::optional<QList<Channel>> decodeChannelListWithQtJson(const QByteArray& json);

}  // namespace LumoraSDK
