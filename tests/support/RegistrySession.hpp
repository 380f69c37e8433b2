#pragma once

#include "FreshManager.hpp"
#include "ScriptedSession.hpp"

#include <KeloAPI/api/Api.hpp>

namespace KeloAPI::testing {

/// A test whose scripted session is the registry's authenticated one, for endpoints that take no
/// other.
class RegistrySessionTest : public ScriptedSessionTest {
protected:
    RegistrySessionTest() {
        Api::setSessionDelegate(delegate);
        session = Api::session(SessionType::Authenticated);
        session->setSessionManager(httpManager);
    }
    ~RegistrySessionTest() override {
        renewManager(*session);
        Api::setSessionDelegate(nullptr);
    }

    /// The request that was sent last.
    URLRequest lastRequest() const { return transport->requests().back(); }
    std::string lastBody() const {
        const auto body = lastRequest().body;
        return body ? std::string(body->text()) : "none";
    }
};

} // namespace KeloAPI::testing
