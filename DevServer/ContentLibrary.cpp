#include "ContentLibrary.h"

#include "HttpUtil.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

namespace LumoraSDK::DevServer {

namespace {

const char* const kChannelUrlKeys[] = {"profilePictureUrl"};
const char* const kPageUrlKeys[] = {"url", "playcardUrl", "swipeUpUrl"};

bool isRead(const QJsonObject& entity) {
    return entity.value("status").toString() == "read";
}

/// The id of the page with the highest sort order: the one that completes the channel.
QString lastPageId(const QJsonArray& pages) {
    QString id;
    double highest = 0;
    bool found = false;
    for (const auto& value : pages) {
        const auto page = value.toObject();
        const double order = page.value("sortOrder").toDouble();
        if (!found || order >= highest) {
            highest = order;
            id = page.value("id").toString();
            found = true;
        }
    }
    return id;
}

void makeUrlsAbsolute(QJsonObject& object, auto&& keys, const std::string& baseUrl) {
    for (const char* key : keys) {
        const auto value = object.value(key);
        if (value.isString()) {
            object.insert(key, QString::fromStdString(ContentLibrary::absoluteUrl(
                                   value.toString().toStdString(), baseUrl)));
        }
    }
}

}  // namespace

std::optional<ContentLibrary> ContentLibrary::load(const std::string& directory,
                                                   std::string& error) {
    std::error_code ec;
    const auto root = std::filesystem::canonical(directory, ec);
    if (ec || !std::filesystem::is_directory(root)) {
        error = "content directory \"" + directory + "\" does not exist";
        return std::nullopt;
    }
    QFile file(QString::fromStdString((root / "channels.json").string()));
    if (!file.open(QIODevice::ReadOnly)) {
        error = "cannot read " + (root / "channels.json").string();
        return std::nullopt;
    }
    QJsonParseError parseError{};
    const auto document = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isArray()) {
        error = (root / "channels.json").string() + " is not a JSON array of channels" +
                (parseError.error != QJsonParseError::NoError
                     ? ": " + parseError.errorString().toStdString()
                     : std::string());
        return std::nullopt;
    }
    for (const auto& channel : document.array()) {
        if (!channel.isObject()) {
            error = (root / "channels.json").string() + " holds a channel that is not an object";
            return std::nullopt;
        }
    }
    ContentLibrary library;
    library.m_directory = root;
    library.m_channels = document.array();
    return library;
}

QJsonArray ContentLibrary::channelsFor(const ViewedPages& viewed,
                                       const std::string& baseUrl) const {
    QJsonArray result;
    for (const auto& channelValue : m_channels) {
        QJsonObject channel = channelValue.toObject();
        const std::string channelId = channel.value("id").toString().toStdString();
        auto wasViewed = [&](const QString& pageId) {
            return viewed.count({channelId, pageId.toStdString()}) > 0;
        };
        const QJsonArray storedPages = channel.value("pages").toArray();
        QJsonArray pages;
        for (const auto& pageValue : storedPages) {
            QJsonObject page = pageValue.toObject();
            makeUrlsAbsolute(page, kPageUrlKeys, baseUrl);
            const bool read = isRead(page) || wasViewed(page.value("id").toString());
            page.insert("status", read ? "read" : "unread");
            pages.append(page);
        }
        makeUrlsAbsolute(channel, kChannelUrlKeys, baseUrl);
        if (channel.contains("pages")) {
            channel.insert("pages", pages);
        }
        const bool read =
            isRead(channel) || (!storedPages.isEmpty() && wasViewed(lastPageId(storedPages)));
        channel.insert("status", read ? "read" : "unread");
        result.append(channel);
    }
    return result;
}

void ContentLibrary::repeatChannels(size_t count) {
    const QJsonArray originals = m_channels;
    if (originals.isEmpty()) {
        return;
    }
    QJsonArray repeated;
    for (size_t i = 0; i < count; ++i) {
        const size_t round = i / size_t(originals.size());
        QJsonObject channel = originals[qsizetype(i % size_t(originals.size()))].toObject();
        if (round > 0) {
            const QString suffix = QStringLiteral("-%1").arg(round + 1);
            auto renew = [&suffix](QJsonObject& entity) {
                if (entity.value("id").isString()) {
                    entity.insert("id", entity.value("id").toString() + suffix);
                }
            };
            renew(channel);
            QJsonArray pages = channel.value("pages").toArray();
            for (qsizetype p = 0; p < pages.size(); ++p) {
                QJsonObject page = pages[p].toObject();
                renew(page);
                pages.replace(p, page);
            }
            if (channel.contains("pages")) {
                channel.insert("pages", pages);
            }
        }
        repeated.append(channel);
    }
    m_channels = repeated;
}

std::optional<std::filesystem::path> ContentLibrary::file(const std::string& relativePath) const {
    if (relativePath.empty() || relativePath.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    const std::filesystem::path relative(relativePath);
    if (relative.is_absolute()) {
        return std::nullopt;
    }
    for (const auto& part : relative) {
        if (part == "..") {
            return std::nullopt;
        }
    }
    std::error_code ec;
    // canonical() also resolves symbolic links, so a link cannot lead out of the directory.
    const auto resolved = std::filesystem::canonical(m_directory / relative, ec);
    if (ec || !std::filesystem::is_regular_file(resolved, ec)) {
        return std::nullopt;
    }
    const auto inside = resolved.lexically_relative(m_directory);
    if (inside.empty() || *inside.begin() == "..") {
        return std::nullopt;
    }
    return resolved;
}

std::string ContentLibrary::absoluteUrl(const std::string& reference, const std::string& baseUrl) {
    if (reference.starts_with("http://") || reference.starts_with("https://")) {
        return reference;
    }
    if (reference.starts_with("/")) {
        return baseUrl + encodePath(reference);
    }
    return baseUrl + "/media/" + encodePath(reference);
}

}  // namespace LumoraSDK::DevServer
