#pragma once

#include "ContentLibrary.h"
#include "EventJournal.h"
#include "FaultTable.h"
#include "UserDirectory.h"

#include <httplib.h>
#include <string>

namespace LumoraSDK::DevServer {

/// The control routes under /dev/ and the index page at /, for tests and people. They need no
/// key: the server listens on loopback only.
class DevRoutes {
public:
    DevRoutes(const ContentLibrary& content, UserDirectory& users, EventJournal& journal,
              FaultTable& faults, bool tls);

    /// Answers "/" and paths under /dev/.
    void handle(const httplib::Request& request, httplib::Response& response);

private:
    void postFault(const httplib::Request& request, httplib::Response& response);
    std::string indexPage(const std::string& baseUrl) const;

    const ContentLibrary& m_content;
    UserDirectory& m_users;
    EventJournal& m_journal;
    FaultTable& m_faults;
    const bool m_tls;
};

}  // namespace LumoraSDK::DevServer
