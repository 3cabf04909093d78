#include "ContentApiServer.h"

#include "HttpUtil.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <netinet/in.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <chrono>
#include <thread>

namespace LumoraSDK::DevServer {

namespace {

constexpr size_t kChunkSize = 64 * 1024;

bool isControlPath(const std::string& path) {
    return path == "/" || path.starts_with("/dev/");
}

std::string addressText(const sockaddr_storage& address, int& port) {
    char text[INET6_ADDRSTRLEN] = {};
    if (address.ss_family == AF_INET) {
        const auto* v4 = reinterpret_cast<const sockaddr_in*>(&address);
        inet_ntop(AF_INET, &v4->sin_addr, text, sizeof text);
        port = ntohs(v4->sin_port);
    } else if (address.ss_family == AF_INET6) {
        const auto* v6 = reinterpret_cast<const sockaddr_in6*>(&address);
        inet_ntop(AF_INET6, &v6->sin6_addr, text, sizeof text);
        port = ntohs(v6->sin6_port);
    }
    return text;
}

/// Whether `fd` is the TCP connection between the request's local and remote endpoints.
bool isConnectionOf(int fd, const httplib::Request& request) {
    sockaddr_storage peer{};
    sockaddr_storage local{};
    socklen_t peerLength = sizeof peer;
    socklen_t localLength = sizeof local;
    if (getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &peerLength) != 0 ||
        getsockname(fd, reinterpret_cast<sockaddr*>(&local), &localLength) != 0) {
        return false;
    }
    int peerPort = -1;
    int localPort = -1;
    const std::string peerAddress = addressText(peer, peerPort);
    addressText(local, localPort);
    return peerPort == request.remote_port && localPort == request.local_port &&
           peerAddress == request.remote_addr;
}

}  // namespace

ContentApiServer::ContentApiServer(ContentLibrary content, std::string apiKey,
                                   const TlsIdentity* tls, int mediaMaxAgeSeconds)
    : m_content(std::move(content))
    , m_tls(tls != nullptr)
    , m_api(m_content, m_users, m_journal, std::move(apiKey), m_tls)
    , m_dev(m_content, m_users, m_journal, m_faults, m_tls)
    , m_media(m_content, mediaMaxAgeSeconds) {
    if (tls) {
        m_http = std::make_unique<httplib::SSLServer>(tls->serverCertificate(), tls->serverKey());
    } else {
        m_http = std::make_unique<httplib::Server>();
    }
    m_http->new_task_queue = [] { return new httplib::ThreadPool(kThreadCount); };
    m_http->set_payload_max_length(kMaximumRequestBody);
    // Headers and body go out in separate writes; without this, Nagle's algorithm and delayed
    // acknowledgements hold every kept-alive answer back by tens of milliseconds.
    m_http->set_tcp_nodelay(true);
    m_http->set_keep_alive_max_count(kKeepAliveRequests);
    auto handler = [this](const httplib::Request& request, httplib::Response& response) {
        dispatch(request, response);
    };
    // Every request goes through dispatch(), which routes by path itself: faults and the request
    // journal then see all of them, whatever the route.
    const std::string everything = "/.*";
    m_http->Get(everything, handler);
    m_http->Post(everything, handler);
    m_http->Put(everything, handler);
    m_http->Patch(everything, handler);
    m_http->Delete(everything, handler);
    m_http->Options(everything, handler);
    // A POST or DELETE without a body may come without Content-Length ("curl -X POST" sends
    // none), and the library refuses such a request once routing reaches the body. Its body is
    // empty anyway, so answer it here, before that.
    m_http->set_pre_routing_handler(
        [this](const httplib::Request& request, httplib::Response& response) {
            const bool unsized =
                !request.has_header("Content-Length") && !request.has_header("Transfer-Encoding");
            if (unsized && request.method != "GET" && request.method != "HEAD" &&
                request.method != "OPTIONS") {
                dispatch(request, response);
                return httplib::Server::HandlerResponse::Handled;
            }
            return httplib::Server::HandlerResponse::Unhandled;
        });
    m_http->set_exception_handler(
        [](const httplib::Request& request, httplib::Response& response, std::exception_ptr error) {
            std::string what = "unknown exception";
            try {
                std::rethrow_exception(error);
            } catch (const std::exception& exception) {
                what = exception.what();
            } catch (...) {
            }
            logLine("error answering " + request.method + " " + request.path + ": " + what);
            setError(response, 500, "internal", what);
        });
    m_http->set_logger([](const httplib::Request& request, const httplib::Response& response) {
        logLine(request.remote_addr + ":" + std::to_string(request.remote_port) + " " +
                request.method + " " + request.target + " " + std::to_string(response.status) +
                " " +
                std::to_string(response.body.empty() ? response.content_length_
                                                     : response.body.size()) +
                " bytes");
    });
}

