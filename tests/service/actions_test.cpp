#include "support/TestService.hpp"

#include <functional>
#include <vector>

namespace KeloServiceTest {
namespace {

/// What users do to posts and to each other, and what is kept of it.
class ActionsTest : public ServiceTest {
protected:
    /// The first of the newest posts that satisfies the condition.
    Json findPost(const std::function<bool(const Json&)>& condition) {
        for (const Json& record : records("/timelines/all?size=300")) {
            if (condition(record)) {
                return record;
            }
        }
        ADD_FAILURE() << "no such post";
        return Json::object();
    }
    Json untouchedPost() {
        return findPost([](const Json& record) {
            return record.at("liked") == false && !record.contains("myRepostId");
        });
    }
    Json again(const Json& post) { return data("/posts/" + post.at("postId").dump()); }
    static std::string at(const Json& post, const std::string& rest) {
        return "/posts/" + post.at("postId").dump() + rest;
    }
    Json kept(const char* kind) { return control("GET", "/_service/actions").at(kind); }
    static std::string boost(const char* value) {
        return Json{{"recommendationBoost", value}}.dump();
    }

    const Json nothing{{"data", Json::object()}};
};

TEST_F(ActionsTest, NothingIsKeptBeforeAnyoneActs) {
    for (const char* kind : {"likes", "reposts", "follows", "feedback", "loops", "views"}) {
        EXPECT_EQ(kept(kind), Json::array()) << kind;
    }
}

TEST_F(ActionsTest, ALikeIsThereUntilItIsTakenBack) {
    const Json before = untouchedPost();
    const Json userBefore = data("/users/me");
    const Json like = send("POST", at(before, "/likes")).data();
    EXPECT_EQ(like.at("username"), "mara");
    EXPECT_EQ(like.at("userId"), 1001);
    const Json liked = again(before);
    EXPECT_EQ(liked.at("liked"), true);
    EXPECT_EQ(liked.at("likes").at("count"), before.at("likes").at("count").get<int>() + 1);
    EXPECT_EQ(liked.at("likes").at("records").at(0), like);
    EXPECT_EQ(send("GET", at(before, ""), "", "").data().at("liked"), false);
    EXPECT_EQ(data("/users/me").at("likeCount"), userBefore.at("likeCount").get<int>() + 1);
    EXPECT_EQ(records("/timelines/users/1001/likes").at(0).at("postId"), before.at("postId"));
    EXPECT_EQ(kept("likes"), Json::array({{{"likeId", like.at("likeId")},
                                           {"postId", before.at("postId")},
                                           {"userId", 1001}}}));
    EXPECT_EQ(send("POST", at(before, "/likes")).data(), like);
    EXPECT_EQ(again(before), liked);

    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(send("DELETE", at(before, "/likes")).json, nothing);
        EXPECT_EQ(again(before), before);
    }
    EXPECT_EQ(data("/users/me"), userBefore);
    EXPECT_EQ(kept("likes"), Json::array());
    EXPECT_NE(send("POST", at(before, "/likes")).data().at("likeId"), like.at("likeId"));
}

TEST_F(ActionsTest, EveryUserHasTheirOwnLike) {
    const Json post = untouchedPost();
    EXPECT_EQ(send("POST", at(post, "/likes"), "", signIn("kofi")).data().at("username"), "kofi");
    EXPECT_EQ(again(post).at("liked"), false);
    send("DELETE", at(post, "/likes"));
    EXPECT_EQ(kept("likes").size(), 1U);
}

TEST_F(ActionsTest, ARepostIsThereUntilItIsTakenBack) {
    const Json before = untouchedPost();
    const Json repost = send("POST", at(before, "/repost")).data();
    EXPECT_EQ(repost.at("username"), "mara");
    EXPECT_EQ(send("POST", at(before, "/repost")).data(), repost);
    const Json reposted = again(before);
    EXPECT_EQ(reposted.at("myRepostId"), repost.at("repostId"));
    EXPECT_EQ(reposted.at("reposts").at("count"), before.at("reposts").at("count").get<int>() + 1);
    EXPECT_EQ(kept("reposts").at(0).at("repostId"), repost.at("repostId"));

    const std::string path = at(before, "/repost/" + repost.at("repostId").dump());
    EXPECT_EQ(send("DELETE", path, "", signIn("kofi")).status, 404);
    EXPECT_EQ(send("DELETE", path).json, nothing);
    EXPECT_EQ(again(before), before);
    EXPECT_EQ(kept("reposts"), Json::array());
    EXPECT_EQ(send("DELETE", path).code(), 404);
    EXPECT_NE(send("POST", at(before, "/repost")).data().at("repostId"), repost.at("repostId"));

    const Json seeded = findPost([&](const Json& record) {
        return record.contains("myRepostId") && record.at("postId") != before.at("postId");
    });
    send("DELETE", at(seeded, "/repost/" + seeded.at("myRepostId").dump()));
    EXPECT_FALSE(again(seeded).contains("myRepostId"));
}

TEST_F(ActionsTest, FollowingTwiceSaysSo) {
    const std::string follow = "/users/1002/follow-on-twitter";
    const std::string unfollow = "/users/1002/unfollow-on-twitter";
    EXPECT_EQ(send("POST", unfollow).code(), 231);
    EXPECT_EQ(send("POST", follow).json, nothing);
    const Reply twice = send("POST", follow);
    EXPECT_EQ(twice.status, 409);
    EXPECT_EQ(twice.code(), 230);
    EXPECT_FALSE(twice.error().empty());
    EXPECT_EQ(send("POST", "/users/1003/follow-on-twitter", "", signIn("kofi")).json, nothing);
    EXPECT_EQ(kept("follows"), Json::array({{{"userId", 1001}, {"followeeId", 1002}},
                                            {{"userId", 1004}, {"followeeId", 1003}}}));
    EXPECT_EQ(send("POST", unfollow).json, nothing);
    EXPECT_EQ(send("POST", unfollow).code(), 231);
    EXPECT_EQ(kept("follows").size(), 1U);
}

TEST_F(ActionsTest, FeedbackIsKeptInItsOrder) {
    const Json postId = untouchedPost().at("postId");
    const std::string toUser = "/recommendations/feedback/users/1003";
    EXPECT_EQ(
        send("POST", "/recommendations/feedback/posts/" + postId.dump(), boost("negative")).json,
        nothing);
    EXPECT_EQ(send("POST", toUser, boost("neutral")).json, nothing);
    EXPECT_EQ(send("POST", toUser, boost("positive")).json, nothing);
    for (const std::string& body :
         {std::string(), std::string("[]"), std::string("{}"), boost("Positive"), boost(""),
          std::string(R"({"recommendationBoost":1})")}) {
        EXPECT_EQ(send("POST", toUser, body).code(), 400) << body;
    }
    const auto entry = [](const char* kind, const Json& target, const char* value) {
        return Json{{"userId", 1001}, {"kind", kind}, {"targetId", target}, {"boost", value}};
    };
    EXPECT_EQ(kept("feedback"),
              Json::array({entry("post", postId, "negative"), entry("user", 1003, "neutral"),
                           entry("user", 1003, "positive")}));
}

TEST_F(ActionsTest, LoopsAddUp) {
    const Json before = untouchedPost();
    const std::string postId = before.at("postId").dump();
    const Json body{{"loops",
                     {{{"count", 3}, {"postId", postId}, {"ts", 1447545600.25}},
                      {{"count", 0}, {"postId", postId}, {"ts", 1447545601}}}}};
    EXPECT_EQ(send("POST", "/loops", body.dump()).json, nothing);
    EXPECT_EQ(send("POST", "/loops", R"({"loops":[]})").json, nothing);
    const Json after = again(before);
    EXPECT_EQ(after.at("loops").at("count"), before.at("loops").at("count").get<int>() + 3);
    EXPECT_EQ(after.at("loopCount"), before.at("loopCount").get<int>() + 3);
    const Json entries = kept("loops");
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0], Json({{"userId", 1001},
                                {"postId", before.at("postId")},
                                {"count", 3},
                                {"ts", 1447545600.25}}));
}

