#include "ActingTest.hpp"

namespace KeloAPI {

using Json = nlohmann::json;
using testing::runFor;
using testing::runUntil;

/// A like that does not wait for a minute.
class HastyLikeActionEndpoint : public LikeActionEndpoint {
public:
    KeloAPI::URLRequest URLRequest() const override {
        auto request = LikeActionEndpoint::URLRequest();
        request.timeoutInterval = timeout;
        return request;
    }
    std::chrono::milliseconds timeout{20000};

protected:
    HastyLikeActionEndpoint(Key key, const std::shared_ptr<KLWatchPost>& post)
        : LikeActionEndpoint(key, post) {}
};

/// A service whose answer to a like goes wrong at some byte of it.
class AnyByte : public testing::ActingTest {
protected:
    AnyByte()
        : post(untouchedPost())
        , endpoint(Endpoint::make<HastyLikeActionEndpoint>(post)) {}

    /// Likes once; checks that there is one completion.
    PostActionResult<KLLike> like() {
        std::optional<PostActionResult<KLLike>> outcome;
        int completions = 0;
        endpoint->toggle(true, [&](const PostActionResult<KLLike>& result) {
            outcome = result;
            ++completions;
        });
        EXPECT_TRUE(runUntil([&] { return outcome.has_value(); }));
        runFor(std::chrono::milliseconds(2));
        EXPECT_EQ(completions, 1);
        return outcome.value();
    }
    /// The fault strikes once, the like fails once, and the same endpoint works afterwards.
    void failsOnce(const Json& action) {
        // On a fresh connection: a request that dies with a kept one is sent again on a new one.
        testing::renewManager(*session);
        service.addFault({{"match", {{"path", "/posts/*"}}}, {"action", action}});
        EXPECT_TRUE(like().error()) << action;
        EXPECT_EQ(service.faults().back().at("fired"), 1) << action;
        const auto after = like();
        EXPECT_TRUE(after.success()) << action << " " << after.error()->description();
        service.call("DELETE", "/_service/faults");
    }
    /// Less than the answer's length on the wire, and more than that of its head.
    int answerBytes() {
        std::optional<std::string> body;
        const auto plain = Endpoint::create(session);
        plain->setPath("posts/" + *post->postId + "/likes");
        plain->setMethod(Method::POST);
        plain->request([&](std::optional<std::string> text, std::optional<Error>) { body = text; });
        EXPECT_TRUE(runUntil([&] { return body.has_value(); }));
        return static_cast<int>(body.value_or("").size()) + 60;
    }

    std::shared_ptr<KLWatchPost> post;
    std::shared_ptr<HastyLikeActionEndpoint> endpoint;
};

TEST_F(AnyByte, AConnectionThatBreaksOffIsOneError) {
    const int bytes = answerBytes();
    EXPECT_GT(bytes, 150);
    for (int at = 0; at < bytes; at += at < 20 ? 3 : 11) {
        failsOnce({{"type", "reset"}, {"afterBytes", at}});
        failsOnce({{"type", "close"}, {"afterBytes", at}});
        failsOnce({{"type", "close"}, {"afterBytes", at}, {"abrupt", true}});
    }
}

TEST_F(AnyByte, AStallIsOneError) {
    const int bytes = answerBytes();
    for (int at = 0; at < bytes; at += bytes / 9) {
        endpoint->timeout = std::chrono::milliseconds(400);
        failsOnce({{"type", "stall"}, {"afterBytes", at}});
    }
}

TEST_F(AnyByte, GarbageIsOneError) {
    for (const int bytes : {1, 2, 17, 100, 500, 20000}) {
        failsOnce({{"type", "garbage"}, {"bytes", bytes}});
    }
    for (const char* body : {"", "{", "[]", "null", "{\"data\":", "{\"data\":[]}",
                             "{\"data\":{\"likeId\":1}} and more"}) {
        failsOnce({{"type", "body"}, {"body", body}});
    }
}

} // namespace KeloAPI
