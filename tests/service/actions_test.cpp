#include "support/TestService.hpp"

#include <array>
#include <functional>
#include <vector>

namespace KeloServiceTest {
namespace {

using KeloService::developmentSessionKey;

/// What users do to posts and to each other, and what is kept of it.
class ActionsTest : public ServiceTest {
protected:
    /// Sends a call and gives its envelope; `status` is the answer's. An empty key sends none.
    Json send(const std::string& method, const std::string& path, const std::string& body = "",
              const std::string& key = std::string(developmentSessionKey)) {
        httplib::Request request;
        request.method = method;
        request.path = path;
        request.body = body;
        if (!key.empty()) {
            request.headers.emplace(sessionHeader, key);
        }
        const auto result = client.send(request);
        status = result ? result->status : 0;
        return result ? Json::parse(result->body) : Json::object();
    }
    std::string signIn(const std::string& username) {
        return control("POST", "/_service/sessions", {{"username", username}}).at("key");
    }
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
    Json again(const Json& post) {
        return findPost([&](const Json& record) { return record["postId"] == post["postId"]; });
    }
    static std::string pathOf(const Json& post, const std::string& rest) {
        return "/posts/" + post.at("postId").dump() + rest;
    }
    Json kept(const char* kind) { return control("GET", "/_service/actions").at(kind); }

