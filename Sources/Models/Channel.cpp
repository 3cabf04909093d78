#include "Channel.h"

#include <QJsonArray>
#include <algorithm>

#include "Models/EntityDecoding.h"

namespace LumoraSDK {

namespace Key = EntityDecoding::ChannelKey;

// The API promises "sortOrder" on every page; a multi-page channel without it has no defined
// order to play in, so it is treated as a broken contract rather than guessed at.
void EntityDecoding::sortPages(QList<Page>& pages, const std::optional<QString>& channelId) {
    if (pages.size() < 2) {
        return;
    }
    const bool allOrdered = std::all_of(pages.cbegin(), pages.cend(),
                                        [](const Page& p) { return p.sortOrder.has_value(); });
    if (!allOrdered) {
        const QString name =
            channelId ? QStringLiteral("\"%1\"").arg(*channelId) : QStringLiteral("nil");
        qFatal(
            "Channel::fromJson(const QJsonObject&) - channel %s has a page without "
            "\"sortOrder\"",
            qUtf8Printable(name));
    }
    const auto bySortOrder = [](const Page& lhs, const Page& rhs) {
        return *lhs.sortOrder < *rhs.sortOrder;
    };
    // The API usually delivers pages in order; checking first spares stable_sort's buffer.
    if (!std::is_sorted(pages.cbegin(), pages.cend(), bySortOrder)) {
        std::stable_sort(pages.begin(), pages.end(), bySortOrder);
    }
}

std::optional<Channel> Channel::fromJson(const QJsonObject& json) {
    return EntityDecoding::decodeChannel(json);
}

QJsonObject Channel::serialize() const {
    using JsonFields::insertIfPresent;
    QJsonObject json;
    insertIfPresent(json, Key::title, title);
    insertIfPresent(json, Key::id, id);
    insertIfPresent(json, Key::initialPage, initialPage);
    insertIfPresent(json, Key::profilePictureUrl, profilePictureUrl);
    if (status) {
        json.insert(Key::status, rawValue(*status));
    }
    QJsonArray list;
    for (const Page& page : pages) {
        list.append(page.serialize());
    }
    json.insert(Key::pages, list);
    return json;
}

}  // namespace LumoraSDK
