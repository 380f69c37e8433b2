#pragma once

#include "RecordingDelegate.hpp"

#include <KeloAPI/api/Session.hpp>
#include <KeloAPI/platform/Diagnostics.hpp>
#include <KeloAPI/platform/http/Manager.hpp>
#include <KeloAPI/testing/ScriptedTransport.hpp>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace KeloAPI::testing {

/// A test with a session over a scripted transport, its delegate, and the diagnostic lines.
class ScriptedSessionTest : public ::testing::Test {
protected:
    ScriptedSessionTest() {
        session->setDelegate(delegate);
        session->setSessionManager(std::make_shared<Manager>(transport));
        delegate->host = "service.example";
        Diagnostics::setSink([this](std::string_view line) { lines.emplace_back(line); });
    }
    ~ScriptedSessionTest() override {
        // A queued retry holds its endpoint, which holds the session: sessions of the registry live
        // as long as the process, but this one is to go.
        session->handleQueuedRetries(false);
        Diagnostics::setSink({});
    }

    std::shared_ptr<ScriptedTransport> transport = std::make_shared<ScriptedTransport>();
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
    std::shared_ptr<Session> session = std::make_shared<Session>(SessionType::Authenticated);
    std::vector<std::string> lines;
};

} // namespace KeloAPI::testing