    int status = 0;
    const Json nothing{{"data", Json::object()}};
};

TEST_F(ActionsTest, NothingIsKeptBeforeAnyoneActs) {
    const Json actions = control("GET", "/_service/actions");
    for (const char* kind : {"likes", "reposts", "follows", "feedback", "loops", "views"}) {
        EXPECT_EQ(actions.at(kind), Json::array()) << kind;
    }
}

TEST_F(ActionsTest, ALikeIsThereUntilItIsTakenBack) {
    const Json before = untouchedPost();
    const Json userBefore = data("/users/me");
    const Json like = send("POST", pathOf(before, "/likes")).at("data");
    EXPECT_EQ(status, 200);
    EXPECT_EQ(like.at("username"), "mara");
    EXPECT_EQ(like.at("userId"), 1001);
    const Json liked = again(before);
    EXPECT_EQ(liked.at("liked"), true);
    EXPECT_EQ(liked.at("likes").at("count"), before.at("likes").at("count").get<int>() + 1);
    EXPECT_EQ(liked.at("likes").at("records").at(0), like);
    EXPECT_EQ(data("/users/me").at("likeCount"), userBefore.at("likeCount").get<int>() + 1);
    EXPECT_EQ(records("/timelines/users/1001/likes").at(0).at("postId"), before.at("postId"));
    EXPECT_EQ(kept("likes"), Json::array({{{"likeId", like.at("likeId")},
                                           {"postId", before.at("postId")},
                                           {"userId", 1001}}}));

    EXPECT_EQ(send("DELETE", pathOf(before, "/likes")), nothing);
    EXPECT_EQ(again(before), before);
    EXPECT_EQ(data("/users/me"), userBefore);
    EXPECT_EQ(kept("likes"), Json::array());
}

TEST_F(ActionsTest, LikingTwiceIsTheSameLike) {
    const Json post = untouchedPost();
    const Json first = send("POST", pathOf(post, "/likes"));
    EXPECT_EQ(send("POST", pathOf(post, "/likes")), first);
    EXPECT_EQ(again(post).at("likes").at("count"), post.at("likes").at("count").get<int>() + 1);
    send("DELETE", pathOf(post, "/likes"));
    EXPECT_EQ(send("DELETE", pathOf(post, "/likes")), nothing);
    EXPECT_EQ(again(post).at("likes").at("count"), post.at("likes").at("count"));
    EXPECT_NE(send("POST", pathOf(post, "/likes")).at("data").at("likeId"),
              first.at("data").at("likeId"));
}

TEST_F(ActionsTest, EveryUserHasTheirOwnLike) {
    const Json post = untouchedPost();
    const Json other = send("POST", pathOf(post, "/likes"), "", signIn("kofi"));
    EXPECT_EQ(other.at("data").at("username"), "kofi");
    EXPECT_EQ(again(post).at("liked"), false);
    send("DELETE", pathOf(post, "/likes"));
    EXPECT_EQ(kept("likes").size(), 1U);
}

TEST_F(ActionsTest, ARepostIsThereUntilItIsTakenBack) {
    const Json before = untouchedPost();
    const Json repost = send("POST", pathOf(before, "/repost")).at("data");
    EXPECT_EQ(repost.at("username"), "mara");
    EXPECT_EQ(send("POST", pathOf(before, "/repost")).at("data"), repost);
    const Json reposted = again(before);
    EXPECT_EQ(reposted.at("myRepostId"), repost.at("repostId"));
    EXPECT_EQ(reposted.at("reposts").at("count"), before.at("reposts").at("count").get<int>() + 1);
    EXPECT_EQ(kept("reposts").at(0).at("repostId"), repost.at("repostId"));

    const std::string path = pathOf(before, "/repost/" + repost.at("repostId").dump());
    send("DELETE", path, "", signIn("kofi"));
    EXPECT_EQ(status, 404);
    EXPECT_EQ(send("DELETE", path), nothing);
    EXPECT_EQ(again(before), before);
    EXPECT_EQ(kept("reposts"), Json::array());
    EXPECT_EQ(send("DELETE", path).at("code"), 404);
    EXPECT_NE(send("POST", pathOf(before, "/repost")).at("data").at("repostId"),
              repost.at("repostId"));
}

TEST_F(ActionsTest, ASeededRepostCanBeTakenBack) {
    const Json post = findPost([](const Json& record) { return record.contains("myRepostId"); });
    EXPECT_EQ(send("DELETE", pathOf(post, "/repost/" + post.at("myRepostId").dump())), nothing);
    EXPECT_FALSE(again(post).contains("myRepostId"));
}

TEST_F(ActionsTest, FollowingTwiceSaysSo) {
    EXPECT_EQ(send("POST", "/users/1002/unfollow-on-twitter").at("code"), 231);
    EXPECT_EQ(send("POST", "/users/1002/follow-on-twitter"), nothing);
    const Json answer = send("POST", "/users/1002/follow-on-twitter");
    EXPECT_EQ(status, 409);
    EXPECT_EQ(answer.at("code"), 230);
    EXPECT_TRUE(answer.at("error").is_string());
    EXPECT_EQ(send("POST", "/users/1003/follow-on-twitter", "", signIn("kofi")), nothing);
    EXPECT_EQ(kept("follows"), Json::array({{{"userId", 1001}, {"followeeId", 1002}},
                                            {{"userId", 1004}, {"followeeId", 1003}}}));
    EXPECT_EQ(send("POST", "/users/1002/unfollow-on-twitter"), nothing);
    EXPECT_EQ(send("POST", "/users/1002/unfollow-on-twitter").at("code"), 231);
    EXPECT_EQ(kept("follows").size(), 1U);
}

TEST_F(ActionsTest, FeedbackIsKeptInItsOrder) {
    const Json post = untouchedPost();
    const std::string postFeedback = "/recommendations/feedback/posts/" + post.at("postId").dump();
    EXPECT_EQ(send("POST", postFeedback, R"({"recommendationBoost":"negative"})"), nothing);
    EXPECT_EQ(send("POST", "/recommendations/feedback/users/1003",
                   R"({"recommendationBoost":"neutral"})"),
              nothing);
    const Json entries = kept("feedback");
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0], Json({{"userId", 1001},
                                {"kind", "post"},
                                {"targetId", post.at("postId")},
                                {"boost", "negative"}}));
    EXPECT_EQ(entries[1].at("kind"), "user");
    EXPECT_EQ(entries[1].at("boost"), "neutral");
}

TEST_F(ActionsTest, FeedbackIsPositiveNeutralOrNegative) {
    for (const char* body : {"", "[]", "{}", R"({"recommendationBoost":"Positive"})",
                             R"({"recommendationBoost":1})", R"({"recommendationBoost":""})"}) {
        EXPECT_EQ(send("POST", "/recommendations/feedback/users/1002", body).at("code"), 400)
            << body;
    }
    EXPECT_EQ(kept("feedback"), Json::array());
}

