// The delegate of the example hosts: where the service is and who the user is comes from the
// environment; nothing else is told, and nobody is there to sign in again.
#pragma once

#include <KeloAPI/KeloAPI.hpp>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class ExampleHost final : public KeloAPI::BasicSessionDelegate {
public:
    /// Makes one the delegate of the library's sessions.
    static void use() {
        const auto host = std::make_shared<ExampleHost>();
        KeloAPI::Api::setSessionDelegate(host);
        host->pinCertificate();
    }

    std::optional<std::string> hostForSession(KeloAPI::Session&) override { return _host; }
    std::optional<std::string> sessionKeyForSession(KeloAPI::Session&) override {
        return fromEnvironment("KELO_SESSION", "kelo-development-session");
    }

private:
    static std::string fromEnvironment(const char* name, const std::string& otherwise) {
        const char* value = std::getenv(name);
        return value != nullptr ? value : otherwise;
    }

    /// The certificate that KELO_PIN names or that `kelo serve` made, where there is one, is
    /// accepted beside those that are built into the library.
    void pinCertificate() const {
        using namespace KeloAPI;
        const std::string state =
            fromEnvironment("XDG_STATE_HOME", fromEnvironment("HOME", "") + "/.local/state");
        std::ifstream file(fromEnvironment("KELO_PIN", state + "/kelo-service/certificate.pem"));
        const std::string pem(std::istreambuf_iterator<char>(file), {});
        if (const auto certificate = Certificate::fromPEM(pem)) {
            std::vector<Certificate> pins = Certificates::chain();
            pins.push_back(*certificate);
            const ServerTrustPolicyManager trust({{_host, PinCertificates{std::move(pins)}}});
            Api::session(SessionType::Authenticated)
                ->setSessionManager(std::make_shared<Manager>(trust));
        }
    }

    const std::string _host = fromEnvironment("KELO_HOST", "localhost:8443");
};
