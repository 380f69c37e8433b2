#pragma once

#include <KeloAPI/api/SessionDelegate.hpp>

#include <memory>
#include <string>
#include <vector>

namespace KeloTour {

/// The tour as the library sees it: answers from fields that the steps set, and counts what it was
/// told.
class TourHost final : public KeloAPI::SessionDelegate {
public:
    std::string host;
    std::optional<std::string> sessionKey;
    bool polling = false;
    /// The answer to a captcha demand.
    bool handlesCaptcha = false;
    int timesAskedToSignIn = 0;
    std::vector<KeloAPI::URL> captchaUrls;

    /// The one of this process, the default delegate of its sessions.
    static TourHost& instance();

    std::optional<std::string> hostForSession(KeloAPI::Session& session) override;
    std::optional<std::string> schemaForSession(KeloAPI::Session& session) override;
    std::optional<std::string> sessionKeyForSession(KeloAPI::Session& session) override;
    std::optional<std::string> acceptLanguageForSession(KeloAPI::Session& session) override;
    std::optional<std::string> userAgentForSession(KeloAPI::Session& session) override;
    std::optional<std::string> keloClientForSession(KeloAPI::Session& session) override;
    bool isPollingForSession(KeloAPI::Session& session) override;
    void reauthRequiredForSession(KeloAPI::Session& session) override;
    bool shouldHandleCaptchaForSession(KeloAPI::Session& session,
                                       const KeloAPI::URL& captchaUrl) override;
};

} // namespace KeloTour