TEST_F(ActionsTest, OneBadRecordOfLoopsRefusesThemAll) {
    const std::string postId = untouchedPost().at("postId").dump();
    const Json good{{"count", 3}, {"postId", postId}, {"ts", 1.5}};
    const auto with = [&good](const char* key, const Json& value) {
        Json record = good;
        record[key] = value;
        return record;
    };
    const auto codeFor = [&](const Json& record) {
        return send("POST", "/loops", Json{{"loops", {good, record}}}.dump()).code();
    };
    for (const Json& record :
         {with("count", -1), with("count", 1.5), with("count", "3"),
          with("count", 18446744073709551615U), with("postId", Json::parse(postId)),
          with("ts", "1.5"), Json{{"count", 3}, {"ts", 1.5}}, Json(7)}) {
        EXPECT_EQ(codeFor(record), 400) << record;
    }
    EXPECT_EQ(codeFor(with("postId", "77")), 404);
    EXPECT_EQ(send("POST", "/loops", R"({"loops":{}})").code(), 400);
    EXPECT_EQ(kept("loops"), Json::array());
}

TEST_F(ActionsTest, ViewsAddUp) {
    const std::string path = "/longforms/lf-night-market/views";
    const Json before = send("GET", path, "", "").data();
    EXPECT_EQ(before.at("longformId"), "lf-night-market");
    EXPECT_GT(before.at("count"), 0);
    EXPECT_EQ(send("POST", path, R"({"timestamp":"1447545600.25"})").json, nothing);
    for (const char* body : {"", "{}", R"({"timestamp":1447545600.25})", R"({"timestamp":""})",
                             R"({"timestamp":"now"})", R"({"timestamp":"-1.0"})",
                             R"({"timestamp":"1.0 "})", R"({"timestamp":"inf"})"}) {
        EXPECT_EQ(send("POST", path, body).code(), 400) << body;
    }
    EXPECT_EQ(data(path).at("count"), before.at("count").get<int>() + 1);
    EXPECT_EQ(kept("views"), Json::array({{{"userId", 1001},
                                           {"longformId", "lf-night-market"},
                                           {"timestamp", "1447545600.25"}}}));
    EXPECT_EQ(data("/longforms/lf-unseen/views").at("count"), 0);
}

