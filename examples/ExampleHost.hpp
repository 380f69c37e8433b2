// The delegate of the example hosts: where the service is and who the user is comes from the
// environment; nothing else is told, and nobody is there to sign in again unless a host derives
// from it. The library's diagnostic lines go to standard error.
#pragma once

#include <KeloAPI/KeloAPI.hpp>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class ExampleHost : public KeloAPI::BasicSessionDelegate {
public:
    /// Makes one the delegate of the library's sessions.
    static void use() { use(std::make_shared<ExampleHost>()); }
    static void use(const std::shared_ptr<ExampleHost>& host) {
        KeloAPI::Diagnostics::setSink([](std::string_view line) { std::clog << line << '\n'; });
        KeloAPI::Api::setSessionDelegate(host);
        useManager();
    }

    /// Gives the library's sessions managers with these settings.
    static void useManager(const KeloAPI::TransportSettings& settings = {}) {
        using namespace KeloAPI;
        for (const SessionType type : {SessionType::Authenticated, SessionType::UnAuthenticated}) {
            Api::session(type)->setSessionManager(std::make_shared<Manager>(trust(), settings));
        }
    }

    /// Accepts the certificate that KELO_PIN names, or that `kelo serve` made on this machine,
    /// where there is one, beside those that are built into the library. Ends the program where
    /// KELO_PIN names none.
    static KeloAPI::ServerTrustPolicyManager trust() {
        using namespace KeloAPI;
        std::vector<Certificate> pins = Certificates::chain();
        const std::string pin = fromEnvironment("KELO_PIN", "");
        if (!pin.empty() || isThisMachine(service())) {
            std::ifstream file(pin.empty() ? servedCertificate() : pin);
            const std::string pem(std::istreambuf_iterator<char>(file), {});
            if (const auto certificate = Certificate::fromPEM(pem)) {
                pins.push_back(*certificate);
            } else if (!pin.empty()) {
                std::cerr << "KELO_PIN: no certificate can be read from " << pin << '\n';
                std::exit(1);
            }
        }
        return ServerTrustPolicyManager({{service(), PinCertificates{std::move(pins)}}});
    }

    std::optional<std::string> hostForSession(KeloAPI::Session&) override { return service(); }
    std::optional<std::string> sessionKeyForSession(KeloAPI::Session&) override {
        return fromEnvironment("KELO_SESSION", "kelo-development-session");
    }

private:
    static std::string fromEnvironment(const char* name, const std::string& otherwise) {
        const char* value = std::getenv(name);
        return value != nullptr ? value : otherwise;
    }
    static bool isThisMachine(const std::string& host) {
        const auto url = KeloAPI::URL::parse("https://" + host);
        const std::string name = url ? url->host() : "";
        return name == "localhost" || name == "::1" ||
               (name.starts_with("127.") && name.find_first_not_of("0123456789.") == name.npos);
    }
    static std::string servedCertificate() {
        std::string folder = fromEnvironment("XDG_STATE_HOME", "");
        if (!folder.starts_with("/")) {
            folder = fromEnvironment("HOME", "") + "/.local/state";
        }
        return folder + "/kelo-service/certificate.pem";
    }
    static std::string service() { return fromEnvironment("KELO_HOST", "localhost:8443"); }
};
