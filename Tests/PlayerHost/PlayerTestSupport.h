#pragma once

// Scenes for the player's tests: the row's fixture (lumora-devserver, the SDK pointed at it, the
// hand-driven clocks) plus channels built in code and the server's recorded events.

#include <QJsonArray>
#include <QJsonObject>

#include "../Row/RowTestSupport.h"
#include "Models/Channel.h"
#include "Models/Page.h"

namespace PlayerTest {

using namespace LumoraSDK;

/// A channel "id" of image pages "id-1", "id-2", ... shown `duration` seconds each.
inline QJsonObject imageChannelJson(RowTest::Fixture& fixture, const QString& id,
                                    const QString& status, int pageCount, int duration = 1,
                                    const QString& imagePath = QStringLiteral("avatars/hi.png")) {
    QJsonObject channel =
        RowTest::channelJson(id, QStringLiteral("Channel ") + id, status,
                             fixture.mediaUrl(QStringLiteral("avatars/welcome.png")));
    QJsonArray pages;
    for (int i = 1; i <= pageCount; ++i) {
        pages.append(QJsonObject{{QStringLiteral("id"), QStringLiteral("%1-%2").arg(id).arg(i)},
                                 {QStringLiteral("type"), QStringLiteral("image")},
                                 {QStringLiteral("duration"), duration},
                                 {QStringLiteral("sortOrder"), i},
                                 {QStringLiteral("url"), fixture.mediaUrl(imagePath)}});
    }
    channel.insert(QStringLiteral("pages"), pages);
    return channel;
}

/// The server's recorded events as "<activity or history> <channel> <page>" lines.
inline QStringList eventLines(RowTest::Fixture& fixture) {
    QStringList lines;
    for (const QJsonValue& value : fixture.server().events()) {
        const QJsonObject body = value.toObject().value(QStringLiteral("body")).toObject();
        if (body.contains(QStringLiteral("activityItemType"))) {
            lines << QStringLiteral("%1 %2 %3")
                         .arg(body.value(QStringLiteral("activityItemType")).toString(),
                              body.value(QStringLiteral("channelStoryId")).toString(),
                              body.value(QStringLiteral("pageStoryId")).toString());
        } else {
            lines << QStringLiteral("history %1 %2")
                         .arg(body.value(QStringLiteral("ChannelStoryId")).toString(),
                              body.value(QStringLiteral("pageStoryId")).toString());
        }
    }
    return lines;
}

}  // namespace PlayerTest
