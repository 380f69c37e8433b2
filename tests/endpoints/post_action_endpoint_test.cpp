#include "support/Awaited.hpp"
#include "support/JsonText.hpp"
#include "support/RegistrySession.hpp"

#include <KeloAPI/endpoints/LikeActionEndpoint.hpp>
#include <KeloAPI/endpoints/RekeloActionEndpoint.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>

namespace KeloAPI::testing {

/// An action whose path says what it was asked for.
class RecordingActionEndpoint : public PostActionEndpoint<LikeParser> {
public:
    void setPathFor(bool on) override {
        setPath(std::string(on ? "on" : "off") + "/" + std::string(name(method())));
    }

protected:
    RecordingActionEndpoint(Key key, const std::shared_ptr<KLWatchPost>& post)
        : PostActionEndpoint(key, post, std::make_shared<LikeParser>()) {}
};

class PostActionEndpointTest : public RegistrySessionTest {
protected:
    PostActionEndpointTest() { post->postId = "123"; }

    template <class P>
    PostActionResult<typename P::T> toggle(PostActionEndpoint<P>& endpoint, bool on,
                                           const std::string& body = R"({"data": {}})") {
        transport->answer(fakes::ScriptedAnswer::json(body));
        int completions = 0;
        const auto result = awaited<PostActionResult<typename P::T>>([&](auto completion) {
            endpoint.toggle(on, [&completions, completion](const auto& handed) {
                ++completions;
                completion(handed);
            });
        });
        _last = transport->requests().back();
        passThrough();
        EXPECT_EQ(completions, 1);
        return result;
    }
    /// The request that was toggled last.
    std::string lastCall() const {
        return std::string(name(_last.method)) + " " + _last.url->path();
    }