int ContentApiServer::bind(const std::string& host, int port) {
    if (port == 0) {
        return m_http->bind_to_any_port(host);
    }
    return m_http->bind_to_port(host, port) ? port : -1;
}

bool ContentApiServer::run() {
    return m_http->listen_after_bind();
}

void ContentApiServer::stop() {
    m_http->stop();
}

void ContentApiServer::dispatch(const httplib::Request& request, httplib::Response& response) {
    // Byte ranges are answered by MediaFiles alone; left in place, the library would cut the
    // answer a second time, and read past the end of a file for ranges beyond it.
    const_cast<httplib::Request&>(request).ranges.clear();

    // API and media requests are journalled; /dev/requests answers the API ones unless asked
    // for another prefix.
    const bool journalled =
        request.path.starts_with("/api/") || request.path.starts_with("/media/");
    int64_t seq = 0;
    if (journalled) {
        seq = m_journal.beginRequest(
            QJsonObject{{"method", textOf(request.method)},
                        {"path", textOf(request.path)},
                        {"query", textOf(rawQuery(request))},
                        {"headers", headersAsJson(request.headers)},
                        {"body", textOf(request.body.substr(0, kMaximumJournalBody))}});
    }
    const auto fault = isControlPath(request.path) ? std::nullopt : m_faults.take(request.path);
    const bool handled = fault && applyFault(*fault, request, response);
    if (!handled) {
        route(request, response);
        if (fault && fault->contentType) {
            response.headers.erase("Content-Type");
            response.set_header("Content-Type", *fault->contentType);
        }
    }
    if (journalled) {
        m_journal.finishRequest(seq, fault && fault->drop ? 0 : response.status);
    }
}

void ContentApiServer::route(const httplib::Request& request, httplib::Response& response) {
    const std::string& path = request.path;
    const bool get = request.method == "GET" || request.method == "HEAD";
    if (path.starts_with("/api/")) {
        m_api.handle(request, response);
    } else if (isControlPath(path)) {
        m_dev.handle(request, response);
    } else if (path.starts_with("/media/") && get) {
        m_media.serve(path.substr(7), request, response);
    } else if (path.starts_with("/pages/") && get) {
        m_media.serve(path.substr(1), request, response);
    } else {
        setError(response, 404, "not-found", "no route " + request.method + " " + path);
    }
}

bool ContentApiServer::applyFault(const Fault& fault, const httplib::Request& request,
                                  httplib::Response& response) {
    if (fault.delayMs > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(fault.delayMs));
    }
    if (fault.drop) {
        logLine("fault: dropping " + request.method + " " + request.path);
        dropConnection(request);
        response.status = 500;
        return true;
    }
    if (!fault.replacesAnswer()) {
        return false;
    }
    response.status = fault.status.value_or(200);
    if (fault.location) {
        response.set_header("Location", *fault.location);
    }
    auto body = std::make_shared<const Fault::Body>(fault.replacementBody(
        fault.bodyKind ? m_content.channelsFor({}, requestBaseUrl(request, m_tls)) : QJsonArray{}));
    // Served through a provider of known length, which the library never compresses: the client
    // gets these bytes exactly, and the huge body really is that large on the wire.
    response.set_content_provider(body->size(), fault.contentType.value_or(kJsonContentType),
                                  [body](size_t offset, size_t length, httplib::DataSink& sink) {
                                      char buffer[kChunkSize];
                                      const size_t got = body->read(
                                          offset, std::min(length, sizeof buffer), buffer);
                                      return got > 0 && sink.write(buffer, got);
                                  });
    return true;
}

void ContentApiServer::dropConnection(const httplib::Request& request) {
    int fd = -1;
    if (request.ssl) {
        fd = SSL_get_fd(request.ssl);
    } else if (DIR* fds = opendir("/proc/self/fd")) {
        // The library does not hand the socket to handlers; find it by its endpoints.
        while (const dirent* entry = readdir(fds)) {
            const int candidate = std::atoi(entry->d_name);
            if (candidate > 2 && candidate != dirfd(fds) && isConnectionOf(candidate, request)) {
                fd = candidate;
                break;
            }
        }
        closedir(fds);
    }
    if (fd >= 0) {
        shutdown(fd, SHUT_RDWR);
    }
}

}  // namespace LumoraSDK::DevServer
