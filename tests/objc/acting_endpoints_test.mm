// The endpoints that read and act on users and posts.
#include "objc/EndpointTest.hpp"

#include <KeloAPI/endpoints/LikeActionEndpoint.hpp>
#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>

using namespace KeloBridge;
using namespace KeloObjcTest;

namespace {

class ActingTest : public EndpointTest {
protected:
    ActingTest() {
        post.postId = @"123";
        KLRekelo *rekelo = [[KLRekelo new] autorelease];
        rekelo.rekeloId = @"987";
        post.currentUserRekelo = rekelo;
    }

    KLWatchPost *const post = [[KLWatchPost new] autorelease];
};

/// Gives a post for every record.
AnyObjectJsonParser *posts() {
    using KeloAPI::AnyObjectParserAdaptor;
    return toObjC(
        std::make_shared<AnyObjectParserAdaptor>(std::make_shared<KeloAPI::PostParser>()));
}

constexpr const char *refusal = R"({"error": "No.", "code": 7})";

} // namespace

TEST_F(ActingTest, ResultsOfAHostsOwnTests) {
    NSError *error = [NSError errorWithDomain:@"host" code:3 userInfo:nil];
    EndpointResult *failed = [[[EndpointResult alloc] initWithContent:@"none"
                                                                error:error] autorelease];
    EXPECT_FALSE(failed.success);
    EXPECT_EQ(failed.error, error);
    EXPECT_EQ(failed.content, nil);
    MeResult *read = [[[MeResult alloc] initWithContent:@"user" error:nil] autorelease];
    EXPECT_TRUE(read.success);
    EXPECT_EQ(read.error, nil);
    EXPECT_TRUE(same(read.user, @"user"));
    NSArray *page = [NSArray arrayWithObject:post];
    TimelineEndpoint *next = [[[TimelineEndpoint alloc] initWithPath:@"a"] autorelease];
    TimelineResult *fetched = [[[TimelineResult alloc] initWithPosts:page
                                                            nextPage:next
                                                        previousPage:nil] autorelease];
    EXPECT_TRUE(fetched.success);
    EXPECT_EQ(fetched.posts, page);
    EXPECT_EQ(fetched.nextPage, next);
    EXPECT_EQ(fetched.previousPage, nil);
}

TEST_F(ActingTest, ReadsTheSignedInUser) {
    MeEndpoint *endpoint = [[MeEndpoint new] autorelease];
    EXPECT_TRUE(same(NSStringFromClass([endpoint class]), @"KeloAPI.MeEndpoint"));
    EXPECT_TRUE([endpoint isKindOfClass:[MeEndpoint class]]);
    EXPECT_TRUE(same(NSStringFromClass([toObjC(KeloAPI::MeEndpoint::create()) class]),
                     @"KeloAPI.MeEndpoint"));
    EXPECT_EQ(endpoint.session, registrySession());
    [endpoint getWithTarget:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(R"({"data": {"username": "mara"}})"));
    EXPECT_EQ(sent(), "GET users/me");
    MeResult *result = listener.object;
    EXPECT_TRUE([result isMemberOfClass:[MeResult class]]);
    EXPECT_TRUE(result.success);
    EXPECT_TRUE(same(result.user.username, @"mara"));

    endpoint = [[[MeEndpoint alloc] initWithSession:registrySession()] autorelease];
    [endpoint getWithTarget:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(refusal));
    result = listener.object;
    EXPECT_FALSE(result.success);
    EXPECT_EQ(result.user, nil);
    EXPECT_EQ([result.error code], 7);
}

TEST_F(ActingTest, FollowsAUser) {
    UserEndpoint *endpoint = [[[UserEndpoint alloc] initWithUserId:@"55"] autorelease];
    EXPECT_TRUE(same(endpoint.userId, @"55"));
    [endpoint setFollowingOnTwitter:YES target:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(R"({"error": "Already.", "code": 230})"));
    EXPECT_EQ(sent(), "POST users/55/follow-on-twitter");
    EXPECT_TRUE([listener.object isMemberOfClass:[UserResult class]]);
    EXPECT_TRUE([(UserResult *)listener.object success]);
    [endpoint setFollowingOnTwitter:NO target:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(refusal));
    EXPECT_EQ(sent(), "POST users/55/unfollow-on-twitter");
    EXPECT_EQ([[listener.object error] code], 7);
}

