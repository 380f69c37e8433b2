#pragma once

#include "MainLoop.hpp"
#include "ManualTransport.hpp"
#include "RecordingDelegate.hpp"

#include <KeloAPI/api/Session.hpp>
#include <KeloAPI/fakes/ScriptedTransport.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/queues/Diagnostics.hpp>

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace KeloAPI::testing {

/// A test with a session over a scripted transport, its delegate, and the diagnostic lines.
class ScriptedSessionTest : public ::testing::Test {
protected:
    ScriptedSessionTest() {
        session->setDelegate(delegate);
        session->setSessionManager(httpManager);
        delegate->host = "service.example";
        Diagnostics::setSink([this](std::string_view line) { lines.emplace_back(line); });
    }
    ~ScriptedSessionTest() override { Diagnostics::setSink({}); }

    void TearDown() override {
        // A queued retry holds its endpoint, which holds the session: sessions of the registry live
        // as long as the process, but this one is to go.
        session->handleQueuedRetries(false);
        endCalls();
    }

    /// Ends the calls that still wait here, where their tests' members live, and not in a later
    /// test.
    void endCalls() {
        const std::size_t count = transport->requests().size();
        for (std::size_t index = 0; index < count; ++index) {
            transport->answerRequest(index, fakes::ScriptedAnswer::failure(httpError(
                                                HTTPErrorCode::Cancelled, "test is over")));
        }
        passThrough();
    }

    static constexpr const char* fence = "https://service.example/fence";

    /// Waits until all that was answered before has been dealt with: one more call, which goes
    /// behind it through every queue, tells when that is so.
    void passThrough() {
        bool passed = false;
        const auto last = httpManager->request(FixedRequest(fence));
        last->response([&passed](const ResponseContent&, Timeline) -> Request::Completion {
            return [&passed] { passed = true; };
        });
        const auto requests = transport->requests();
        for (std::size_t index = 0; index < requests.size(); ++index) {
            if (requests[index].url->absoluteString() == fence) {
                transport->answerRequest(index, {});
            }
        }
        EXPECT_TRUE(runUntil([&] { return passed; }));
    }

    std::shared_ptr<fakes::ScriptedTransport> transport =
        std::make_shared<fakes::ScriptedTransport>();
    std::shared_ptr<Manager> httpManager = std::make_shared<Manager>(transport);
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
    std::shared_ptr<Session> session = std::make_shared<Session>(SessionType::Authenticated);
    std::vector<std::string> lines;
};

} // namespace KeloAPI::testing
