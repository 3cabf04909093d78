#pragma once

#include <QJsonObject>
#include <QString>
#include <optional>

#include <LumoraSDK/Enums/PageType.h>
#include <LumoraSDK/Enums/Status.h>
#include <LumoraSDK/Models/Serializable.h>
#include <LumoraSDK/lumorasdk_export.h>

namespace LumoraSDK {

/// One full-screen screen of a channel: an image or a video, shown for `duration` seconds, with
/// an optional swipe-up link. Every field is optional; the API may leave any of them out.
struct LUMORASDK_EXPORT Page {
    std::optional<PageType> mediaType{};   ///< "type": an image or a video page
    std::optional<qint64> duration{};      ///< "duration", in seconds
    std::optional<QString> url{};          ///< "url": the media address
    std::optional<QString> swipeUpText{};  ///< "swipeUpText": the learn-more button's text
    std::optional<QString> swipeUpUrl{};   ///< "swipeUpUrl": the link a swipe up opens
    std::optional<bool> showSwipeUpUI{};   ///< "showSwipeUpUi" (the key ends in lower-case "Ui")
    std::optional<QString> playcardUrl{};  ///< "playcardUrl": the still shown before a video plays
    std::optional<qint64> sortOrder{};     ///< "sortOrder": the page's place in its channel
    std::optional<QString> id{};           ///< "id": the page's identity
    std::optional<Status> status{};        ///< "status": read or unread
    std::optional<bool> isSkippable{};     ///< "skippable": false holds the page until it ends

    /// The page's type is known and is a video, or an image.
    ///@{
    bool isVideo() const { return mediaType == PageType::Video; }
    bool isImage() const { return mediaType == PageType::Image; }
    ///@}
    /// An absent status counts as unread.
    bool isRead() const { return status == Status::Read; }

    /// No page for an empty object; otherwise every field of the wrong JSON type is absent.
    /// On the channel-load path: reads the object's members in place, in one pass.
    static std::optional<Page> fromJson(const QJsonObject& json);
    /// The present fields under their JSON keys.
    QJsonObject serialize() const;

    /// Every field equal.
    friend bool operator==(const Page&, const Page&) = default;
};

static_assert(Serializable<Page>);

}  // namespace LumoraSDK
