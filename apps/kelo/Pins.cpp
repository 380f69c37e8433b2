#include "Pins.hpp"

#include "Failure.hpp"

#include <KeloAPI/KeloAPI.hpp>

#include <arpa/inet.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace KeloHost {

using namespace KeloAPI;

namespace {

/// Absent where the file cannot be read.
std::optional<std::string> textOf(const std::string& path) {
    std::ifstream file(path);
    std::string text(std::istreambuf_iterator<char>(file), {});
    return file ? std::optional(std::move(text)) : std::nullopt;
}

Certificate namedCertificate(const std::string& path) {
    errno = 0;
    const auto text = textOf(path);
    if (!text) {
        throw Failure(ExitCode::Usage, "--pin: cannot read " + path + ": " + std::strerror(errno));
    }
    const auto certificate = Certificate::fromPEM(*text);
    if (!certificate) {
        throw Failure(ExitCode::Usage, "--pin: " + path + " does not hold a certificate (PEM)");
    }
    return *certificate;
}

/// Where `kelo serve` keeps its own.
std::string servedFile() {
    const char* state = std::getenv("XDG_STATE_HOME");
    const char* home = std::getenv("HOME");
    const bool hasState = state != nullptr && *state == '/';
    return (hasState ? std::string(state)
                     : std::string(home == nullptr ? "" : home) + "/.local/state") +
           "/kelo-service/certificate.pem";
}

void pin(const std::string& host, std::vector<Certificate> certificates,
         const TransportSettings& settings) {
    const ServerTrustPolicyManager trust({{host, PinCertificates{std::move(certificates)}}});
    const auto manager = std::make_shared<Manager>(trust, settings);
    for (const auto type : {SessionType::Authenticated, SessionType::UnAuthenticated}) {
        Api::session(type)->setSessionManager(manager);
    }
}

} // namespace

bool isThisMachine(const std::string& host) {
    const auto url = URL::parse("https://" + host);
    const std::string name = url ? url->host() : "";
    in_addr address{};
    const bool isIPv4Loopback =
        name.starts_with("127.") && inet_pton(AF_INET, name.c_str(), &address) == 1;
    return name == "localhost" || name == "::1" || isIPv4Loopback;
}

std::string usePins(const Options& options, const TransportSettings& settings) {
    if (!options.pin.empty()) {
        pin(options.host, {namedCertificate(options.pin)}, settings);
        return "expected was the certificate in " + options.pin + " (--pin or KELO_PIN)";
    }
    std::vector<Certificate> certificates = Certificates::chain();
    std::string expected = certificates.empty() ? "no certificate is built into kelo"
                                                : "expected was a certificate built into kelo";
    if (isThisMachine(options.host)) {
        const std::string path = servedFile();
        if (const auto served = Certificate::fromPEM(textOf(path).value_or(""))) {
            expected = (certificates.empty() ? "expected was " : expected + " or ") +
                       "that of kelo serve in " + path;
            certificates.push_back(*served);
        } else {
            expected += "; that of kelo serve cannot be read from " + path;
        }
    }
    pin(options.host, std::move(certificates), settings);
    return expected;
}

} // namespace KeloHost
