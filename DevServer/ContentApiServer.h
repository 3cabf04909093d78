#pragma once

#include "ApiRoutes.h"
#include "ContentLibrary.h"
#include "DevRoutes.h"
#include "EventJournal.h"
#include "FaultTable.h"
#include "MediaFiles.h"
#include "TlsIdentity.h"
#include "UserDirectory.h"

#include <httplib.h>
#include <memory>
#include <string>

namespace LumoraSDK::DevServer {

/// lumora-devserver's HTTP(S) server: the content API, the content's files, the control routes,
/// and the faults injected on top of them.
class ContentApiServer {
public:
    /// Worker threads; a connection kept alive holds one, and so does a delayed answer.
    static constexpr size_t kThreadCount = 32;
    /// Requests answered on one connection before it is closed; reconnecting costs a TLS
    /// handshake.
    static constexpr size_t kKeepAliveRequests = 100;
    /// Larger request bodies are refused with 413 before any route sees them.
    static constexpr size_t kMaximumRequestBody = 8u * 1024 * 1024;
    /// The request journal keeps this much of each body, so that it cannot eat all memory.
    static constexpr size_t kMaximumJournalBody = 64u * 1024;

    /// Serves plain HTTP when `tls` is null.
    ContentApiServer(ContentLibrary content, std::string apiKey, const TlsIdentity* tls,
                     int mediaMaxAgeSeconds = MediaFiles::kDefaultMaxAgeSeconds);

    FaultTable& faults() { return m_faults; }

    /// Binds to host:port (port 0: a free port). Returns the port, or -1.
    int bind(const std::string& host, int port);
    /// Serves until stop().
    bool run();
    void stop();

private:
    void dispatch(const httplib::Request& request, httplib::Response& response);
    void route(const httplib::Request& request, httplib::Response& response);
    /// Applies `fault`; returns false when the normal answer should follow.
    bool applyFault(const Fault& fault, const httplib::Request& request,
                    httplib::Response& response);
    /// Closes the request's connection at once, so that the client gets no answer at all.
    static void dropConnection(const httplib::Request& request);

    ContentLibrary m_content;
    const bool m_tls;
    UserDirectory m_users;
    EventJournal m_journal;
    FaultTable m_faults;
    ApiRoutes m_api;
    DevRoutes m_dev;
    MediaFiles m_media;
    std::unique_ptr<httplib::Server> m_http;
};

}  // namespace LumoraSDK::DevServer
