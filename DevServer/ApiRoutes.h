#pragma once

#include "ContentLibrary.h"
#include "EventJournal.h"
#include "UserDirectory.h"

#include <httplib.h>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace LumoraSDK::DevServer {

/// The five routes of the content API under /api/.
class ApiRoutes {
public:
    /// Lifetime of the tokens issued, in seconds; tokens do not actually expire.
    static constexpr int kTokenLifetime = 3600;

    ApiRoutes(const ContentLibrary& content, UserDirectory& users, EventJournal& journal,
              std::string apiKey, bool tls);

    /// Answers a request whose path starts with /api/.
    void handle(const httplib::Request& request, httplib::Response& response);

    /// The values "activityItemType" accepts.
    static bool isActivityType(const QString& value);

private:
    void postAuth(const httplib::Request& request, httplib::Response& response);
    void postUpdateExternalId(const httplib::Request& request, httplib::Response& response,
                              const User& user);
    void getChannels(const httplib::Request& request, httplib::Response& response,
                     const User& user);
    void postViewingHistory(const httplib::Request& request, httplib::Response& response,
                            const User& user);
    void postActivity(const httplib::Request& request, httplib::Response& response,
                      const User& user);

    bool hasApiKey(const httplib::Request& request) const;
    static std::string bearerToken(const httplib::Request& request);

    const ContentLibrary& m_content;
    UserDirectory& m_users;
    EventJournal& m_journal;
    const std::string m_apiKey;
    const bool m_tls;

    /// The last channel list served, serialized. A large feed takes tens of milliseconds to build
    /// and a host reloads it often; the answer depends only on the viewer's history and the
    /// address the request came to.
    struct ChannelListAnswer {
        ViewedPages viewed;
        std::string baseUrl;
        std::shared_ptr<const std::string> body;
    };
    std::mutex m_lastChannelListMutex;
    ChannelListAnswer m_lastChannelList;
};

}  // namespace LumoraSDK::DevServer
