#include "support/TestService.hpp"

namespace KeloServiceTest {
namespace {

class ControlTest : public ServiceTest {};

TEST_F(ControlTest, IsHealthy) {
    const Json health = control("GET", "/_service/health");
    EXPECT_EQ(health.at("status"), "ok");
    EXPECT_TRUE(health.at("version").is_string());
}

TEST_F(ControlTest, AddsSessionsUnderGivenAndMadeUpKeys) {
    const Json given =
        control("POST", "/_service/sessions", {{"username", "kofi"}, {"key", "kofi's key"}});
    EXPECT_EQ(given.at("key"), "kofi's key");
    EXPECT_EQ(given.at("userId"), 1004);
    const Json made = control("POST", "/_service/sessions", {{"username", "kofi"}});
    EXPECT_EQ(made.at("key").get<std::string>().size(), 32U);
    EXPECT_EQ(Json::parse(get("/users/me", made.at("key"))->body).at("data").at("username"),
              "kofi");
}

TEST_F(ControlTest, MakesAnExpiredSessionFreshAgain) {
    control("POST", "/_service/sessions/kelo-development-session/expire");
    control("POST", "/_service/sessions/kelo-development-session/captcha");
    control("POST", "/_service/sessions",
            {{"username", "mara"}, {"key", "kelo-development-session"}});
    EXPECT_EQ(data("/users/me").at("username"), "mara");
}

TEST_F(ControlTest, ListsSessions) {
    control("POST", "/_service/sessions", {{"username", "kofi"}, {"key", "a/b"}});
    control("POST", "/_service/sessions/a%2Fb/expire");
    const Json demand = control("POST", "/_service/sessions/kelo-development-session/captcha");
    const Json sessions = control("GET", "/_service/sessions").at("sessions");
    ASSERT_EQ(sessions.size(), 2U);
    EXPECT_EQ(sessions[0].at("key"), "a/b");
    EXPECT_EQ(sessions[0].at("expired"), true);
    EXPECT_FALSE(sessions[0].contains("captchaUrl"));
    EXPECT_EQ(sessions[1].at("username"), "mara");
    EXPECT_EQ(sessions[1].at("captchaUrl"), demand.at("url"));
}

TEST_F(ControlTest, RefusesWhatDoesNotExist) {
    const auto status = [this](const std::string& path, const std::string& body) {
        return client.Post(path, body, "application/json")->status;
    };
    EXPECT_EQ(status("/_service/sessions/nobody/expire", ""), 404);
    EXPECT_EQ(status("/_service/sessions/nobody/captcha", ""), 404);
    EXPECT_EQ(status("/_service/sessions", R"({"username":"nobody"})"), 404);
    EXPECT_EQ(status("/_service/sessions", R"({"username":5})"), 400);
    EXPECT_EQ(status("/_service/sessions", R"({"username":"mara","key":5})"), 400);
    EXPECT_EQ(status("/_service/nothing", ""), 404);
    EXPECT_EQ(status("/_service/faults", "no json"), 400);
    EXPECT_EQ(client.Get("/_service/requests?since=x")->status, 400);
}

TEST_F(ControlTest, CountsConnections) {
    // The control client's connection is there, but serves no request of the service.
    Json counts = control("GET", "/_service/connections");
    EXPECT_EQ(counts.at("accepted"), 1);
    EXPECT_EQ(counts.at("secured"), 1);
    EXPECT_EQ(counts.at("used"), 0);
    EXPECT_EQ(counts.at("open"), 1);
    for (int i = 0; i < 5; ++i) {
        data("/users/me");
    }
    counts = control("GET", "/_service/connections");
    EXPECT_EQ(counts.at("accepted"), 2);
    EXPECT_EQ(counts.at("used"), 1);
    EXPECT_EQ(counts.at("open"), 2);
}

} // namespace
} // namespace KeloServiceTest
