#pragma once

#include <KeloAPI/api/SessionDelegate.hpp>

#include <optional>
#include <string>

namespace KeloAPI {

/// A delegate with a default for every question: texts are absent, yes-or-no questions are answered
/// with false, reports are ignored. A host derives from it and overrides what it needs.
class BasicSessionDelegate : public SessionDelegate {
public:
    std::optional<std::string> hostForSession(Session&) override { return {}; }
    std::optional<std::string> schemaForSession(Session&) override { return {}; }
    std::optional<std::string> sessionKeyForSession(Session&) override { return {}; }
    std::optional<std::string> acceptLanguageForSession(Session&) override { return {}; }
    std::optional<std::string> userAgentForSession(Session&) override { return {}; }
    std::optional<std::string> keloClientForSession(Session&) override { return {}; }
    bool isPollingForSession(Session&) override { return false; }
    void reauthRequiredForSession(Session&) override {}
    bool shouldHandleCaptchaForSession(Session&, const URL&) override { return false; }
};

} // namespace KeloAPI
