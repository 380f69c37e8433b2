#include "support/TestService.hpp"

#include <set>

namespace KeloServiceTest {
namespace {

using KeloService::developmentPassword;

class SessionsTest : public ServiceTest {
protected:
    Reply enter(const std::string& username, const std::string& word) {
        return send("POST", "/sessions", Json{{"username", username}, {"password", word}}.dump(),
                    "");
    }
    void expire(const std::string& key) {
        control("POST", "/_service/sessions/" + key + "/expire");
    }

    const std::string password{developmentPassword};
};

TEST_F(SessionsTest, TheSeededUserIsSignedIn) {
    const Json me = data("/users/me");
    EXPECT_EQ(me.at("userId"), 1001);
    EXPECT_EQ(me.at("username"), "mara");
    pathOf(me.at("avatarUrl"));
    for (const char* key :
         {"loopCount", "loopVelocity", "followerCount", "followingCount", "postCount"}) {
        EXPECT_TRUE(me.at(key).is_number()) << key;
    }
    EXPECT_GT(me.at("postCount"), 0);
}

TEST_F(SessionsTest, NoKeyAndAnUnknownKeyAskForSignIn) {
    const Reply reply = send("GET", "/users/me", "", "");
    EXPECT_EQ(reply.status, 401);
    EXPECT_EQ(reply.code(), 100);
    EXPECT_FALSE(reply.error().empty());
    EXPECT_FALSE(reply.json.contains("data"));
    EXPECT_EQ(send("GET", "/timelines/home", "", "").code(), 100);
    EXPECT_EQ(send("GET", "/users/me", "", "nobody's").code(), 100);
    EXPECT_EQ(send("GET", "/timelines/popular", "", "nobody's").code(), 100);
    // An empty key is a key that nobody holds.
    const auto empty = client.Get("/timelines/popular", {{sessionHeader, ""}});
    ASSERT_TRUE(empty);
    EXPECT_EQ(Json::parse(empty->body).at("code"), 100);
    EXPECT_EQ(send("GET", "/timelines/popular", "", "").data().at("records").size(), 20U);
}

TEST_F(SessionsTest, AnExpiredKeySaysSo) {
    expire(developmentKey);
    const Reply reply = send("GET", "/users/me");
    EXPECT_EQ(reply.status, 401);
    EXPECT_EQ(reply.code(), 103);
    EXPECT_EQ(send("GET", "/timelines/popular").code(), 103);
}

TEST_F(SessionsTest, EverySignInGivesAnotherWorkingKey) {
    std::set<std::string> keys;
    for (int i = 0; i < 10; ++i) {
        const Reply session = enter("theo.loops", password);
        EXPECT_EQ(session.status, 200);
        EXPECT_EQ(session.data().at("userId"), 1002);
        EXPECT_EQ(session.data().at("username"), "theo.loops");
        const std::string key = session.data().at("key");
        EXPECT_EQ(send("GET", "/users/me", "", key).data().at("userId"), 1002);
        keys.insert(key);
    }
    EXPECT_EQ(keys.size(), 10U);
}

TEST_F(SessionsTest, SigningInRefusesWrongCredentialsAndOtherBodies) {
    for (const Reply& reply :
         {enter("mara", "loop-the-looP"), enter("mara", ""), enter("nobody", password)}) {
        EXPECT_EQ(reply.status, 401);
        EXPECT_EQ(reply.code(), 101);
    }
    for (const char* body : {"", "[]", "{", "{}", R"({"username":"mara"})",
                             R"({"username":1,"password":"loop-the-loop"})"}) {
        const Reply reply = send("POST", "/sessions", body, "");
        EXPECT_EQ(reply.status, 400) << body;
        EXPECT_EQ(reply.code(), 400) << body;
    }
}

TEST_F(SessionsTest, AreAddedUnderGivenAndMadeUpKeys) {
    const Json given =
        control("POST", "/_service/sessions", {{"username", "kofi"}, {"key", "kofi's key"}});
    EXPECT_EQ(given.at("key"), "kofi's key");
    EXPECT_EQ(given.at("userId"), 1004);
    const std::string made = signIn("kofi");
    EXPECT_EQ(made.size(), 32U);
    EXPECT_EQ(send("GET", "/users/me", "", made).data().at("username"), "kofi");
}

TEST_F(SessionsTest, AreListed) {
    control("POST", "/_service/sessions", {{"username", "kofi"}, {"key", "a/b"}});
    expire("a%2Fb");
    const Json demand = control("POST", "/_service/sessions/" + developmentKey + "/captcha");
    const Json sessions = control("GET", "/_service/sessions").at("sessions");
    ASSERT_EQ(sessions.size(), 2U);
    EXPECT_EQ(sessions[0].at("key"), "a/b");
    EXPECT_EQ(sessions[0].at("expired"), true);
    EXPECT_FALSE(sessions[0].contains("captchaUrl"));
    EXPECT_EQ(sessions[1].at("username"), "mara");
    EXPECT_EQ(sessions[1].at("captchaUrl"), demand.at("url"));
}

class CaptchaTest : public SessionsTest {
protected:
    CaptchaTest()
        : demand(control("POST", "/_service/sessions/" + developmentKey + "/captcha"))
        , path("/captcha/" + demand.at("token").get<std::string>()) {}

    Json demand;
    std::string path;
};

TEST_F(CaptchaTest, IsAskedForUntilItIsSolved) {
    for (int i = 0; i < 2; ++i) {
        const Reply reply = send("GET", "/users/me");
        EXPECT_EQ(reply.status, 403);
        EXPECT_EQ(reply.code(), 419);
        EXPECT_EQ(reply.data(), demand.at("url"));
        EXPECT_EQ(reply.data(), service.url() + path);
    }
    EXPECT_EQ(client.Post(path + "/solve")->status, 200);
    EXPECT_EQ(data("/users/me").at("userId"), 1001);
    EXPECT_EQ(client.Post(path + "/solve")->status, 404);
}

TEST_F(CaptchaTest, IsShownAsAPageThatSolvesIt) {
    const auto page = client.Get(path);
    ASSERT_TRUE(page);
    EXPECT_EQ(page->status, 200);
    EXPECT_EQ(page->get_header_value("Content-Type"), "text/html; charset=utf-8");
    EXPECT_NE(page->body.find("method=\"post\" action=\"" + path + "/solve\""), std::string::npos);
    EXPECT_EQ(client.Get(path + "/solve")->status, 200);
    EXPECT_EQ(client.Get(path)->status, 404);
}

TEST_F(CaptchaTest, ConcernsOneSessionOnlyAndComesAfterExpiry) {
    EXPECT_EQ(send("GET", "/users/me", "", signIn("mara")).data().at("userId"), 1001);
    expire(developmentKey);
    EXPECT_EQ(send("GET", "/users/me").code(), 103);
    // A session that is added again is fresh, and without demands.
    control("POST", "/_service/sessions", {{"username", "mara"}, {"key", developmentKey}});
    EXPECT_EQ(data("/users/me").at("username"), "mara");
}

} // namespace
} // namespace KeloServiceTest