    std::shared_ptr<KLWatchPost> post = std::make_shared<KLWatchPost>();

private:
    URLRequest _last;
};

TEST_F(PostActionEndpointTest, TakingBackAnUnknownRepostGoesToThePathOfBefore) {
    const auto fresh = RekeloActionEndpoint::create(post);
    toggle(*fresh, false);
    EXPECT_EQ(lastCall(), "DELETE /");
    toggle(*fresh, true);
    toggle(*fresh, false);
    EXPECT_EQ(lastCall(), "DELETE /posts/123/repost");
    post->currentUserRekelo = std::make_shared<KLRekelo>(); // without an identifier
    fresh->setPath("before");
    toggle(*fresh, false);
    EXPECT_EQ(lastCall(), "DELETE /before");
}

TEST_F(PostActionEndpointTest, TakingBackAKnownRepostNamesIt) {
    post->currentUserRekelo = std::make_shared<KLRekelo>();
    post->currentUserRekelo->rekeloId = "987";
    const auto rekelo = RekeloActionEndpoint::create(post);
    toggle(*rekelo, false);
    EXPECT_EQ(lastCall(), "DELETE /posts/123/repost/987");
    toggle(*rekelo, true);
    EXPECT_EQ(lastCall(), "POST /posts/123/repost");
}

TEST_F(PostActionEndpointTest, APostThatHasGoneLeavesThePathAndIsNotKeptAlive) {
    const auto like = LikeActionEndpoint::create(post);
    const auto rekelo = RekeloActionEndpoint::create(post);
    EXPECT_EQ(like->post(), post);
    toggle(*like, true);
    post.reset();
    EXPECT_EQ(like->post(), nullptr);
    toggle(*like, false);
    EXPECT_EQ(lastCall(), "DELETE /posts/123/likes");
    toggle(*rekelo, true);
    EXPECT_EQ(lastCall(), "POST /");
    const auto none = LikeActionEndpoint::create(nullptr);
    EXPECT_EQ(none->post(), nullptr);
    toggle(*none, true);
    EXPECT_EQ(lastCall(), "POST /");
}

TEST_F(PostActionEndpointTest, APostWithoutIdentifierLeavesThePath) {
    post->postId.reset();
    toggle(*LikeActionEndpoint::create(post), true);
    EXPECT_EQ(lastCall(), "POST /");
    toggle(*RekeloActionEndpoint::create(post), true);
    EXPECT_EQ(lastCall(), "POST /");
    // Not even a known repost helps.
    post->currentUserRekelo = std::make_shared<KLRekelo>();
    post->currentUserRekelo->rekeloId = "987";
    toggle(*RekeloActionEndpoint::create(post), false);
    EXPECT_EQ(lastCall(), "DELETE /");
}

TEST_F(PostActionEndpointTest, ADerivedClassComposesThePathAfterTheMethod) {
    const auto endpoint = Endpoint::make<RecordingActionEndpoint>(post);
    toggle(*endpoint, true);
    EXPECT_EQ(lastCall(), "POST /on/POST");
    toggle(*endpoint, false);
    EXPECT_EQ(lastCall(), "DELETE /off/DELETE");
}

TEST_F(PostActionEndpointTest, ThePathFollowsThePost) {
    const auto like = LikeActionEndpoint::create(post);
    EXPECT_EQ(like->path(), "");
    EXPECT_TRUE(like->parameters().empty());
    for (const char* id : {"123", "456", ""}) { // an empty identifier is one
        post->postId = id;
        toggle(*like, true);
        EXPECT_EQ(lastCall(), "POST /posts/" + *post->postId + "/likes");
    }
}

TEST_F(PostActionEndpointTest, TheFirstItemIsHandedOutWhereThereIsOne) {
    const auto like = LikeActionEndpoint::create(post);
    const auto none = toggle(*like, true);
    ASSERT_TRUE(none.success());
    EXPECT_EQ(none.success()->item, nullptr);
    const auto first =
        toggle(*like, true, R"({"data": {"records": [{"likeId": 1}, {"likeId": 2}]}})");
    EXPECT_EQ(first.success()->item->likeId, "1");
    const auto gone = toggle(*like, false, R"({"data": {"likeId": "gone"}})");
    EXPECT_EQ(gone.success()->item->likeId, "gone") << "taking back may bring one, too";
}

TEST_F(PostActionEndpointTest, AnErrorLeavesThePostAsItWas) {
    const auto error = R"({"error": "no", "code": 7})";
    EXPECT_EQ(toggle(*LikeActionEndpoint::create(post), true, error).error()->code(), 7);
    EXPECT_EQ(post->liked, std::nullopt);
    EXPECT_FALSE(post->rekeloed());
}

TEST_F(PostActionEndpointTest, TheBaseComposesNoPath) {
    const auto parser = std::make_shared<LikeParser>();
    const auto base = PostActionEndpoint<LikeParser>::create(post, parser);
    EXPECT_EQ(base->parser(), parser);
    base->setPath("own/path");
    toggle(*base, true, R"({"data": {"likeId": "x"}})");
    EXPECT_EQ(lastCall(), "POST /own/path");
}

TEST(PostActionEndpointDeathTest, WithoutAParserStopsTheProcess) {
    const auto post = std::make_shared<KLWatchPost>();
    EXPECT_DEATH(PostActionEndpoint<LikeParser>::create(post, nullptr),
                 "^KeloAPI: contract violated: an action needs a parser\n$");
}

TEST(LikeAndRekeloParser, AnyIdentifierBecomesTextAndAMissingOneStopsTheProcess) {
    const auto like = [](const std::string& text) {
        return LikeParser().parse(JsonText(text).object());
    };
    const auto rekelo = [](const std::string& text) {
        return RekeloParser().parse(JsonText(text).object());
    };
    const std::pair<std::string, const char*> table[] = {
        {"42", "42"},
        {R"("abc")", "abc"},
        {"null", "<null>"},
        {R"([1, "a"])", R"([1,"a"])"},
        {"1.5", "1.5"},
        {"true", "1"},
        {"18446744073709551615", "18446744073709551615"}};
    for (const auto& [value, text] : table) {
        EXPECT_EQ(like(R"({"likeId": )" + value + "}")->likeId, text);
        EXPECT_EQ(rekelo(R"({"repostId": )" + value + "}")->rekeloId, text);
    }
    EXPECT_EQ(like(R"({"likeId": 1, "user": {"username": "a"}, "username": "b"})")->user->username,
              "a");
    EXPECT_EQ(rekelo(R"({"repostId": 1})")->user->username, "");
    EXPECT_DEATH(like("{}"), "contract violated: a like has no \"likeId\"");
    EXPECT_DEATH(rekelo(R"({"likeId": 1})"), "contract violated: a repost has no \"repostId\"");
}

} // namespace KeloAPI::testing
