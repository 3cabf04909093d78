#include "ServerOptions.h"

#include <arpa/inet.h>
#include <charconv>

namespace LumoraSDK::DevServer {

namespace {

bool parseCount(const std::string& text, int maximum, int& count) {
    int value = -1;
    const auto* end = text.data() + text.size();
    auto [ptr, ec] = std::from_chars(text.data(), end, value);
    if (ec != std::errc() || ptr != end || value < 0 || value > maximum) {
        return false;
    }
    count = value;
    return true;
}

bool parsePort(const std::string& text, int& port) {
    int value = -1;
    const auto* end = text.data() + text.size();
    auto [ptr, ec] = std::from_chars(text.data(), end, value);
    if (ec != std::errc() || ptr != end || value < 0 || value > 65535) {
        return false;
    }
    port = value;
    return true;
}

}  // namespace

bool isLoopbackHost(const std::string& host) {
    if (host == "localhost") {
        return true;
    }
    in_addr v4{};
    if (inet_pton(AF_INET, host.c_str(), &v4) == 1) {
        return (ntohl(v4.s_addr) >> 24) == 127;
    }
    in6_addr v6{};
    if (inet_pton(AF_INET6, host.c_str(), &v6) == 1) {
        return IN6_IS_ADDR_LOOPBACK(&v6);
    }
    return false;
}

std::optional<ServerOptions> ServerOptions::parse(const std::vector<std::string>& arguments,
                                                  std::string& error) {
    ServerOptions options;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        auto value = [&](std::string& out) {
            if (i + 1 >= arguments.size()) {
                error = argument + " needs a value";
                return false;
            }
            out = arguments[++i];
            return true;
        };
        std::string text;
        if (argument == "--help" || argument == "-h") {
            options.help = true;
        } else if (argument == "--tls") {
            options.tls = true;
        } else if (argument == "--host") {
            if (!value(options.host)) {
                return std::nullopt;
            }
        } else if (argument == "--port") {
            if (!value(text)) {
                return std::nullopt;
            }
            if (!parsePort(text, options.port)) {
                error = "--port needs a number from 0 to 65535, not \"" + text + "\"";
                return std::nullopt;
            }
        } else if (argument == "--ca-out") {
            if (!value(options.caOut)) {
                return std::nullopt;
            }
        } else if (argument == "--content") {
            if (!value(options.contentDir)) {
                return std::nullopt;
            }
        } else if (argument == "--media-max-age" || argument == "--channels") {
            if (!value(text)) {
                return std::nullopt;
            }
            const bool age = argument == "--media-max-age";
            const int maximum = age ? 31536000 : 100000;
            if (!parseCount(text, maximum, age ? options.mediaMaxAge : options.channels)) {
                error = argument + " needs a number from 0 to " + std::to_string(maximum) +
                        ", not \"" + text + "\"";
                return std::nullopt;
            }
        } else if (argument == "--api-key") {
            if (!value(options.apiKey)) {
                return std::nullopt;
            }
        } else if (argument == "--parent-pid") {
            if (!value(text)) {
                return std::nullopt;
            }
            const auto* end = text.data() + text.size();
            auto [ptr, ec] = std::from_chars(text.data(), end, options.parentPid);
            if (ec != std::errc() || ptr != end || options.parentPid <= 1) {
                error = "--parent-pid needs a process id, not \"" + text + "\"";
                return std::nullopt;
            }
        } else if (argument == "--fault") {
            if (!value(text)) {
                return std::nullopt;
            }
            const auto separator = text.find('=');
            if (separator == std::string::npos || separator == 0) {
                error = "--fault needs ROUTE=JSON, not \"" + text + "\"";
                return std::nullopt;
            }
            options.faults.emplace_back(text.substr(0, separator), text.substr(separator + 1));
        } else {
            error = "unknown argument \"" + argument + "\"";
            return std::nullopt;
        }
    }
    return options;
}

std::string ServerOptions::usage() {
    return R"(Usage: lumora-devserver [options]

The content API for developing, demonstrating and testing LumoraSDK, on loopback only.

Options:
  --host HOST         loopback address to bind (default 127.0.0.1)
  --port PORT         port to listen on; 0 picks a free one (default 8787)
  --tls               serve HTTPS with a certificate made at start by a fresh CA
  --ca-out PATH       where to write that CA's certificate (PEM) for clients to trust
                      (default: a file in the temporary directory, named on stderr)
  --content DIR       directory with channels.json and its media (default: the built demo)
  --api-key KEY       the key clients send as x-lumora-api-key (default lumora-demo-key)
  --channels N        serve N channels: the content's channels repeated with fresh ids
  --media-max-age S   Cache-Control max-age of media answers, in seconds (default 86400)
  --fault ROUTE=JSON  inject a fault from the start, as POST /dev/faults would; repeatable
  --parent-pid PID    stop (as on SIGTERM) when process PID, the one starting the server, ends
  --help              show this text

The first line on standard output is the base URL, e.g. http://127.0.0.1:8787.
Request logs go to standard error.

Content API (x-lumora-api-key required; bearer token from /api/auth for the others):
  POST /api/auth                                {"externalId": "..."} or {}
  POST /api/app/user/updateExternalId           {"externalId": "..."}
  GET  /api/app/channel/channelsForUser
  POST /api/app/viewingHistory/recordViewingHistory  {"pageStoryId", "ChannelStoryId"}
  POST /api/app/activity/recordActivity         {"activityItemType", "pageStoryId", "channelStoryId"}
Files:
  GET  /media/<path>      content files, with Range support
  GET  /pages/<name>.html the swipe-up pages of the content
Control (no key):
  GET  /                  index page for people
  GET  /dev/events        recorded viewing-history and activity events
  GET  /dev/requests      every /api/ request received, with headers, body and status;
                          ?prefix=/media/ for the media requests instead
  POST /dev/reset         forget events, requests, users, tokens and faults
  GET  /dev/faults        the faults in force
  POST /dev/faults        {"route": "/api/...", "status": 500, "delayMs": 0, "body": "...",
                           "bodyKind": "malformed|truncated|huge|nested|invalid-utf8|wrong-type",
                           "contentType": "...", "location": "...", "drop": false,
                           "times": N}
                          route is an exact path or a prefix ending in "*"
  DELETE /dev/faults      clear all faults
)";
}

}  // namespace LumoraSDK::DevServer
