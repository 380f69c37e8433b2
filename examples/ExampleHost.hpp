// The delegate of the example hosts: where the service is and who the user is comes from the
// environment; nothing else is told, and nobody is there to sign in again.
#pragma once

#include <KeloAPI/api/SessionDelegate.hpp>

#include <cstdlib>

class ExampleHost final : public KeloAPI::SessionDelegate {
public:
    using Text = std::optional<std::string>;
    using Session = KeloAPI::Session;

    Text hostForSession(Session&) override {
        return fromEnvironment("KELO_HOST", "localhost:8443");
    }
    Text sessionKeyForSession(Session&) override {
        return fromEnvironment("KELO_SESSION", "kelo-development-session");
    }
    Text schemaForSession(Session&) override { return "https://"; }
    Text acceptLanguageForSession(Session&) override { return "en-US"; }
    Text userAgentForSession(Session&) override { return "example/1.0"; }
    Text keloClientForSession(Session&) override { return std::nullopt; }
    bool isPollingForSession(Session&) override { return false; }
    void reauthRequiredForSession(Session&) override {}
    bool shouldHandleCaptchaForSession(Session&, const KeloAPI::URL&) override { return false; }

private:
    static Text fromEnvironment(const char* name, const char* otherwise) {
        const char* value = std::getenv(name);
        return value != nullptr ? value : otherwise;
    }
};
