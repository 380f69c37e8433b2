#include "support/ServiceTest.hpp"

#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>

namespace KeloAPI {

using Json = nlohmann::json;
using testing::runFor;
using testing::runUntil;

/// A call that does not wait for a minute.
class HastyMeEndpoint : public MeEndpoint {
public:
    KeloAPI::URLRequest URLRequest() const override {
        auto request = MeEndpoint::URLRequest();
        request.timeoutInterval = std::chrono::milliseconds(300);
        return request;
    }

protected:
    HastyMeEndpoint(Key key, std::shared_ptr<Session> session)
        : MeEndpoint(key, std::move(session)) {}
};

/// A service that misbehaves.
class FaultsAtService : public testing::ServiceTest {
protected:
    FaultsAtService()
        : endpoint(Endpoint::make<HastyMeEndpoint>(session)) {}

    MeResult get() {
        std::optional<MeResult> outcome;
        int completions = 0;
        endpoint->get([&](const MeResult& result) {
            outcome = result;
            ++completions;
        });
        EXPECT_TRUE(runUntil([&] { return outcome.has_value(); }));
        runFor(std::chrono::milliseconds(5));
        EXPECT_EQ(completions, 1);
        return *outcome;
    }

    /// The fault strikes once, the call fails once, and the same endpoint works afterwards.
    Error failedBy(const Json& action) {
        // On a fresh connection: a request that dies with a kept one is sent again on a new one.
        testing::renewManager(*session);
        service.addFault({{"match", {{"path", "/users/me"}}}, {"action", action}});
        const MeResult result = get();
        EXPECT_TRUE(result.error()) << action;
        EXPECT_EQ(service.faults().back().at("fired"), 1) << action;
        const MeResult after = get();
        EXPECT_TRUE(after.success()) << action << " " << after.error()->description();
        return result.error() ? *result.error() : Error("none", 0);
    }

    std::shared_ptr<HastyMeEndpoint> endpoint;
};

TEST_F(FaultsAtService, AStalledAnswerTimesOutWhereverItStalls) {
    for (const int bytes : {0, 1, 30, 200}) {
        const Error error = failedBy({{"type", "stall"}, {"afterBytes", bytes}});
        EXPECT_TRUE(isHTTPError(error, HTTPErrorCode::TimedOut)) << error.description();
    }
}

TEST_F(FaultsAtService, AConnectionThatBreaksOffIsAnErrorWhereverItBreaks) {
    for (const char* type : {"reset", "close"}) {
        for (const int bytes : {0, 1, 9, 20, 100, 150, 250}) {
            const Error error = failedBy({{"type", type}, {"afterBytes", bytes}});
            EXPECT_EQ(error.domain(), HTTPErrorDomain) << type << " after " << bytes;
        }
    }
}

TEST_F(FaultsAtService, AnAnswerThatIsNoHTTPIsAnError) {
    const Error error = failedBy({{"type", "garbage"}, {"bytes", 500}});
    EXPECT_EQ(error.domain(), HTTPErrorDomain) << error.description();
}

TEST_F(FaultsAtService, BadJsonIsTheHTTPLayersError) {
    for (const char* body : {"<html>busy</html>", "{\"data\": {", "", "{} {}"}) {
        const Error error = failedBy({{"type", "body"}, {"body", body}});
        EXPECT_EQ(error.domain(), HTTPErrorDomain) << body;
    }
}

TEST_F(FaultsAtService, AStatusWithoutEnvelopeIsJudgedByItsBody) {
    const Error error = failedBy({{"type", "status"}, {"status", 503}, {"body", "{}"}});
    EXPECT_EQ(error.localizedDescription(), "Malformed data section in response");
}

TEST_F(FaultsAtService, AServiceErrorComesThroughWithItsCode) {
    const Error error = failedBy({{"type", "error"}, {"code", 612}, {"message", "not today"}});
    EXPECT_EQ(error.code(), 612);
    EXPECT_EQ(error.localizedDescription(), "not today");
}

TEST_F(FaultsAtService, ACancelledCallEndsAtOnce) {
    service.addFault({{"match", {{"path", "/timelines/*"}}},
                      {"action", {{"type", "delay"}, {"milliseconds", 15000}}}});
    std::optional<Error> error;
    const auto slow = Endpoint::create(session);
    slow->setPath("timelines/all");
    const auto started = std::chrono::steady_clock::now();
    const auto handle = slow->request(
        [&](std::optional<std::string>, std::optional<Error> sent) { error = std::move(sent); });
    runFor(std::chrono::milliseconds(100));
    handle->cancel();
    ASSERT_TRUE(runUntil([&] { return error.has_value(); }));
    EXPECT_TRUE(isHTTPError(*error, HTTPErrorCode::Cancelled));
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
    EXPECT_TRUE(get().success());
}

TEST_F(FaultsAtService, AServiceThatIsNotThereIsAnError) {
    delegate->host = "localhost:1";
    EXPECT_TRUE(isHTTPError(*get().error(), HTTPErrorCode::CannotConnect));
}

} // namespace KeloAPI
