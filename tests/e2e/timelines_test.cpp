#include "support/ServiceTest.hpp"

#include <KeloAPI/endpoints/TimelineEndpoint.hpp>
#include <KeloAPI/model/KLRekelo.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>

#include <algorithm>
#include <set>

namespace KeloAPI::testing {

class TimelinesAtService : public ServiceTest {
protected:
    static std::shared_ptr<TimelineEndpoint> withSize(const std::string& path, int size) {
        auto endpoint = TimelineEndpoint::create(path);
        Parameters parameters = endpoint->parameters();
        parameters.insert_or_assign("size", size);
        endpoint->setParameters(std::move(parameters));
        return endpoint;
    }

    static std::vector<std::string> idsOf(const TimelineResult& result) {
        std::vector<std::string> ids;
        for (const auto& post : result.success()->posts) {
            ids.push_back(*post->postId);
        }
        return ids;
    }
    /// The identifiers of a whole feed, page by page.
    std::vector<std::string> walk(std::shared_ptr<TimelineEndpoint> endpoint) {
        std::vector<std::string> ids;
        for (int pages = 0; endpoint && pages < 1000; ++pages) {
            const auto result = fetch(endpoint);
            if (!result.success()) {
                ADD_FAILURE() << result.error()->description();
                break;
            }
            std::ranges::copy(idsOf(result), std::back_inserter(ids));
            endpoint = result.success()->nextPage;
        }
        return ids;
    }
};

TEST_F(TimelinesAtService, PostsArriveComplete) {
    const auto result = fetch(withSize("all", 50));
    ASSERT_TRUE(result.success());
    for (const auto& post : result.success()->posts) {
        EXPECT_FALSE(post->postId->empty());
        EXPECT_TRUE(post->caption.has_value());
        EXPECT_TRUE(post->created.has_value());
        EXPECT_TRUE(post->liked.has_value());
        EXPECT_TRUE(post->videoUrl->starts_with("https://"));
        EXPECT_TRUE(post->thumbnailUrl->starts_with("https://"));
        ASSERT_NE(post->user, nullptr);
        EXPECT_FALSE(post->user->username->empty());
    }
}

TEST_F(TimelinesAtService, PageNumbersAndAnchorsOfBothKindsWalkAFeedToItsEnd) {
    for (const auto& [feed, size] :
         {std::pair("all", 100), std::pair("popular", 150), std::pair("latest", 150)}) {
        const auto ids = walk(withSize(feed, size));
        EXPECT_GE(ids.size(), 1000U) << feed;
        EXPECT_EQ(std::set<std::string>(ids.begin(), ids.end()).size(), ids.size()) << feed;
    }
}

TEST_F(TimelinesAtService, ThePageBeforeIsThePageOneCameFrom) {
    const std::string texts = "c_max=3&c_overflow=trunc&l_max=3&l_overflow=trunc";
    const std::tuple<const char*, std::string, std::string> table[] = {
        {"all", texts + "&page=2", texts + "&page=1"},
        {"popular", "anchor=", "backAnchor="},
        {"latest", "anchor=", "backAnchor="}};
    for (const auto& [feed, next, previous] : table) {
        SCOPED_TRACE(feed);
        service.requests();
        const auto first = fetch(withSize(feed, 7));
        const auto second = fetch(first.success()->nextPage);
        ASSERT_NE(second.success()->previousPage, nullptr);
        EXPECT_NE(idsOf(second), idsOf(first));
        EXPECT_EQ(idsOf(fetch(second.success()->previousPage)), idsOf(first));
        const auto requests = service.requests();
        ASSERT_EQ(requests.size(), 3U);
        EXPECT_EQ(requests[0].query, texts + "&size=7");
        EXPECT_TRUE(requests[1].query.starts_with(next) && requests[1].query.ends_with("&size=7"));
        EXPECT_TRUE(requests[2].query.starts_with(previous));
    }
}

TEST_F(TimelinesAtService, FeedsEndAreEmptyNeedASessionOrAreNotThere) {
    const auto ids = walk(TimelineEndpoint::create("editors-picks"));
    EXPECT_FALSE(ids.empty());
    EXPECT_LT(ids.size(), 200U);
    const auto empty = fetch(TimelineEndpoint::create("empty"));
    ASSERT_TRUE(empty.success());
    EXPECT_TRUE(empty.success()->posts.empty());
    EXPECT_EQ(empty.success()->nextPage, nullptr);
    EXPECT_EQ(empty.success()->previousPage, nullptr);
    EXPECT_TRUE(fetch(TimelineEndpoint::create("home")).success());
    delegate->sessionKey.reset();
    EXPECT_EQ(fetch(TimelineEndpoint::create("home")).error()->code(), 100);
    const auto unknown = fetch(TimelineEndpoint::create("nothing-here"));
    ASSERT_TRUE(unknown.error());
    EXPECT_GT(unknown.error()->code(), 0);
    EXPECT_FALSE(unknown.error()->localizedDescription().empty());
}

TEST_F(TimelinesAtService, RequestsShareOneConnection) {
    walk(withSize("all", 100));
    const auto requests = service.requests();
    ASSERT_GT(requests.size(), 5U);
    for (const auto& seen : requests) {
        EXPECT_EQ(seen.connection, requests.front().connection);
    }
}

} // namespace KeloAPI::testing
