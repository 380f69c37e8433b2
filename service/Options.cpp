#include "service/Options.hpp"

#include "service/seed/Seed.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>

namespace KeloService {
namespace {

std::string developmentFile(const std::string& executable, const std::string& name) {
    return (std::filesystem::path(executable).parent_path().parent_path() / "certificates" / name)
        .string();
}

std::string footer() {
    return "The seeded user " + std::string(developmentUser) +
           " is signed in with the session key " + std::string(developmentSessionKey) +
           ".\nEvery seeded user's password is " + std::string(developmentPassword) +
           ".\n\nExample:\n  kelo-service --port 0 --session theo.loops=my-own-key";
}

std::pair<std::string, std::string> parseSession(const std::string& text) {
    const std::size_t separator = text.find('=');
    if (separator == std::string::npos || separator == 0 || separator + 1 == text.size()) {
        throw UsageError("--session: " + text + " is not of the form USERNAME=KEY");
    }
    return {text.substr(0, separator), text.substr(separator + 1)};
}

std::string oneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

} // namespace

Options parseOptions(int argc, const char* const* argv, const std::string& executable) {
    Options options;
    Settings& settings = options.settings;
    std::vector<std::string> sessions;
    CLI::App app("A stand-in of the service: an HTTPS server on this machine's loopback address.",
                 "kelo-service");
    app.footer(footer());
    app.set_version_flag("--version", "kelo-service " KELO_SERVICE_VERSION);
    app.add_option("--listen", settings.address, "Loopback address to listen on")
        ->capture_default_str();
    app.add_option("--port", settings.port, "Port to listen on; 0 takes any free one")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    app.add_option("--database", settings.database,
                   "SQLite file to keep everything in; made and seeded when it does not exist")
        ->capture_default_str();
    auto* certificate = app.add_option("--certificate", settings.certificate,
                                       "Certificate chain (PEM) to serve with");
    auto* key = app.add_option("--key", settings.key, "Its key (PEM)");
    certificate->needs(key);
    key->needs(certificate);
    app.add_option("--session", sessions, "USERNAME=KEY: a session to add; may be repeated")
        ->allow_extra_args(false);
    app.add_option("--faults", settings.faults, "JSON file of faults to begin with");
    app.add_option("--media-rate", settings.mediaRate,
                   "Bytes per second that each file of media is sent with at most; 0 for no limit")
        ->check(CLI::Range(std::int64_t{0}, highestMediaRate))
        ->capture_default_str();
    app.add_option("--upload-rate", settings.uploadRate,
                   "Bytes per second that each segment of an upload is read with at most")
        ->check(CLI::Range(std::int64_t{0}, highestMediaRate))
        ->capture_default_str();
    app.add_option("--upload-expiry", settings.uploadExpirySeconds,
                   "Seconds that an upload takes segments")
        ->check(CLI::Range(std::int64_t{0}, std::int64_t{1000000000}))
        ->capture_default_str();
    app.add_option("--processing-time", settings.processingSeconds,
                   "Seconds that an uploaded video is processed")
        ->check(CLI::Range(0.0, 86400.0))
        ->capture_default_str();
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
        throw UsageError(oneLine(error.what()));
    }
    for (const std::string& session : sessions) {
        settings.sessions.push_back(parseSession(session));
    }
    if (settings.certificate.empty()) {
        settings.certificate = developmentFile(executable, "development-1.pem");
        settings.key = developmentFile(executable, "development-1.key");
    }
    return options;
}

} // namespace KeloService
