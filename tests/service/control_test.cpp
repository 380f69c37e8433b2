#include "support/TestService.hpp"

namespace KeloServiceTest {
namespace {

class ControlTest : public ServiceTest {};

TEST_F(ControlTest, IsHealthy) {
    const Json health = control("GET", "/_service/health");
    EXPECT_EQ(health.at("status"), "ok");
    EXPECT_TRUE(health.at("version").is_string());
}

TEST_F(ControlTest, RefusesWhatDoesNotExist) {
    for (const char* path : {"/_service/sessions/nobody/expire",
                             "/_service/sessions/nobody/captcha", "/_service/uploads/none/expire",
                             "/_service/nothing", "/captcha/0123456789abcdef/solve"}) {
        EXPECT_EQ(send("POST", path).status, 404) << path;
    }
    EXPECT_EQ(send("GET", "/captcha/0123456789abcdef").status, 404);
    EXPECT_EQ(send("POST", "/_service/sessions", R"({"username":"nobody"})").status, 404);
    EXPECT_EQ(send("GET", "/_service/requests?since=x").status, 400);
}

TEST_F(ControlTest, RefusesBadBodies) {
    const char* const media = "/_service/media-rate";
    const char* const time = "/_service/processing-time";
    const std::pair<const char*, const char*> bodies[] = {
        {"/_service/sessions", R"({"username":5})"},
        {"/_service/sessions", R"({"username":"mara","key":5})"},
        {"/_service/faults", "no json"},
        {media, ""},
        {media, "[]"},
        {media, "{}"},
        {media, R"({"bytesPerSecond":-1})"},
        {media, R"({"bytesPerSecond":1.5})"},
        {media, R"({"bytesPerSecond":"9"})"},
        {media, R"({"bytesPerSecond":1000000001})"},
        {time, ""},
        {time, "{}"},
        {time, R"({"seconds":-1})"},
        {time, R"({"seconds":"2"})"},
        {time, R"({"seconds":86401})"},
    };
    for (const auto& [path, body] : bodies) {
        EXPECT_EQ(send("POST", path, body).status, 400) << path << " " << body;
    }
    EXPECT_EQ(control("GET", media).at("bytesPerSecond"), 0);
    EXPECT_EQ(control("GET", time).at("seconds"), 2);
}

TEST_F(ControlTest, CountsConnections) {
    // The control client's connection is there, but serves no request of the service.
    Json counts = control("GET", "/_service/connections");
    EXPECT_EQ(counts, Json({{"accepted", 1}, {"secured", 1}, {"used", 0}, {"open", 1}}));
    for (int i = 0; i < 5; ++i) {
        data("/users/me");
    }
    counts = control("GET", "/_service/connections");
    EXPECT_EQ(counts, Json({{"accepted", 2}, {"secured", 2}, {"used", 1}, {"open", 2}}));
}

} // namespace
} // namespace KeloServiceTest
