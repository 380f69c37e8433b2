#pragma once

#include "FreshManager.hpp"
#include "MainLoop.hpp"
#include "RecordingDelegate.hpp"
#include "StandIn.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/api/Session.hpp>
#include <KeloAPI/endpoints/TimelineEndpoint.hpp>
#include <KeloAPI/queues/Diagnostics.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace KeloAPI::testing {

/// A test against the running stand-in: the registry's authenticated session is the seeded user's,
/// with the certificates that were built in pinned.
class ServiceTest : public ::testing::Test {
protected:
    ServiceTest() {
        Diagnostics::setSink([](std::string_view) {});
        delegate->host = service.host();
        delegate->sessionKey = StandIn::sessionKey;
        Api::setSessionDelegate(delegate);
        session = Api::session(SessionType::Authenticated);
        renewManager(*session); // an earlier test's session may have had another host
    }
    ~ServiceTest() override {
        renewManager(*session); // ends what is still under way
        Api::setSessionDelegate(nullptr);
        Diagnostics::setSink({});
    }

    /// One page; fails the test when nothing comes.
    TimelineResult fetch(const std::shared_ptr<TimelineEndpoint>& endpoint) {
        std::optional<TimelineResult> outcome;
        endpoint->fetch([&](const TimelineResult& result) { outcome = result; });
        EXPECT_TRUE(runUntil([&] { return outcome.has_value(); }));
        return outcome.value_or(TimelineResult(TimelineResult::Error{Error("none", 0)}));
    }

    /// The header fields are those by which the host identifies itself, what HTTP itself needs and
    /// the type of a body, and no others.
    void expectFields(const SeenRequest& request, const char* contentType) {
        EXPECT_NE(request.header("Accept-Encoding"), "");
        std::vector<std::pair<std::string, std::string>> wanted = {
            {"Host", service.host()}, {"Accept-Encoding", request.header("Accept-Encoding")}};
        const auto add = [&wanted](const char* name, const std::optional<std::string>& value) {
            if (value) {
                wanted.emplace_back(name, *value);
            }
        };
        add("kelo-session-id", delegate->sessionKey);
        add("Accept-Language", delegate->acceptLanguage);
        add("User-Agent", delegate->userAgent);
        add("X-Kelo-Client", delegate->keloClient);
        if (delegate->polling) {
            add("X-Kelo-Polling", "true");
        }
        if (request.method == "POST" || request.method == "PUT") {
            add("Content-Length", std::to_string(request.bodyBytes));
        }
        if (request.bodyBytes > 0) {
            add("Content-Type", contentType);
        }
        EXPECT_THAT(request.headers, ::testing::UnorderedElementsAreArray(wanted));
    }

    /// Waits until the network thread and the queues behind it have done what they had to do: one
    /// more call goes through them all. Nobody takes it, so that it enters no log.
    void passThrough() {
        const auto fence = Endpoint::create(session);
        fence->setPath("https://localhost:1/");
        bool passed = false;
        fence->request([&](const auto&, const auto&) { passed = true; });
        EXPECT_TRUE(runUntil([&] { return passed; }));
    }

    StandIn service;
    std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
    std::shared_ptr<Session> session;
};

} // namespace KeloAPI::testing
