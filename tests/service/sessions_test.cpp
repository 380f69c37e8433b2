#include "support/TestService.hpp"

#include <set>

namespace KeloServiceTest {
namespace {

using KeloService::developmentPassword;
using KeloService::developmentSessionKey;

class SessionsTest : public ServiceTest {
protected:
    /// The envelope of a GET, whatever its status.
    Json envelope(const std::string& path, const std::string& key) {
        const auto result = get(path, key);
        status = result ? result->status : 0;
        return result ? Json::parse(result->body) : Json::object();
    }
    httplib::Result signIn(const Json& body) {
        return client.Post("/sessions", body.dump(), "application/json");
    }

    int status = 0;
    const std::string development{developmentSessionKey};
};

TEST_F(SessionsTest, TheSeededUserIsSignedIn) {
    const Json me = data("/users/me");
    EXPECT_EQ(me.at("userId"), 1001);
    EXPECT_EQ(me.at("username"), "mara");
    EXPECT_TRUE(me.at("avatarUrl").get<std::string>().starts_with(service.url() + "/"));
    for (const char* key :
         {"loopCount", "loopVelocity", "followerCount", "followingCount", "postCount"}) {
        EXPECT_TRUE(me.at(key).is_number()) << key;
    }
    EXPECT_GT(me.at("postCount"), 0);
}

TEST_F(SessionsTest, NoKeyAsksForSignIn) {
    const Json answer = envelope("/users/me", "");
    EXPECT_EQ(status, 401);
    EXPECT_EQ(answer.at("code"), 100);
    EXPECT_TRUE(answer.at("error").is_string());
    EXPECT_FALSE(answer.contains("data"));
    EXPECT_EQ(envelope("/timelines/home", "").at("code"), 100);
}

TEST_F(SessionsTest, AnUnknownKeyAsksForSignIn) {
    EXPECT_EQ(envelope("/users/me", "nobody's").at("code"), 100);
    EXPECT_EQ(envelope("/timelines/popular", "nobody's").at("code"), 100);
}

TEST_F(SessionsTest, AnEmptyKeyIsAKeyThatNobodyHolds) {
    const auto result = client.Get("/timelines/popular", {{sessionHeader, ""}});
    ASSERT_TRUE(result);
    EXPECT_EQ(Json::parse(result->body).at("code"), 100);
}

TEST_F(SessionsTest, PublicTimelinesNeedNoKey) {
    const Json answer = envelope("/timelines/popular", "");
    EXPECT_EQ(status, 200);
    EXPECT_EQ(answer.at("data").at("records").size(), 20U);
}

TEST_F(SessionsTest, AnExpiredKeySaysSo) {
    control("POST", "/_service/sessions/" + development + "/expire");
    const Json answer = envelope("/users/me", development);
    EXPECT_EQ(status, 401);
    EXPECT_EQ(answer.at("code"), 103);
    EXPECT_EQ(envelope("/timelines/popular", development).at("code"), 103);
}

TEST_F(SessionsTest, SigningInGivesAWorkingKey) {
    const auto result =
        signIn({{"username", "theo.loops"}, {"password", std::string(developmentPassword)}});
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 200);
    const Json session = Json::parse(result->body).at("data");
    EXPECT_EQ(session.at("userId"), 1002);
    const Json me = envelope("/users/me", session.at("key").get<std::string>());
    EXPECT_EQ(me.at("data").at("username"), "theo.loops");
}

TEST_F(SessionsTest, EverySignInGivesAnotherKey) {
    const Json credentials{{"username", "mara"}, {"password", std::string(developmentPassword)}};
    std::set<std::string> keys;
    for (int i = 0; i < 10; ++i) {
        keys.insert(Json::parse(signIn(credentials)->body).at("data").at("key").get<std::string>());
    }
    EXPECT_EQ(keys.size(), 10U);
}

TEST_F(SessionsTest, SigningInRefusesWrongCredentials) {
    for (const Json& body : {Json{{"username", "mara"}, {"password", "loop-the-looP"}},
                             Json{{"username", "mara"}, {"password", ""}},
                             Json{{"username", "nobody"}, {"password", "loop-the-loop"}}}) {
        const auto result = signIn(body);
        ASSERT_TRUE(result);
        EXPECT_EQ(result->status, 401);
        EXPECT_EQ(Json::parse(result->body).at("code"), 101);
    }
}

TEST_F(SessionsTest, SigningInRefusesOtherBodies) {
    for (const char* body : {"", "[]", "{", "{}", R"({"username":"mara"})",
                             R"({"username":1,"password":"loop-the-loop"})"}) {
        const auto result = client.Post("/sessions", body, "application/json");
        ASSERT_TRUE(result) << body;
        EXPECT_EQ(result->status, 400) << body;
        EXPECT_EQ(Json::parse(result->body).at("code"), 400) << body;
    }
}

class CaptchaTest : public SessionsTest {
protected:
    CaptchaTest()
        : demand(control("POST", "/_service/sessions/" + development + "/captcha"))
        , path("/captcha/" + demand.at("token").get<std::string>()) {}

    Json demand;
    std::string path;
};

TEST_F(CaptchaTest, IsAskedForUntilItIsSolved) {
    for (int i = 0; i < 2; ++i) {
        const Json answer = envelope("/users/me", development);
        EXPECT_EQ(status, 403);
        EXPECT_EQ(answer.at("code"), 419);
        EXPECT_EQ(answer.at("data"), demand.at("url"));
        EXPECT_EQ(answer.at("data"), service.url() + path);
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

TEST_F(CaptchaTest, ConcernsOneSessionOnly) {
    control("POST", "/_service/sessions", {{"username", "mara"}, {"key", "other"}});
    EXPECT_EQ(envelope("/users/me", "other").at("data").at("userId"), 1001);
}

TEST_F(CaptchaTest, ComesAfterExpiry) {
    control("POST", "/_service/sessions/" + development + "/expire");
    EXPECT_EQ(envelope("/users/me", development).at("code"), 103);
}

TEST_F(SessionsTest, AnUnknownCaptchaIsNotFound) {
    EXPECT_EQ(client.Get("/captcha/0123456789abcdef")->status, 404);
    EXPECT_EQ(client.Post("/captcha/0123456789abcdef/solve")->status, 404);
}

} // namespace
} // namespace KeloServiceTest
