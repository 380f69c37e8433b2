#include "service/http/Router.hpp"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using KeloService::Answer;
using KeloService::Call;
using KeloService::Json;
using KeloService::Request;
using KeloService::Router;
using KeloService::ServiceError;

Request request(const std::string& method, const std::string& target) {
    Request made;
    made.method = method;
    made.target = target;
    return made;
}

class RouterTest : public ::testing::Test {
protected:
    RouterTest() {
        router_.add("GET", "/users/me", [](const Call&) { return text("me"); });
        router_.add("GET", "/users/:id",
                    [](const Call& call) { return text(call.argument("id")); });
        router_.add("POST", "/users/:id/likes/:like", [](const Call& call) {
            return text(std::to_string(call.identifier("id")) + " " + call.argument("like"));
        });
        router_.add("GET", "/fails", [](const Call&) -> Answer {
            throw ServiceError(418, 7, "short and stout", "spout");
        });
        router_.add("GET", "/breaks",
                    [](const Call&) -> Answer { throw std::runtime_error("broken \xff"); });
    }

    static Answer text(const std::string& body) {
        Answer answer;
        answer.body = body;
        return answer;
    }
    Answer ask(const std::string& method, const std::string& target) const {
        return router_.answer(request(method, target));
    }

    Router router_;
};

TEST_F(RouterTest, PrefersWhatWasAddedFirst) {
    EXPECT_EQ(ask("GET", "/users/me").body, "me");
    EXPECT_EQ(ask("GET", "/users/me?x=y").body, "me");
    EXPECT_EQ(ask("GET", "/users/you").body, "you");
    EXPECT_EQ(ask("GET", "/users/a%2Fb").body, "a/b");
    EXPECT_EQ(ask("HEAD", "/users/me").body, "me");
    EXPECT_EQ(ask("POST", "/users/12/likes/x").body, "12 x");
}

TEST_F(RouterTest, RefusesOtherPaths) {
    EXPECT_EQ(ask("GET", "/users").status, 404);
    EXPECT_EQ(ask("GET", "/users/").status, 404);
    EXPECT_EQ(ask("GET", "/users/me/").status, 404);
    EXPECT_EQ(ask("GET", "//users/me").status, 404);
    EXPECT_EQ(ask("POST", "/users/-1/likes/x").status, 404);
    EXPECT_EQ(ask("POST", "/users/1x/likes/x").status, 404);
    EXPECT_EQ(Json::parse(ask("GET", "/").body).at("code"), 404);
}

TEST_F(RouterTest, RefusesOtherMethods) {
    const Answer answer = ask("DELETE", "/users/me");
    EXPECT_EQ(answer.status, 405);
    EXPECT_EQ(Json::parse(answer.body).at("code"), 405);
}

TEST_F(RouterTest, AnswersErrorsInTheEnvelope) {
    const Answer failed = ask("GET", "/fails");
    EXPECT_EQ(failed.status, 418);
    EXPECT_EQ(failed.contentType, "application/json");
    EXPECT_EQ(failed.body, R"({"error":"short and stout","code":7,"data":"spout"})");
    const Answer broken = ask("GET", "/breaks");
    EXPECT_EQ(broken.status, 500);
    EXPECT_EQ(Json::parse(broken.body).at("code"), 500);
}

} // namespace
