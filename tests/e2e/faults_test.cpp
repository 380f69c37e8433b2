#include "support/Awaited.hpp"
#include "support/ServiceTest.hpp"

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/model/KLEmpty.hpp>

namespace KeloAPI::testing {

using Json = nlohmann::json;

/// A call that does not wait for a minute.
class HastyEndpoint : public Endpoint {
public:
    KeloAPI::URLRequest URLRequest() const override {
        auto request = Endpoint::URLRequest();
        request.timeoutInterval = timeout;
        return request;
    }
    std::chrono::milliseconds timeout = timeLimit;

protected:
    HastyEndpoint(Key key, std::shared_ptr<Session> session)
        : Endpoint(key, std::move(session)) {}
};

/// A service that misbehaves, towards a call that reads and one that acts.
class FaultsAtService : public ServiceTest {
protected:
    FaultsAtService() {
        reading->setPath("users/me");
        const auto page = service.call("GET", "/timelines/all?size=1").at("data").at("records");
        acting->setPath("posts/" + page.at(0).at("postId").dump() + "/likes");
        acting->setMethod(Method::POST);
    }

    /// The error of a call, or none.
    std::optional<Error> call(const std::shared_ptr<HastyEndpoint>& endpoint) {
        const int before = completions;
        std::optional<Error> error;
        endpoint->request(
            std::make_shared<KLEmptyParser>(),
            [&](const auto&, const auto&, const Timeline&, const std::optional<Error>& sent) {
                ++completions;
                error = sent;
            });
        EXPECT_TRUE(runUntil([&] { return completions > before; }));
        return error;
    }
    /// The fault strikes once, the call fails once, and the same endpoint works afterwards.
    Error failedBy(const Json& action, const std::shared_ptr<HastyEndpoint>& endpoint) {
        // On a fresh connection: a request that dies with a kept one is sent again on a new one.
        renewManager(*session);
        service.call("DELETE", "/_service/faults");
        service.addFault({{"match", {{"path", "/" + endpoint->path()}}}, {"action", action}});
        completions = 0;
        const auto error = call(endpoint);
        EXPECT_TRUE(error) << action;
        EXPECT_EQ(service.faults().back().at("fired"), 1) << action;
        endpoint->timeout = timeLimit;
        const auto after = call(endpoint);
        EXPECT_FALSE(after) << action << " " << after->description();
        EXPECT_EQ(completions, 2) << action;
        return error.value_or(Error("none", 0));
    }
    using Calls = std::vector<std::pair<std::shared_ptr<HastyEndpoint>, int>>;
    /// The calls, each with less than its answer's length on the wire, and more than that of the
    /// answer's head.
    Calls callsWithLengths() {
        const auto [body, error] = awaited<std::optional<std::string>, std::optional<Error>>(
            [&](auto completion) { acting->request(completion); });
        const int bytes = static_cast<int>(body.value_or("").size()) + 60;
        EXPECT_GT(bytes, 150);
        return {{reading, 251}, {acting, bytes}}; // the user's answer is compressed
    }

    std::shared_ptr<HastyEndpoint> reading = Endpoint::make<HastyEndpoint>(session);
    std::shared_ptr<HastyEndpoint> acting = Endpoint::make<HastyEndpoint>(session);
    int completions = 0;
};

TEST_F(FaultsAtService, AStalledAnswerTimesOutWhereverItStalls) {
    for (const auto& [endpoint, bytes] : callsWithLengths()) {
        for (int at = 0; at < bytes; at += bytes / 7) {
            endpoint->timeout = std::chrono::milliseconds(400);
            const Error error = failedBy({{"type", "stall"}, {"afterBytes", at}}, endpoint);
            EXPECT_TRUE(isHTTPError(error, HTTPErrorCode::TimedOut)) << error.description();
        }
    }
}

TEST_F(FaultsAtService, AConnectionThatBreaksOffOrTalksNoHTTPIsAnErrorWhereverItDoes) {
    for (const auto& [endpoint, bytes] : callsWithLengths()) {
        for (int at = 0; at < bytes; at += at < 20 ? 3 : 11) {
            for (const Json& action :
                 {Json{{"type", "reset"}, {"afterBytes", at}},
                  Json{{"type", "close"}, {"afterBytes", at}},
                  Json{{"type", "close"}, {"afterBytes", at}, {"abrupt", true}}}) {
                EXPECT_EQ(failedBy(action, endpoint).domain(), HTTPErrorDomain) << action;
            }
        }
    }
    for (const int bytes : {1, 2, 17, 100, 500, 20000}) {
        const Error error = failedBy({{"type", "garbage"}, {"bytes", bytes}}, acting);
        EXPECT_EQ(error.domain(), HTTPErrorDomain) << error.description();
    }
}

TEST_F(FaultsAtService, AnswersThatAreNoEnvelopeAreErrors) {
    for (const char* body : {"<html>busy</html>", "", "{", "{\"data\":", "{} {}",
                             "{\"data\":{\"likeId\":1}} and more"}) {
        const Error error = failedBy({{"type", "body"}, {"body", body}}, reading);
        EXPECT_EQ(error.domain(), HTTPErrorDomain) << body;
    }
    for (const char* body : {"[]", "null", "{\"data\":[]}"}) {
        const Error error = failedBy({{"type", "body"}, {"body", body}}, acting);
        EXPECT_EQ(error.code(), -1) << body;
    }
    // A status is judged by its body.
    EXPECT_EQ(failedBy({{"type", "status"}, {"status", 503}, {"body", "{}"}}, reading)
                  .localizedDescription(),
              "Malformed data section in response");
    const Error error =
        failedBy({{"type", "error"}, {"code", 612}, {"message", "not today"}}, reading);
    EXPECT_EQ(error.code(), 612);
    EXPECT_EQ(error.localizedDescription(), "not today");
}

} // namespace KeloAPI::testing
