#include "TourHost.hpp"

#include <KeloAPI/api/Api.hpp>

namespace KeloTour {

using namespace KeloAPI;

TourHost& TourHost::instance() {
    static const auto host = [] {
        auto made = std::make_shared<TourHost>();
        Api::setSessionDelegate(made);
        return made;
    }();
    return *host;
}

std::optional<std::string> TourHost::hostForSession(Session&) {
    return host;
}

std::optional<std::string> TourHost::schemaForSession(Session&) {
    return "https://";
}

std::optional<std::string> TourHost::sessionKeyForSession(Session& session) {
    return session.sessionType() == SessionType::Authenticated ? sessionKey : std::nullopt;
}

std::optional<std::string> TourHost::acceptLanguageForSession(Session&) {
    return "en-US";
}

std::optional<std::string> TourHost::userAgentForSession(Session&) {
    return "kelo-tour/1.0";
}

std::optional<std::string> TourHost::keloClientForSession(Session&) {
    return "tour/1.0";
}

bool TourHost::isPollingForSession(Session&) {
    return polling;
}

void TourHost::reauthRequiredForSession(Session&) {
    ++timesAskedToSignIn;
}

bool TourHost::shouldHandleCaptchaForSession(Session&, const URL& captchaUrl) {
    captchaUrls.push_back(captchaUrl);
    return handlesCaptcha;
}

} // namespace KeloTour