TEST_F(ActionsTest, LoopsAddUp) {
    const Json before = untouchedPost();
    const std::string postId = before.at("postId").dump();
    const Json body{{"loops",
                     {{{"count", 3}, {"postId", postId}, {"ts", 1447545600.25}},
                      {{"count", 0}, {"postId", postId}, {"ts", 1447545601}}}}};
    EXPECT_EQ(send("POST", "/loops", body.dump()), nothing);
    EXPECT_EQ(send("POST", "/loops", R"({"loops":[]})"), nothing);
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
    const Json bad[] = {
        Json{{"count", -1}, {"postId", postId}, {"ts", 1.5}},
        Json{{"count", 1.5}, {"postId", postId}, {"ts", 1.5}},
        Json{{"count", "3"}, {"postId", postId}, {"ts", 1.5}},
        Json{{"count", 18446744073709551615U}, {"postId", postId}, {"ts", 1.5}},
        Json{{"count", 3}, {"postId", Json::parse(postId)}, {"ts", 1.5}},
        Json{{"count", 3}, {"postId", postId}, {"ts", "1.5"}},
        Json{{"count", 3}, {"ts", 1.5}},
        Json(7),
    };
    for (const Json& record : bad) {
        const Json body{{"loops", Json::array({good, record})}};
        EXPECT_EQ(send("POST", "/loops", body.dump()).at("code"), 400) << record;
    }
    const Json unknown{{"count", 3}, {"postId", "77"}, {"ts", 1.5}};
    const Json body{{"loops", Json::array({good, unknown})}};
    EXPECT_EQ(send("POST", "/loops", body.dump()).at("code"), 404);
    EXPECT_EQ(send("POST", "/loops", R"({"loops":{}})").at("code"), 400);
    EXPECT_EQ(kept("loops"), Json::array());
}

TEST_F(ActionsTest, ViewsAddUp) {
    const std::string path = "/longforms/lf-night-market/views";
    const Json before = send("GET", path, "", "").at("data");
    EXPECT_EQ(before.at("longformId"), "lf-night-market");
    EXPECT_GT(before.at("count"), 0);
    EXPECT_EQ(send("POST", path, R"({"timestamp":"1447545600.25"})"), nothing);
    EXPECT_EQ(data(path).at("count"), before.at("count").get<int>() + 1);
    EXPECT_EQ(kept("views"), Json::array({{{"userId", 1001},
                                           {"longformId", "lf-night-market"},
                                           {"timestamp", "1447545600.25"}}}));
    EXPECT_EQ(data("/longforms/lf-unseen/views").at("count"), 0);
}

TEST_F(ActionsTest, AViewsTimestampIsADecimalText) {
    for (const char* body : {"", "{}", R"({"timestamp":1447545600.25})", R"({"timestamp":""})",
                             R"({"timestamp":"now"})", R"({"timestamp":"-1.0"})",
                             R"({"timestamp":"1.0 "})", R"({"timestamp":"inf"})"}) {
        EXPECT_EQ(send("POST", "/longforms/lf-unseen/views", body).at("code"), 400) << body;
    }
    EXPECT_EQ(data("/longforms/lf-unseen/views").at("count"), 0);
}

TEST_F(ActionsTest, TheSoundboardIsOpenToAll) {
    const Json page = send("GET", "/soundboard", "", "").at("data");
    EXPECT_EQ(status, 200);
    const Json& sounds = page.at("records");
    EXPECT_GE(sounds.size(), 12U);
    EXPECT_EQ(page.at("count"), sounds.size());
    int featured = 0;
    int fromPosts = 0;
    for (const Json& sound : sounds) {
        EXPECT_FALSE(sound.at("name").get<std::string>().empty());
        EXPECT_TRUE(sound.at("soundUrl").get<std::string>().starts_with(service.url() + "/"));
        featured += sound.at("featured") == true ? 1 : 0;
        if (sound.contains("sourcePostId")) {
            ++fromPosts;
            send("POST", "/posts/" + sound.at("sourcePostId").dump() + "/likes");
            EXPECT_EQ(status, 200) << sound;
        }
    }
    EXPECT_GT(featured, 0);
    EXPECT_LT(featured, static_cast<int>(sounds.size()));
    EXPECT_GT(fromPosts, 0);
}