TEST_F(ActingTest, UserEndpointsOnASession) {
    UserEndpoint *endpoint = [[[UserEndpoint alloc] initWithSession:registrySession()
                                                             userId:@"55"] autorelease];
    EXPECT_TRUE(same(endpoint.userId, @"55"));
    EXPECT_EQ(endpoint.session, registrySession());
    endpoint = [[[UserEndpoint alloc] initWithSession:registrySession()] autorelease];
    EXPECT_TRUE(same(endpoint.userId, @""));
}

TEST_F(ActingTest, PagesATimeline) {
    TimelineEndpoint *endpoint = [[[TimelineEndpoint alloc] initWithPath:@"users/42"] autorelease];
    EXPECT_TRUE(same(endpoint.path, @"timelines/users/42"));
    EXPECT_TRUE(same(endpoint.parameters, json(R"({"c_max": 3, "c_overflow": "trunc", "l_max": 3,
                              "l_overflow": "trunc", "size": 5})")));
    [endpoint fetchWithTarget:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(R"({"data": {"records": [{"postId": 1}, {"postId": "b"}],
                                      "nextPage": 2, "size": 20}})"));
    TimelineResult *page = listener.object;
    ASSERT_TRUE(page.success);
    ASSERT_EQ([page.posts count], 2U);
    EXPECT_TRUE(same([(KLWatchPost *)[page.posts objectAtIndex:0] postId], @"1"));
    EXPECT_EQ(page.previousPage, nil);
    EXPECT_TRUE([page.nextPage isMemberOfClass:[TimelineEndpoint class]]);
    EXPECT_TRUE(same([page.nextPage.parameters objectForKey:@"page"], [NSNumber numberWithInt:2]));
    [page.nextPage fetchWithTarget:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(R"({"data": {"records": [], "previousPage": 1, "size": 20}})"));
    EXPECT_NE([(TimelineResult *)listener.object previousPage], nil);
    EXPECT_EQ([(TimelineResult *)listener.object nextPage], nil);
    [endpoint fetchWithTarget:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(refusal));
    EXPECT_EQ([[listener.object error] code], 7);
    EXPECT_EQ([(TimelineResult *)listener.object posts], nil);
}

TEST_F(ActingTest, TimelineOnASession) {
    TimelineEndpoint *endpoint =
        [[[TimelineEndpoint alloc] initWithSession:registrySession()] autorelease];
    EXPECT_TRUE(same(endpoint.path, @""));
    EXPECT_EQ([endpoint.parameters count], 0U);
}

TEST_F(ActingTest, Likes) {
    LikeActionEndpoint *endpoint = [[[LikeActionEndpoint alloc] initWithPost:post] autorelease];
    EXPECT_EQ(endpoint.post, post);
    [endpoint toggleOn:YES target:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(R"({"data": {"likeId": 42, "user": {"username": "kofi"}}})"));
    EXPECT_EQ(sent(), "POST posts/123/likes");
    PostActionResult *result = listener.object;
    ASSERT_TRUE([result.item isMemberOfClass:[KLLike class]]);
    EXPECT_TRUE(same([(KLLike *)result.item likeId], @"42"));
    EXPECT_TRUE(same([(KLLike *)result.item user].username, @"kofi"));
    [endpoint toggleOn:NO target:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(R"({"data": {}})"));
    EXPECT_EQ(sent(), "DELETE posts/123/likes");
    EXPECT_TRUE([(PostActionResult *)listener.object success]);
    EXPECT_EQ([(PostActionResult *)listener.object item], nil);
}

TEST_F(ActingTest, Rekeloes) {
    RekeloActionEndpoint *endpoint = [[[RekeloActionEndpoint alloc] initWithPost:post] autorelease];
    [endpoint toggleOn:YES target:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(R"({"data": {"repostId": "abc"}})"));
    EXPECT_EQ(sent(), "POST posts/123/repost");
    EXPECT_TRUE(same([(KLRekelo *)[listener.object item] rekeloId], @"abc"));
    [endpoint toggleOn:NO target:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(refusal));
    EXPECT_EQ(sent(), "DELETE posts/123/repost/987");
    EXPECT_EQ([[listener.object error] code], 7);
    EXPECT_EQ([(PostActionResult *)listener.object item], nil);
}

