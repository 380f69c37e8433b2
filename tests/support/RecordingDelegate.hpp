#pragma once

#include <KeloAPI/api/Session.hpp>
#include <KeloAPI/api/SessionDelegate.hpp>

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace KeloAPI::testing {

/// A delegate that answers what its fields say and notes what it hears.
class RecordingDelegate : public SessionDelegate {
public:
    std::optional<std::string> host;
    std::optional<std::string> schema;
    std::optional<std::string> sessionKey;
    std::optional<std::string> acceptLanguage;
    std::optional<std::string> userAgent;
    std::optional<std::string> keloClient;
    bool polling = false;
    bool handlesCaptcha = false;

    int reauthCount = 0;
    std::vector<std::string> captchaUrls;
    std::vector<const Session*> askedBy;
    /// Run inside the two callbacks.
    std::function<void(Session&)> onReauth;
    std::function<void(Session&)> onCaptcha;

    std::optional<std::string> hostForSession(Session& session) override {
        const std::lock_guard lock(_mutex);
        askedBy.push_back(&session);
        return host;
    }
    std::optional<std::string> schemaForSession(Session&) override { return schema; }
    std::optional<std::string> sessionKeyForSession(Session&) override { return sessionKey; }
    std::optional<std::string> acceptLanguageForSession(Session&) override {
        return acceptLanguage;
    }
    std::optional<std::string> userAgentForSession(Session&) override { return userAgent; }
    std::optional<std::string> keloClientForSession(Session&) override { return keloClient; }
    bool isPollingForSession(Session&) override { return polling; }
    void reauthRequiredForSession(Session& session) override {
        ++reauthCount;
        if (onReauth) {
            onReauth(session);
        }
    }
    bool shouldHandleCaptchaForSession(Session& session, const URL& captchaUrl) override {
        captchaUrls.push_back(captchaUrl.absoluteString());
        if (onCaptcha) {
            onCaptcha(session);
        }
        return handlesCaptcha;
    }

private:
    std::mutex _mutex; // requests are sent from any thread
};

} // namespace KeloAPI::testing
