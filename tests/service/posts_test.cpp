#include "support/TestService.hpp"

namespace KeloServiceTest {
namespace {

class PostsTest : public ServiceTest {
protected:
    static std::string pathOf(const Json& record) {
        return "/posts/" + std::to_string(record.at("postId").get<std::int64_t>());
    }
};

TEST_F(PostsTest, APostIsARecordOfATimeline) {
    for (const Json& record : records("/timelines/popular?size=25")) {
        EXPECT_EQ(data(pathOf(record)), record);
    }
}

TEST_F(PostsTest, TheRequestSaysHowMuchHangsOnIt) {
    for (const char* query : {"?c_max=0&l_max=1", "?c_max=10&l_max=10"}) {
        const Json record = records(std::string("/timelines/popular") + query).at(0);
        EXPECT_EQ(data(pathOf(record) + query), record);
    }
}

TEST_F(PostsTest, ItShowsWhatTheSessionsUserDid) {
    const std::string path = pathOf(records("/timelines/latest?size=1").at(0));
    ASSERT_EQ(data(path).at("liked"), false);
    const httplib::Headers session = {
        {sessionHeader, std::string(KeloService::developmentSessionKey)}};
    const auto liked = client.Post(path + "/likes", session, "", "application/json");
    ASSERT_TRUE(liked && liked->status == 200);
    EXPECT_EQ(data(path).at("liked"), true);
    const auto withoutSession = get(path, "");
    ASSERT_TRUE(withoutSession && withoutSession->status == 200);
    EXPECT_EQ(Json::parse(withoutSession->body).at("data").at("liked"), false);
}

TEST_F(PostsTest, UnknownPostsAndSessionsAreRefused) {
    for (const char* path : {"/posts/5", "/posts/0", "/posts/x"}) {
        const auto answer = get(path);
        ASSERT_TRUE(answer) << path;
        EXPECT_EQ(answer->status, 404) << path;
        EXPECT_EQ(Json::parse(answer->body).at("code"), 404) << path;
    }
    const auto refused = get(pathOf(records("/timelines/latest?size=1").at(0)), "nobody");
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->status, 401);
}

} // namespace
} // namespace KeloServiceTest
