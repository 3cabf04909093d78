#include "UserDirectory.h"

#include <openssl/rand.h>
#include <random>

namespace LumoraSDK::DevServer {

namespace {

std::string randomToken() {
    unsigned char bytes[24];
    if (RAND_bytes(bytes, sizeof bytes) != 1) {
        std::random_device device;
        for (auto& byte : bytes) {
            byte = static_cast<unsigned char>(device());
        }
    }
    static const char* hex = "0123456789abcdef";
    std::string token;
    for (unsigned char byte : bytes) {
        token += hex[byte >> 4];
        token += hex[byte & 15];
    }
    return token;
}

}  // namespace

User UserDirectory::userWithExternalId(const std::string& externalId) {
    return User{"external:" + externalId, externalId};
}

std::string UserDirectory::issueToken(const std::optional<std::string>& externalId) {
    std::string token = randomToken();
    std::lock_guard lock(m_mutex);
    m_tokens[token] = externalId ? userWithExternalId(*externalId)
                                 : User{"anonymous:" + std::to_string(++m_anonymousCount), {}};
    return token;
}

std::optional<User> UserDirectory::userForToken(const std::string& token) const {
    std::lock_guard lock(m_mutex);
    const auto found = m_tokens.find(token);
    if (found == m_tokens.end()) {
        return std::nullopt;
    }
    return found->second;
}

bool UserDirectory::rebind(const std::string& token, const std::string& externalId) {
    std::lock_guard lock(m_mutex);
    const auto found = m_tokens.find(token);
    if (found == m_tokens.end()) {
        return false;
    }
    found->second = userWithExternalId(externalId);
    return true;
}

void UserDirectory::recordView(const User& user, const std::string& channelId,
                               const std::string& pageId) {
    std::lock_guard lock(m_mutex);
    m_viewed[user.key].emplace(channelId, pageId);
}

ViewedPages UserDirectory::viewedPages(const User& user) const {
    std::lock_guard lock(m_mutex);
    const auto found = m_viewed.find(user.key);
    return found == m_viewed.end() ? ViewedPages{} : found->second;
}

void UserDirectory::clear() {
    std::lock_guard lock(m_mutex);
    m_tokens.clear();
    m_viewed.clear();
    m_anonymousCount = 0;
}

}  // namespace LumoraSDK::DevServer
