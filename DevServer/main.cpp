// lumora-devserver: the content API for developing, demonstrating and testing LumoraSDK.

#include "ContentApiServer.h"
#include "ContentLibrary.h"
#include "HttpUtil.h"
#include "ServerOptions.h"
#include "TlsIdentity.h"

#include <pthread.h>
#include <unistd.h>
#include <QJsonDocument>
#include <QJsonParseError>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <thread>

using namespace LumoraSDK::DevServer;

namespace {

constexpr int kUsageError = 2;
constexpr int kStartError = 1;

int fail(int code, const std::string& message) {
    std::cerr << "lumora-devserver: " << message << std::endl;
    return code;
}

bool writeFile(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    return bool(file.flush());
}

std::string urlHost(const std::string& host) {
    return host.find(':') != std::string::npos ? "[" + host + "]" : host;
}

/// Stops the server, as SIGTERM does, once the process that started it is gone: a test that
/// dies (an abort in a death test, a crash) cannot stop it, and its port and threads would stay.
/// A parent that ends makes the server a child of another process, so its parent id changes.
void exitWithParent(pid_t parent) {
    static constexpr auto kPollInterval = std::chrono::milliseconds(100);
    std::thread([parent] {
        while (getppid() == parent) {
            std::this_thread::sleep_for(kPollInterval);
        }
        logLine("the process that started the server (" + std::to_string(parent) + ") ended");
        kill(getpid(), SIGTERM);
    }).detach();
}

}  // namespace

int main(int argc, char** argv) {
    // Termination signals are taken by one thread with sigwait(), so the worker threads that the
    // server starts later never see them.
    // A shell starts background jobs with SIGINT ignored, and an ignored signal never reaches
    // sigwait(); this server should stop on it all the same.
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    // A client that goes away mid-answer must not end the process.
    std::signal(SIGPIPE, SIG_IGN);

    std::string error;
    const auto options = ServerOptions::parse({argv + 1, argv + argc}, error);
    if (!options) {
        return fail(kUsageError, error + " (see --help)");
    }
    if (options->help) {
        std::cout << ServerOptions::usage();
        return 0;
    }
    if (options->parentPid > 0) {
        exitWithParent(options->parentPid);
    }
    if (!isLoopbackHost(options->host)) {
        return fail(kUsageError, "refusing to listen on \"" + options->host +
                                     "\": only loopback addresses are served");
    }

    const std::string contentDir =
        options->contentDir.empty() ? LUMORA_DEVSERVER_CONTENT_DIR : options->contentDir;
    auto content = ContentLibrary::load(contentDir, error);
    if (!content) {
        return fail(kStartError, error);
    }

    std::optional<TlsIdentity> tls;
    if (options->tls) {
        tls = TlsIdentity::generate(error);
        if (!tls) {
            return fail(kStartError, error);
        }
        const std::string caPath =
            options->caOut.empty() ? (std::filesystem::temp_directory_path() /
                                      ("lumora-devserver-ca-" + std::to_string(getpid()) + ".pem"))
                                         .string()
                                   : options->caOut;
        if (!writeFile(caPath, tls->caCertificatePem())) {
            return fail(kStartError, "cannot write the CA certificate to " + caPath);
        }
        logLine("CA certificate: " + caPath);
    }

    if (options->channels > 0) {
        content->repeatChannels(size_t(options->channels));
    }
    const std::string servedDir = content->directory().string();
    ContentApiServer server(std::move(*content), options->apiKey, tls ? &*tls : nullptr,
                            options->mediaMaxAge);
    for (const auto& [route, json] : options->faults) {
        QJsonParseError parseError{};
        const auto document = QJsonDocument::fromJson(QByteArray::fromStdString(json), &parseError);
        const auto fault = document.isObject() ? Fault::fromJson(document.object(), error, route)
                                               : std::optional<Fault>();
        if (!fault) {
            return fail(kUsageError, "--fault " + route + ": " +
                                         (document.isObject() ? error : "needs a JSON object"));
        }
        server.faults().set(*fault);
    }

    const int port = server.bind(options->host, options->port);
    if (port < 0) {
        return fail(kStartError,
                    "cannot listen on " + options->host + ":" + std::to_string(options->port));
    }
    // The first line of standard output is all a launcher needs to read.
    std::cout << (tls ? "https://" : "http://") << urlHost(options->host) << ":" << port
              << std::endl;
    logLine("serving " + servedDir + " (" + std::to_string(port) + "); API key \"" +
            options->apiKey + "\"");

    std::atomic<bool> finished = false;
    std::thread signalWaiter([&server, &finished, stopSignals] {
        int signal = 0;
        sigwait(&stopSignals, &signal);
        // stop() does nothing until the server is listening; a signal may come before that.
        while (!finished) {
            server.stop();
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    });
    const bool served = server.run();
    finished = true;
    // Wakes the waiter when the server ended by itself; otherwise the signal is never taken.
    pthread_kill(signalWaiter.native_handle(), SIGTERM);
    signalWaiter.join();
    logLine("stopped");
    return served ? 0 : kStartError;
}