TEST_F(ActingTest, SetsAnActionsPath) {
    RekeloActionEndpoint *endpoint = [[[RekeloActionEndpoint alloc] initWithPost:post] autorelease];
    [endpoint setPathForOn:NO];
    EXPECT_TRUE(same(endpoint.path, @"posts/123/repost/987"));
    [endpoint setPathForOn:YES];
    EXPECT_TRUE(same(endpoint.path, @"posts/123/repost"));
}

TEST_F(ActingTest, DoesNotKeepThePost) {
    NSAutoreleasePool *pool = [NSAutoreleasePool new];
    KLWatchPost *own = [KLWatchPost new];
    LikeActionEndpoint *endpoint = [[LikeActionEndpoint alloc] initWithPost:own];
    EXPECT_EQ(endpoint.post, own);
    [own release];
    [pool drain];
    EXPECT_EQ(endpoint.post, nil);
    [endpoint release];
    endpoint = [[[LikeActionEndpoint alloc] initWithPost:nil] autorelease];
    EXPECT_EQ(endpoint.post, nil);
}

TEST_F(ActingTest, ActionsOfAnyKind) {
    PostActionEndpoint *endpoint = [[[PostActionEndpoint alloc] initWithPost:post
                                                                      parser:posts()] autorelease];
    EXPECT_EQ(endpoint.post, post);
    [endpoint setPathForOn:YES];
    EXPECT_TRUE(same(endpoint.path, @""));
    endpoint.path = @"posts/123/flags";
    [endpoint toggleOn:YES target:listener action:@selector(heard:)];
    ASSERT_TRUE(answered(R"({"data": {"postId": 123}})"));
    EXPECT_EQ(sent(), "POST posts/123/flags");
    EXPECT_TRUE(same([(KLWatchPost *)[listener.object item] postId], @"123"));
}

TEST_F(ActingTest, ActionsFromTheOtherSide) {
    const auto native = KeloAPI::LikeActionEndpoint::create(nullptr);
    EXPECT_TRUE([toObjC(native) isMemberOfClass:[LikeActionEndpoint class]]);
    EXPECT_EQ([(LikeActionEndpoint *)toObjC(native) post], nil);
}

TEST_F(ActingTest, BoostsHaveTheirTexts) {
    EXPECT_TRUE(
        same([RecommendationsEndpoint rawValueOfBoost:RecommendationBoostPositive], @"positive"));
    EXPECT_TRUE(
        same([RecommendationsEndpoint rawValueOfBoost:RecommendationBoostNeutral], @"neutral"));
    EXPECT_TRUE(
        same([RecommendationsEndpoint rawValueOfBoost:RecommendationBoostNegative], @"negative"));
    EXPECT_EQ([RecommendationsEndpoint rawValueOfBoost:(RecommendationBoost)3], nil);
    EXPECT_TRUE(
        same([RecommendationsEndpoint boostWithRawValue:@"negative"], [NSNumber numberWithInt:2]));
    EXPECT_EQ([RecommendationsEndpoint boostWithRawValue:@"Positive"], nil);
    EXPECT_EQ([RecommendationsEndpoint boostWithRawValue:nil], nil);
}

TEST_F(ActingTest, SendsFeedback) {
    RecommendationsEndpoint *endpoint = [[RecommendationsEndpoint new] autorelease];
    EXPECT_TRUE(same(endpoint.method, @"POST"));
    EXPECT_EQ(endpoint.parameterEncoding, ParameterEncodingJSON);
    [endpoint addUserFeedback:@"7"
                        boost:RecommendationBoostNeutral
                       target:listener
                       action:@selector(heard:)];
    ASSERT_TRUE(answered(R"({"data": {}})"));
    EXPECT_EQ(sent(), "POST recommendations/feedback/users/7");
    EXPECT_EQ(lastBody(), R"({"recommendationBoost":"neutral"})");
    EXPECT_TRUE([listener.object isMemberOfClass:[RecommendationResult class]]);
    EXPECT_TRUE([(RecommendationResult *)listener.object success]);
    [endpoint addPostFeedback:@"555"
                        boost:RecommendationBoostNegative
                       target:listener
                       action:@selector(heard:)];
    ASSERT_TRUE(answered(refusal));
    EXPECT_EQ(sent(), "POST recommendations/feedback/posts/555");
    EXPECT_EQ([[listener.object error] code], 7);
    [endpoint addPostFeedback:@"556" boost:RecommendationBoostPositive target:nil action:nullptr];
    EXPECT_EQ(sent(), "POST recommendations/feedback/posts/556");
    EXPECT_TRUE(same([raised([&] {
                         [endpoint addUserFeedback:@"7"
                                             boost:(RecommendationBoost)9
                                            target:nil
                                            action:nullptr];
                     }) name],
                     NSInvalidArgumentException));
}

