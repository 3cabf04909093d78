#include "Channel.h"

#include <QJsonArray>
#include <algorithm>

#include "Models/JsonFields.h"

namespace LumoraSDK {

namespace {
namespace Key {
constexpr QLatin1StringView title("title");
constexpr QLatin1StringView id("id");
constexpr QLatin1StringView initialPage("initialPage");
constexpr QLatin1StringView profilePictureUrl("profilePictureUrl");
constexpr QLatin1StringView status("status");
constexpr QLatin1StringView pages("pages");
}  // namespace Key

// A value that is not a list made only of objects gives no pages at all.
QList<Page> decodePages(const QJsonValueConstRef& value) {
    if (!value.isArray()) {
        return {};
    }
    const QJsonArray list = value.toArray();
    for (const auto& element : list) {
        if (!element.isObject()) {
            return {};
        }
    }
    QList<Page> pages;
    pages.reserve(list.size());
    for (const auto& element : list) {
        if (auto page = Page::fromJson(element.toObject())) {
            pages.append(std::move(*page));
        }
    }
    return pages;
}

// The API promises "sortOrder" on every page; a multi-page channel without it has no defined
// order to play in, so it is treated as a broken contract rather than guessed at.
void sortPages(QList<Page>& pages, const std::optional<QString>& channelId) {
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
}  // namespace

std::optional<Channel> Channel::fromJson(const QJsonObject& json) {
    using namespace JsonFields;
    if (json.isEmpty()) {
        return std::nullopt;
    }
    Channel channel;
    forEachMember(json, [&channel](const QString& key, const QJsonValueConstRef& value) {
        if (key == Key::title) {
            channel.title = string(value);
        } else if (key == Key::id) {
            channel.id = string(value);
        } else if (key == Key::initialPage) {
            channel.initialPage = integer(value);
        } else if (key == Key::profilePictureUrl) {
            channel.profilePictureUrl = string(value);
        } else if (key == Key::status) {
            channel.status = rawValued(value, &statusFromRawValue);
        } else if (key == Key::pages) {
            channel.pages = decodePages(value);
        }
    });
    sortPages(channel.pages, channel.id);
    return channel;
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
