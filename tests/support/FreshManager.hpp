#pragma once

#include <KeloAPI/api/Certificates.hpp>
#include <KeloAPI/api/Session.hpp>
#include <KeloAPI/http/ServerTrustPolicy.hpp>

#include <map>
#include <memory>
#include <string>

namespace KeloAPI::testing {

/// Gives the session a manager without connections, with the built-in certificates pinned for the
/// host that the session has now. What is still under way with the old one ends.
inline void renewManager(Session& session) {
    const std::map<std::string, ServerTrustPolicy> policies = {
        {session.host(), PinCertificates{Certificates::chain()}}};
    session.setSessionManager(std::make_shared<Manager>(ServerTrustPolicyManager(policies)));
}

} // namespace KeloAPI::testing