TEST_F(ActingTest, FetchesSounds) {
    SoundboardEndpoint *endpoint =
        [[[SoundboardEndpoint alloc] initWithSession:registrySession()] autorelease];
    id<EndpointRequest> handle = [endpoint fetchSoundsWithTarget:listener
                                                          action:@selector(heard:and:)];
    EXPECT_NE(handle, nil);
    ASSERT_TRUE(answered(R"({"data": {"records": [{"soundId": 1}, {"soundId": 2}]}})"));
    EXPECT_EQ(sent(), "GET soundboard");
    EXPECT_EQ([listener.object count], 2U);
    EXPECT_EQ(listener.second, nil);
    [endpoint fetchSoundsWithTarget:listener action:@selector(heard:and:)];
    ASSERT_TRUE(answered(refusal));
    EXPECT_TRUE(same(listener.object, [NSArray array]));
    EXPECT_EQ([listener.second code], 7);
}

TEST_F(ActingTest, Blocks) {
    EndpointResult *result = nil;
    Block<id> one([&](id heard) { result = [heard retain]; });
    const auto hears = [&](Class made, const char *body) {
        result = nil;
        transport->answer(ScriptedAnswer::json(body));
        const bool came = KeloAPI::testing::runUntil([&] { return result != nil; });
        const bool right = came && [[result autorelease] isMemberOfClass:made] && result.success;
        return right;
    };
    [blocks([[MeEndpoint new] autorelease]) get:one.object()];
    EXPECT_TRUE(hears([MeResult class], R"({"data": {"username": "mara"}})"));
    id user = [[[UserEndpoint alloc] initWithUserId:@"5"] autorelease];
    [blocks(user) setFollowingOnTwitter:YES completion:one.object()];
    EXPECT_TRUE(hears([UserResult class], R"({"data": {}})"));
    id timeline = [[[TimelineEndpoint alloc] initWithPath:@"home"] autorelease];
    [blocks(timeline) fetch:one.object()];
    EXPECT_TRUE(hears([TimelineResult class], R"({"data": {"records": []}})"));
    id like = [[[LikeActionEndpoint alloc] initWithPost:post] autorelease];
    [blocks(like) toggleOn:YES completion:one.object()];
    EXPECT_TRUE(hears([PostActionResult class], R"({"data": {"likeId": 1}})"));
    id recommendations = [[RecommendationsEndpoint new] autorelease];
    [blocks(recommendations) addUserFeedback:@"1" boost:0 completion:one.object()];
    EXPECT_TRUE(hears([RecommendationResult class], R"({"data": {}})"));
    [blocks(recommendations) addPostFeedback:@"1" boost:0 completion:one.object()];
    EXPECT_TRUE(hears([RecommendationResult class], R"({"data": {}})"));
    [blocks(recommendations) addPostFeedback:@"1" boost:0 completion:nil];

    int sounds = -1;
    Block<id, id> two([&](id first, id) { sounds = static_cast<int>([first count]); });
    transport->answer(ScriptedAnswer::json(R"({"data": {}})")); // of the call without a block
    id board = [[[SoundboardEndpoint alloc] initWithSession:registrySession()] autorelease];
    EXPECT_NE([blocks(board) fetchSoundsWithCompletion:two.object()], nil);
    transport->answer(ScriptedAnswer::json(R"({"data": {"records": [{"soundId": 1}]}})"));
    EXPECT_TRUE(KeloAPI::testing::runUntil([&] { return sounds == 1; }));
}
