#pragma once

#include "UserDirectory.h"

#include <QJsonArray>
#include <filesystem>
#include <optional>
#include <string>

namespace LumoraSDK::DevServer {

/// The channels and media of one content directory: channels.json, whose media addresses are
/// paths relative to the directory, and the files themselves.
class ContentLibrary {
public:
    static std::optional<ContentLibrary> load(const std::string& directory, std::string& error);

    const std::filesystem::path& directory() const { return m_directory; }
    /// The channels as stored, with relative media paths.
    const QJsonArray& channels() const { return m_channels; }

    /// The channel list as one user gets it: media addresses made absolute against `baseUrl`,
    /// and "status" from the content or that user's viewing history.
    QJsonArray channelsFor(const ViewedPages& viewed, const std::string& baseUrl) const;

    /// Makes the list `count` channels long by repeating the content's channels in order; every
    /// copy after the first round gets fresh channel and page ids ("<id>-<round>").
    void repeatChannels(size_t count);

    /// The regular file at `relativePath` inside the directory; nothing for paths that leave it.
    std::optional<std::filesystem::path> file(const std::string& relativePath) const;

    /// Where a media reference of channels.json points: absolute addresses stay as they are,
    /// "/x" is a path of this server, anything else a file under /media/.
    static std::string absoluteUrl(const std::string& reference, const std::string& baseUrl);

private:
    std::filesystem::path m_directory;
    QJsonArray m_channels;
};

}  // namespace LumoraSDK::DevServer
