#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace LumoraSDK::DevServer {

/// The command line of lumora-devserver.
struct ServerOptions {
    std::string host = "127.0.0.1";
    int port = 8787;
    bool tls = false;
    std::string caOut;  // empty: a file in the temporary directory
    std::string contentDir;
    std::string apiKey = "lumora-demo-key";
    /// Cache-Control max-age of media answers.
    int mediaMaxAge = 86400;
    /// Serve this many channels, the content's repeated with fresh ids; 0: the content as it is.
    int channels = 0;
    /// (route, JSON object) pairs from --fault ROUTE=JSON, applied at start.
    std::vector<std::pair<std::string, std::string>> faults;
    /// With --parent-pid: the process that started the server; the server stops when it ends.
    int parentPid = 0;
    bool help = false;

    /// Parses argv; on a usage error returns nothing and fills `error`.
    static std::optional<ServerOptions> parse(const std::vector<std::string>& arguments,
                                              std::string& error);
    static std::string usage();
};

/// Only loopback addresses are served: the server has fault injection and no real security.
bool isLoopbackHost(const std::string& host);

}  // namespace LumoraSDK::DevServer