struct Address {
    const char* method;
    const char* path;
    const char* body;
};

TEST_F(ActionsTest, ActingNeedsASession) {
    const Json post = untouchedPost();
    const std::string postId = post.at("postId").dump();
    const std::string loops =
        Json{{"loops", {{{"count", 3}, {"postId", postId}, {"ts", 1.5}}}}}.dump();
    const std::vector<std::array<std::string, 3>> calls = {
        {"POST", "/users/1002/follow-on-twitter", ""},
        {"POST", "/users/1002/unfollow-on-twitter", ""},
        {"POST", "/posts/" + postId + "/likes", ""},
        {"DELETE", "/posts/" + postId + "/likes", ""},
        {"POST", "/posts/" + postId + "/repost", ""},
        {"DELETE", "/posts/" + postId + "/repost/1", ""},
        {"POST", "/recommendations/feedback/users/1002", R"({"recommendationBoost":"neutral"})"},
        {"POST", "/recommendations/feedback/posts/" + postId,
         R"({"recommendationBoost":"neutral"})"},
        {"POST", "/loops", loops},
        {"POST", "/longforms/lf-unseen/views", R"({"timestamp":"1.5"})"},
    };
    const Json before = control("GET", "/_service/actions");
    for (const auto& [method, path, body] : calls) {
        EXPECT_EQ(send(method, path, body, "").at("code"), 100) << method << " " << path;
        EXPECT_EQ(status, 401);
    }
    control("POST", "/_service/sessions/" + std::string(developmentSessionKey) + "/expire");
    for (const auto& [method, path, body] : calls) {
        EXPECT_EQ(send(method, path, body).at("code"), 103) << method << " " << path;
    }
    EXPECT_EQ(control("GET", "/_service/actions"), before);
}

TEST_F(ActionsTest, WhatDoesNotExistIsNotFound) {
    const char* boost = R"({"recommendationBoost":"neutral"})";
    const Address addresses[] = {
        {"POST", "/users/999999/follow-on-twitter", ""},
        {"POST", "/users/me/follow-on-twitter", ""},
        {"POST", "/users/999999/unfollow-on-twitter", ""},
        {"POST", "/posts/77/likes", ""},
        {"DELETE", "/posts/x/likes", ""},
        {"POST", "/posts/77/repost", ""},
        {"DELETE", "/posts/77/repost/1", ""},
        {"DELETE", "/posts/1150000000000000001/repost/x", ""},
        {"POST", "/recommendations/feedback/users/999999", boost},
        {"POST", "/recommendations/feedback/posts/77", boost},
        {"GET", "/longforms/none/views", ""},
        {"POST", "/longforms/none/views", R"({"timestamp":"1.5"})"},
    };
    for (const Address& address : addresses) {
        EXPECT_EQ(send(address.method, address.path, address.body).at("code"), 404)
            << address.method << " " << address.path;
        EXPECT_EQ(status, 404);
    }
}

TEST(ActionsInAFile, OutliveTheService) {
    const TemporaryFolder folder;
    const std::string file = folder.file("service.db");
    {
        KeloService::Store store(file);
        store.likes.add(KeloService::firstSeededPostId, 1001);
        store.follows.add(1001, 1002);
    }
    KeloService::Store store(file);
    const auto posts = store.posts.find({KeloService::firstSeededPostId}, {1001, 0, 0});
    EXPECT_TRUE(posts.at(0).liked);
    EXPECT_FALSE(store.follows.add(1001, 1002));
    EXPECT_EQ(store.actions.follows().size(), 1U);
}

} // namespace
} // namespace KeloServiceTest
