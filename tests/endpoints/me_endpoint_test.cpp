#include "support/EndpointMaking.hpp"
#include "support/MainLoop.hpp"
#include "support/ScriptedSession.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

using fakes::ScriptedAnswer;
using testing::runUntil;

class MeEndpointTest : public testing::ScriptedSessionTest {
protected:
    std::optional<MeResult> get(const std::string& body) {
        std::optional<MeResult> outcome;
        transport->answer(ScriptedAnswer::json(body));
        endpoint->get([&](const MeResult& result) { outcome = result; });
        runUntil([&] { return outcome.has_value(); });
        return outcome;
    }

    std::shared_ptr<MeEndpoint> endpoint = MeEndpoint::create(session);
};

static_assert(!std::is_default_constructible_v<MeEndpoint>);
static_assert(!testing::madeOnTheStack<MeEndpoint, std::shared_ptr<Session>>);
static_assert(testing::createdWith<MeEndpoint>);
static_assert(testing::createdWith<MeEndpoint, std::shared_ptr<Session>>);

TEST_F(MeEndpointTest, TakesTheFirstOfSeveralUsers) {
    const auto outcome = get(R"({"data": {"records": [{"username": "a"}, {"username": "b"}]}})");
    ASSERT_TRUE(outcome && outcome->success());
    EXPECT_EQ(outcome->success()->user->username, "a");
}

TEST_F(MeEndpointTest, PassesEveryErrorOn) {
    for (const int code : {100, 230, 231, 900}) {
        const auto outcome = get(R"({"error": "no", "code": )" + std::to_string(code) + "}");
        ASSERT_TRUE(outcome && outcome->error());
        EXPECT_EQ(outcome->error()->code(), code);
        EXPECT_EQ(outcome->success(), nullptr);
    }
}

TEST_F(MeEndpointTest, AnAnswerWithoutUserStopsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a forked child has no session of its own
    EXPECT_DEATH(get(R"({"data": {}})"), "contract violated: users/me returned no user");
    EXPECT_DEATH(get(R"({"data": {"records": []}})"),
                 "contract violated: users/me returned no user");
}

TEST_F(MeEndpointTest, WithoutASessionUsesTheAuthenticatedOneAndItsDefaultDelegate) {
    Api::setSessionDelegate(delegate);
    const auto authenticated = Api::session(SessionType::Authenticated, nullptr);
    const auto own = MeEndpoint::create();
    EXPECT_EQ(own->session(), authenticated);
    EXPECT_EQ(authenticated->delegate(), delegate);
    EXPECT_EQ(own->path(), "users/me");
    EXPECT_EQ(own->method(), Method::GET);
    EXPECT_TRUE(own->parameters().empty());
}

} // namespace KeloAPI
