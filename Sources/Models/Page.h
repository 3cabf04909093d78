#pragma once

#include <QJsonObject>
#include <QString>
#include <optional>

#include "Enums/PageType.h"
#include "Enums/Status.h"
#include "Models/Serializable.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// One full-screen screen of a channel: an image or a video, shown for `duration` seconds, with
/// an optional swipe-up link. Every field is optional; the API may leave any of them out.
struct LUMORASDK_EXPORT Page {
    std::optional<PageType> mediaType{};   // "type"
    std::optional<qint64> duration{};      // "duration", in seconds
    std::optional<QString> url{};          // "url": the media address
    std::optional<QString> swipeUpText{};  // "swipeUpText"
    std::optional<QString> swipeUpUrl{};   // "swipeUpUrl"
    std::optional<bool> showSwipeUpUI{};   // "showSwipeUpUi" (the key ends in lower-case "Ui")
    std::optional<QString> playcardUrl{};  // "playcardUrl": the still shown before a video plays
    std::optional<qint64> sortOrder{};     // "sortOrder"
    std::optional<QString> id{};           // "id"
    std::optional<Status> status{};        // "status"
    std::optional<bool> isSkippable{};     // "skippable"

    bool isVideo() const { return mediaType == PageType::Video; }
    bool isImage() const { return mediaType == PageType::Image; }
    /// An absent status counts as unread.
    bool isRead() const { return status == Status::Read; }

    /// No page for an empty object; otherwise every field of the wrong JSON type is absent.
    /// On the channel-load path: reads the object's members in place, in one pass.
    static std::optional<Page> fromJson(const QJsonObject& json);
    QJsonObject serialize() const;

    friend bool operator==(const Page&, const Page&) = default;
};

static_assert(Serializable<Page>);

}  // namespace LumoraSDK
