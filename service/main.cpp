#include "service/OwnCertificate.hpp"
#include "service/seed/Seed.hpp"
#include "service/Service.hpp"

#include <CLI/CLI.hpp>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using KeloService::developmentPassword;
using KeloService::developmentSessionKey;
using KeloService::developmentUser;
using KeloService::highestByteRate;
using KeloService::Service;
using KeloService::Settings;

constexpr int failure = 2;

struct Options {
    Settings settings;
    bool quiet = false;
    bool exitWithParent = false;
    /// What --help or --version asks to be printed instead of serving.
    std::optional<std::string> information;
};

std::string footer() {
    return "The seeded user " + std::string(developmentUser) +
           " is signed in with the session key " + std::string(developmentSessionKey) +
           ".\nEvery seeded user's password is " + std::string(developmentPassword) +
           ".\n\nExample:\n  kelo-service --port 0 --session theo.loops=my-own-key";
}

std::pair<std::string, std::string> parseSession(const std::string& text) {
    const std::size_t separator = text.find('=');
    if (separator == std::string::npos || separator == 0 || separator + 1 == text.size()) {
        throw std::runtime_error("--session: " + text + " is not of the form USERNAME=KEY");
    }
    return {text.substr(0, separator), text.substr(separator + 1)};
}

/// What cannot be used throws, with one line that says why.
Options parseOptions(int argc, const char* const* argv) {
    Options options;
    Settings& settings = options.settings;
    std::vector<std::string> sessions;
    CLI::App app("A stand-in of the service: an HTTPS server on this machine's loopback address.",
                 "kelo-service");
    app.footer(footer());
    app.set_version_flag("-V,--version", "kelo-service " KELO_SERVICE_VERSION);
    app.add_option("--listen", settings.address, "Loopback address to listen on")
        ->capture_default_str();
    const auto addNumber = [&app](const char* name, auto& value, auto highest, const char* help) {
        app.add_option(name, value, help)
            ->check(CLI::Range(decltype(highest){0}, highest))
            ->capture_default_str();
    };
    addNumber("--port", settings.port, 65535, "Port to listen on; 0 takes any free one");
    app.add_option("--database", settings.database,
                   "SQLite file to keep everything in; made and seeded when it does not exist")
        ->capture_default_str();
    auto* certificate =
        app.add_option("--certificate", settings.certificate,
                       "Certificate chain (PEM) to serve with; by default one that it makes itself "
                       "and keeps with the user's state");
    auto* key = app.add_option("--key", settings.key, "Its key (PEM)");
    certificate->needs(key);
    key->needs(certificate);
    app.add_option("--session", sessions, "USERNAME=KEY: a session to add; may be repeated")
        ->allow_extra_args(false);
    app.add_option("--faults", settings.faults, "JSON file of faults to begin with");
    addNumber("--media-rate", settings.mediaRate, highestByteRate,
              "Bytes per second that each file of media is sent with at most; 0 for no limit");
    addNumber("--upload-rate", settings.uploadRate, highestByteRate,
              "Bytes per second that each segment of an upload is read with at most");
    addNumber("--upload-expiry", settings.uploadExpirySeconds, std::int64_t{1000000000},
              "Seconds that an upload takes segments");
    addNumber("--processing-time", settings.processingSeconds, 86400.0,
              "Seconds that an uploaded video is processed");
    app.add_flag("--quiet", options.quiet, "Print nothing but the address");
    app.add_flag("--exit-with-parent", options.exitWithParent,
                 "End when the process that started this one ends");
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        options.information = app.help();
    } catch (const CLI::CallForVersion& version) {
        options.information = std::string(version.what()) + "\n";
    } catch (const CLI::ParseError& error) {
        std::string line = error.what();
        std::replace(line.begin(), line.end(), '\n', ' ');
        throw std::runtime_error(line);
    }
    for (const std::string& session : sessions) {
        settings.sessions.push_back(parseSession(session));
    }
    if (settings.certificate.empty()) {
        const KeloService::CertificateFiles own = KeloService::ownCertificate();
        settings.certificate = own.certificate;
        settings.key = own.key;
    }
    return options;
}

/// Blocks the signals that end the program in this thread and those it starts, so that they can be
/// waited for. Returns them.
sigset_t blockSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignore, nullptr);
    return signals;
}

void endWithParent(pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) {
        kill(getpid(), SIGTERM);
    }
}

void printStart(const Service& service, const std::string& certificate, bool quiet) {
    const std::string_view key = developmentSessionKey;
    std::cout << "kelo-service: listening on " << service.url() << '\n';
    if (!quiet) {
        std::cout << "The user " << developmentUser << " is signed in with the session key " << key
                  << " (password: " << developmentPassword << ").\n"
                  << "Its certificate: " << certificate << '\n'
                  << "Try: curl --cacert " << certificate << " -H 'kelo-session-id: " << key << "' "
                  << service.url() << "/users/me\nStop with Ctrl-C.\n";
    }
    std::cout.flush();
}

int run(int argc, char** argv) {
    const pid_t parent = getppid();
    const Options options = parseOptions(argc, argv);
    if (options.information) {
        std::cout << *options.information;
        return 0;
    }
    const sigset_t signals = blockSignals();
    if (options.exitWithParent) {
        endWithParent(parent);
    }
    Service service(options.settings);
    service.start();
    printStart(service, options.settings.certificate, options.quiet);
    int signal = 0;
    sigwait(&signals, &signal);
    service.stop();
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "kelo-service: " << error.what() << '\n';
        return failure;
    }
}
