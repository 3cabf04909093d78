#include "ChannelListExtensions.h"

#include <algorithm>

#include "Services/DatabaseService.h"

namespace LumoraSDK {

namespace {
QString mappingKey(const Channel& channel) {
    return channel.id.value_or(QString());
}
}  // namespace

void updateLocalChannelReadMapping(const QList<Channel>& channels, DatabaseService& database) {
    database.setChannelIsReadMapping(QVariantMap());
    // Stored after every channel, so the store holds each step; a repeated id keeps the last flag.
    // Each step changes the stored map in place: copying the whole map per channel made a
    // reload of a long list quadratic.
    for (const Channel& channel : channels) {
        database.setChannelIsRead(mappingKey(channel), channel.isRead());
    }
}

QList<Channel> getLocallyUpdatedChannels(const QList<Channel>& channels,
                                         DatabaseService& database) {
    QList<Channel> updated;
    updated.reserve(channels.size());
    for (const Channel& channel : channels) {
        const QVariantMap mapping = database.channelIsReadMapping();
        Channel copy = channel;
        const auto flag = mapping.constFind(mappingKey(channel));
        if (flag != mapping.constEnd()) {
            if (flag->toBool()) {
                copy.status = Status::Read;
                // A finished channel starts again from its first page.
                copy.initialPage = 0;
            } else {
                copy.status = Status::Unread;
            }
        }
        updated.append(std::move(copy));
    }
    return updated;
}

QStringList getInitialPageVideoUrls(const QList<Channel>& channels, DatabaseService& database) {
    QStringList urls;
    for (const Channel& channel : channels) {
        const QVariantMap mapping = database.channelInitialPageMapping();
        const qint64 stored = mapping.value(mappingKey(channel), 0).toLongLong();
        const qint64 index = channel.initialPage ? std::max(stored, *channel.initialPage) : stored;
        if (index < 0) {
            qFatal("getInitialPageVideoUrls - channel %s resumes at negative page %lld",
                   qUtf8Printable(channel.id.value_or(QStringLiteral("nil"))), qlonglong(index));
        }
        if (index >= channel.pages.size()) {
            continue;
        }
        const Page& page = channel.pages.at(index);
        if (page.isVideo() && page.url) {
            urls.append(*page.url);
        }
    }
    return urls;
}

}  // namespace LumoraSDK
