#include "Calls.hpp"
#include "Control.hpp"
#include "Steps.hpp"

#include <KeloAPI/endpoints/LikeActionEndpoint.hpp>
#include <KeloAPI/endpoints/RecommendationsEndpoint.hpp>
#include <KeloAPI/endpoints/RekeloActionEndpoint.hpp>
#include <KeloAPI/endpoints/UserEndpoint.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>

namespace KeloTour {

using namespace KeloAPI;

namespace {

constexpr const char* otherUser = "1002";

/// `act` sends one request without a query and without a body.
void expectBare(const std::string& method, const std::string& path,
                const std::function<void()>& act) {
    const auto request = Control::received(act);
    check(request.method == method && request.path == path, "that is another request");
    check(request.query.empty() && request.body.empty(), "it should be bare");
}

void likedAndUnliked() {
    const auto post = untouchedPost();
    const std::string path = "/posts/" + *post->postId + "/likes";
    const auto endpoint = LikeActionEndpoint::create(post);
    std::shared_ptr<KLLike> like;
    expectBare("POST", path, [&] { like = toggle(*endpoint, true); });
    check(like && like->likeId && like->user, "the answer holds no like");
    came("the like " + *like->likeId + " of " + like->user->username.value_or("?"));
    check(Control::kept("likes").back().at("likeId") == *like->likeId, "another like is kept");
    check(post->liked == false, "the library changed the host's post");
    check(readAgain(*post)->liked == true, "the timeline does not know of it");
    note("read again, the post is liked");

    expectBare("DELETE", path, [&] { like = toggle(*endpoint, false); });
    check(like == nullptr, "there is an item");
    check(readAgain(*post)->liked == false, "the timeline does not know of it");
    note("read again, it is not liked any more");
}

void rekeloedAndTakenBack() {
    const auto post = untouchedPost();
    const std::string path = "/posts/" + *post->postId + "/repost";
    std::shared_ptr<KLRekelo> rekelo;
    expectBare("POST", path, [&] { rekelo = toggle(*RekeloActionEndpoint::create(post), true); });
    check(rekelo && rekelo->rekeloId, "the answer holds no repost");
    came("the repost " + *rekelo->rekeloId);
    check(Control::kept("reposts").back().at("repostId") == *rekelo->rekeloId,
          "another repost is kept");
    const auto reposted = readAgain(*post);
    check(reposted->rekeloed() && reposted->currentUserRekelo->rekeloId == rekelo->rekeloId,
          "the timeline does not know of it");
    note("read again, the post names the user's repost");

    const auto endpoint = RekeloActionEndpoint::create(reposted);
    expectBare("DELETE", path + "/" + *rekelo->rekeloId,
               [&] { check(toggle(*endpoint, false) == nullptr, "there is an item"); });
    check(!readAgain(*post)->rekeloed(), "the timeline does not know of it");
    note("read again, it names none any more");
}

void nothingToTakeBack() {
    const auto post = untouchedPost();
    const auto endpoint = RekeloActionEndpoint::create(post);
    endpoint->setPathFor(true);
    Inbox<PostActionResult<KLRekelo>> inbox;
    expectBare("DELETE", "/posts/" + *post->postId + "/repost", [&] {
        endpoint->toggle(false, [slot = inbox.slot()](const auto& result) { slot(result); });
        const auto result = inbox.next();
        check(result.error() != nullptr, "the call succeeded, which it must not");
        came(result.error()->description());
        check(result.error()->code() == 405, "that is another error");
    });
    note("the post knows no repost of the user's: the path stayed what it was");
}

void setFollowing(bool following) {
    Inbox<UserResult> inbox;
    UserEndpoint::create(otherUser)->setFollowingOnTwitter(
        following, [slot = inbox.slot()](const UserResult& result) { slot(result); });
    checkSuccess(inbox.next().error());
    came("success");
}

/// What the service itself answers to the call that `UserEndpoint` sends.
void expectAnswer(const std::string& path, const std::string& code) {
    const auto endpoint = endpointAt(path);
    endpoint->setMethod(Method::POST);
    const std::string text = readText(endpoint);
    note("the service's own words to that: " + text);
    check(text.find("\"code\":" + code) != std::string::npos, "that is another code");
}

void followedTwice() {
    const std::string path = std::string("users/") + otherUser + "/follow-on-twitter";
    expectBare("POST", "/" + path, [] { setFollowing(true); });
    check(Control::kept("follows").back().at("followeeId") == otherUser, "no follow is kept");
    expectBare("POST", "/" + path, [] { setFollowing(true); });
    expectAnswer(path, "230");
}

void unfollowedTwice() {
    const std::string path = std::string("users/") + otherUser + "/unfollow-on-twitter";
    expectBare("POST", "/" + path, [] { setFollowing(false); });
    for (const auto& follow : Control::kept("follows")) {
        check(follow.at("followeeId") != otherUser, "the follow is still kept");
    }
    expectBare("POST", "/" + path, [] { setFollowing(false); });
    expectAnswer(path, "231");
}

using Feedback =
    std::function<void(RecommendationsEndpoint& endpoint, RecommendationsEndpoint::Completion)>;

void expectFeedback(const std::string& kind, const std::string& id, const std::string& boost,
                    const Feedback& send) {
    Inbox<RecommendationResult> inbox;
    const auto request = Control::received([&] {
        send(*RecommendationsEndpoint::create(),
             [slot = inbox.slot()](const RecommendationResult& result) { slot(result); });
        checkSuccess(inbox.next().error());
    });
    check(request.method == "POST" &&
              request.path == "/recommendations/feedback/" + kind + "s/" + id,
          "that is another request");
    check(request.body == R"({"recommendationBoost":")" + boost + "\"}", "that is another body");
    check(request.headers.at("Content-Type") == "application/json", "that was no JSON");
    const auto kept = Control::kept("feedback").back();
    check(kept.at("kind") == kind && kept.at("targetId") == id && kept.at("boost") == boost,
          "other feedback is kept");
}

void feedbackOnBoth() {
    expectFeedback("user", otherUser, "positive", [](auto& endpoint, auto completion) {
        endpoint.addUserFeedback(otherUser, RecommendationBoost::Positive, completion);
    });
    const std::string postId = *untouchedPost()->postId;
    expectFeedback("post", postId, "negative", [&](auto& endpoint, auto completion) {
        endpoint.addPostFeedback(postId, RecommendationBoost::Negative, completion);
    });
}

} // namespace

void tourActing(Tour& tour) {
    tour.step("A like, seen when the timeline is read again, and taken back", likedAndUnliked);
    tour.step("A repost, seen when the timeline is read again, and taken back",
              rekeloedAndTakenBack);
    tour.step("A repost taken back that the post does not know of", nothingToTakeBack);
    tour.step("A user is followed twice: the code 230 is a success, too", followedTwice);
    tour.step("A user is unfollowed twice: the code 231 is a success, too", unfollowedTwice);
    tour.step("More of a user and less of a post, please", feedbackOnBoth);
}

} // namespace KeloTour
