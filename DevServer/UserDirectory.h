#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace LumoraSDK::DevServer {

/// (channel id, page id) pairs a user has viewed.
using ViewedPages = std::set<std::pair<std::string, std::string>>;

/// A user as the API sees it: the host's external id, or an anonymous user of its own.
struct User {
    std::string key;         // identifies the user's state; never empty
    std::string externalId;  // empty for an anonymous user
};

/// Users, their bearer tokens and their viewing history. Thread-safe.
class UserDirectory {
public:
    /// Issues a new token bound to the user with `externalId`, or to a new anonymous user.
    std::string issueToken(const std::optional<std::string>& externalId);
    std::optional<User> userForToken(const std::string& token) const;
    /// Binds an existing token to the user with `externalId`; false for an unknown token.
    bool rebind(const std::string& token, const std::string& externalId);

    void recordView(const User& user, const std::string& channelId, const std::string& pageId);
    ViewedPages viewedPages(const User& user) const;

    /// Forgets every user, token and viewing history.
    void clear();

private:
    static User userWithExternalId(const std::string& externalId);

    mutable std::mutex m_mutex;
    std::map<std::string, User> m_tokens;
    std::map<std::string, ViewedPages> m_viewed;  // by User::key
    uint64_t m_anonymousCount = 0;
};

}  // namespace LumoraSDK::DevServer