TEST_F(ActionsTest, TheSoundboardNamesPostsThatAreThere) {
    const Json page = send("GET", "/soundboard", "", "").data();
    EXPECT_EQ(page.at("count"), page.at("records").size());
    int fromPosts = 0;
    for (const Json& sound : page.at("records")) {
        pathOf(sound.at("soundUrl"));
        if (sound.contains("sourcePostId")) {
            ++fromPosts;
            data("/posts/" + sound.at("sourcePostId").dump());
        }
    }
    EXPECT_GT(fromPosts, 0);
}

struct Address {
    std::string method;
    std::string path;
    std::string body;
};

TEST_F(ActionsTest, ActingNeedsASession) {
    const std::string postId = untouchedPost().at("postId").dump();
    const std::string loops =
        Json{{"loops", {{{"count", 3}, {"postId", postId}, {"ts", 1.5}}}}}.dump();
    const std::vector<Address> calls = {
        {"POST", "/users/1002/follow-on-twitter", ""},
        {"POST", "/users/1002/unfollow-on-twitter", ""},
        {"POST", "/posts/" + postId + "/likes", ""},
        {"DELETE", "/posts/" + postId + "/likes", ""},
        {"POST", "/posts/" + postId + "/repost", ""},
        {"DELETE", "/posts/" + postId + "/repost/1", ""},
        {"POST", "/recommendations/feedback/users/1002", boost("neutral")},
        {"POST", "/recommendations/feedback/posts/" + postId, boost("neutral")},
        {"POST", "/loops", loops},
        {"POST", "/longforms/lf-unseen/views", R"({"timestamp":"1.5"})"},
    };
    const Json before = control("GET", "/_service/actions");
    for (const auto& [method, path, body] : calls) {
        const Reply reply = send(method, path, body, "");
        EXPECT_EQ(reply.status, 401) << method << " " << path;
        EXPECT_EQ(reply.code(), 100) << method << " " << path;
    }
    control("POST", "/_service/sessions/" + developmentKey + "/expire");
    for (const auto& [method, path, body] : calls) {
        EXPECT_EQ(send(method, path, body).code(), 103) << method << " " << path;
    }
    EXPECT_EQ(control("GET", "/_service/actions"), before);
}

TEST_F(ActionsTest, WhatDoesNotExistIsNotFound) {
    const Address addresses[] = {
        {"POST", "/users/999999/follow-on-twitter", ""},
        {"POST", "/users/me/follow-on-twitter", ""},
        {"POST", "/users/999999/unfollow-on-twitter", ""},
        {"GET", "/posts/5", ""},
        {"GET", "/posts/0", ""},
        {"GET", "/posts/x", ""},
        {"POST", "/posts/77/likes", ""},
        {"DELETE", "/posts/x/likes", ""},
        {"POST", "/posts/77/repost", ""},
        {"DELETE", "/posts/77/repost/1", ""},
        {"DELETE", "/posts/1150000000000000001/repost/x", ""},
        {"POST", "/recommendations/feedback/users/999999", boost("neutral")},
        {"POST", "/recommendations/feedback/posts/77", boost("neutral")},
        {"GET", "/longforms/none/views", ""},
        {"POST", "/longforms/none/views", R"({"timestamp":"1.5"})"},
    };
    for (const auto& [method, path, body] : addresses) {
        const Reply reply = send(method, path, body);
        EXPECT_EQ(reply.status, 404) << method << " " << path;
        EXPECT_EQ(reply.code(), 404) << method << " " << path;
    }
}

TEST_F(ActionsTest, WhatIsDoneOutlivesTheService) {
    const TemporaryFolder folder;
    KeloService::Settings kept = settings();
    kept.database = folder.path("service.db");
    const httplib::Headers session{{sessionHeader, developmentKey}};
    Json actions;
    for (const int expected : {200, 409}) {
        KeloService::Service again(kept);
        again.start();
        Client own(again.port());
        EXPECT_EQ(own.Post("/users/1002/follow-on-twitter", session)->status, expected);
        const Json now = Json::parse(own.Get("/_service/actions")->body);
        EXPECT_EQ(now.at("follows").size(), 1U);
        EXPECT_TRUE(actions.is_null() || actions == now);
        actions = now;
    }
}

} // namespace
} // namespace KeloServiceTest
