#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>
#include <optional>

#include <LumoraSDK/Enums/Status.h>
#include <LumoraSDK/Models/Page.h>
#include <LumoraSDK/Models/Serializable.h>
#include <LumoraSDK/lumorasdk_export.h>

namespace LumoraSDK {

/// One story: a titled, avatar-bearing list of pages with a read state.
struct LUMORASDK_EXPORT Channel {
    std::optional<QString> title{};       ///< "title": the channel's name
    std::optional<QString> id{};          ///< "id": the channel's identity (diffs compare it)
    std::optional<qint64> initialPage{};  ///< "initialPage": where the server resumes playback
    std::optional<QString> profilePictureUrl{};  ///< "profilePictureUrl": the cell's picture
    std::optional<Status> status{};              ///< "status": read or unread
    QList<Page> pages{};                         ///< "pages", ascending by sortOrder
    /// True only for the cells the row shows while loading; never read from or written to JSON.
    bool isPlaceholder = false;

    /// An absent status counts as unread.
    bool isRead() const { return status == Status::Read; }

    /// No channel for an empty object. Pages that do not decode are dropped and the rest are
    /// sorted by sortOrder, keeping delivered order among equals. Every page of a channel with two
    /// or more pages must carry "sortOrder": a page without one stops the process.
    /// On the channel-load path: reads the object's members in place, in one pass.
    static std::optional<Channel> fromJson(const QJsonObject& json);
    /// The present fields under their JSON keys.
    QJsonObject serialize() const;

    /// Channels are the same channel when their ids are equal (two absent ids included).
    friend bool operator==(const Channel& lhs, const Channel& rhs) { return lhs.id == rhs.id; }
};

static_assert(Serializable<Channel>);

}  // namespace LumoraSDK
