#include "support/TestService.hpp"

#include <cstdint>
#include <set>
#include <vector>

namespace KeloServiceTest {
namespace {

using Ids = std::vector<std::int64_t>;

Ids idsOf(const Json& page) {
    Ids ids;
    for (const Json& record : page.at("records")) {
        ids.push_back(record.at("postId").get<std::int64_t>());
    }
    return ids;
}

/// An anchor as it stands in a query.
std::string escaped(const Json& anchor) {
    const std::string text = anchor.is_string() ? anchor.get<std::string>() : anchor.dump();
    return httplib::detail::encode_query_param(text);
}

std::string anchorText(const Json& page) {
    return escaped(page.at("anchor"));
}

class PagingTest : public ServiceTest {
protected:
    /// All pages' data, walked the way the client library does.
    std::vector<Json> walk(const std::string& feed, int size) {
        const std::string base = "/timelines/" + feed + "?size=" + std::to_string(size);
        std::vector<Json> pages{data(base)};
        while (pages.size() < 2000) {
            const Json& last = pages.back();
            std::string query;
            if (last.contains("nextPage")) {
                query += "&page=" + last.at("nextPage").dump();
            }
            if (last.contains("anchor")) {
                query += "&anchor=" + anchorText(last);
            }
            if (query.empty()) {
                break;
            }
            pages.push_back(data(base + query));
        }
        return pages;
    }
    int status(const std::string& path) { return send("GET", path).status; }
};

struct FeedCase {
    const char* feed;
    int size;
};

class WholeFeedTest : public PagingTest, public ::testing::WithParamInterface<FeedCase> {};

TEST_P(WholeFeedTest, IsWalkedExactlyOnce) {
    const auto [feed, size] = GetParam();
    const std::vector<Json> pages = walk(feed, size);
    const auto count = pages.front().at("count").get<std::size_t>();
    Ids walked;
    for (const Json& page : pages) {
        EXPECT_EQ(page.at("count"), count);
        EXPECT_EQ(page.at("size"), size);
        const Ids ids = idsOf(page);
        const bool last = &page == &pages.back();
        EXPECT_TRUE(ids.size() == static_cast<std::size_t>(size) || last);
        EXPECT_FALSE(ids.empty() && count != 0);
        walked.insert(walked.end(), ids.begin(), ids.end());
    }
    EXPECT_EQ(walked.size(), count);
    EXPECT_EQ(std::set(walked.begin(), walked.end()).size(), count);
    // The walk in small steps gives the same order as one step over everything.
    walked.resize(std::min<std::size_t>(walked.size(), 1000));
    EXPECT_EQ(walked, idsOf(data("/timelines/" + std::string(feed) + "?size=1000")));
}

INSTANTIATE_TEST_SUITE_P(
    Feeds, WholeFeedTest,
    ::testing::Values(FeedCase{"all", 100}, FeedCase{"home", 17}, FeedCase{"popular", 97},
                      FeedCase{"latest", 80}, FeedCase{"editors-picks", 5},
                      FeedCase{"editors-picks", 23}, FeedCase{"editors-picks", 1},
                      FeedCase{"empty", 20}, FeedCase{"users/1001", 3},
                      FeedCase{"users/1001/likes", 20}, FeedCase{"channels/1", 7},
                      FeedCase{"channels/10", 50}, FeedCase{"tags/cats", 4},
                      FeedCase{"tags/nobody-uses-this", 4}));

TEST_F(PagingTest, PagesKnowTheirNeighbours) {
    const auto metadata = [this](const char* query, std::size_t records) {
        Json page = data(std::string("/timelines/editors-picks?size=10") + query);
        EXPECT_EQ(page.at("records").size(), records);
        EXPECT_EQ(page.at("title"), "Editors' picks");
        EXPECT_EQ(page.at("count"), 23);
        EXPECT_EQ(page.at("displayCount"), 23);
        for (const char* key : {"records", "title", "count", "displayCount", "size"}) {
            page.erase(key);
        }
        return page;
    };
    EXPECT_EQ(metadata("", 10), Json({{"nextPage", 2}, {"nextAfter", 10}}));
    EXPECT_EQ(metadata("&page=2", 10),
              Json({{"nextPage", 3}, {"nextAfter", 20}, {"previousPage", 1}}));
    EXPECT_EQ(metadata("&page=3", 3), Json({{"previousPage", 2}}));
    EXPECT_EQ(metadata("&page=999", 0), Json({{"previousPage", 3}}));
}

TEST_F(PagingTest, PagesBeginAtOne) {
    const Ids first = idsOf(data("/timelines/all?size=4"));
    for (const char* page : {"1", "0", "-7"}) {
        EXPECT_EQ(idsOf(data(std::string("/timelines/all?size=4&page=") + page)), first) << page;
    }
    EXPECT_TRUE(data("/timelines/all?size=1000&page=9223372036854775807").at("records").empty());
}

TEST_F(PagingTest, SizesAreKeptInBounds) {
    EXPECT_EQ(data("/timelines/all").at("records").size(), 20U);
    EXPECT_EQ(data("/timelines/all?size=0").at("size"), 1);
    EXPECT_EQ(data("/timelines/all?size=-3").at("records").size(), 1U);
    EXPECT_EQ(data("/timelines/all?size=5000").at("size"), 1000);
    EXPECT_EQ(data("/timelines/all?size=5000").at("records").size(), 1000U);
}

TEST_F(PagingTest, RefusesParametersThatAreNoIntegers) {
    for (const char* query : {"size=x", "size=", "size=1.5", "page=two", "c_max=a", "l_max=-",
                              "size=99999999999999999999"}) {
        EXPECT_EQ(status(std::string("/timelines/all?") + query), 400) << query;
    }
}

TEST_F(PagingTest, AnEmptyFeedHasRecordsButNone) {
    EXPECT_EQ(data("/timelines/empty"), Json({{"title", "Nothing here yet"},
                                              {"count", 0},
                                              {"displayCount", 0},
                                              {"size", 20},
                                              {"records", Json::array()}}));
}

TEST_F(PagingTest, UnknownFeedsAreNotFound) {
    for (const char* path : {"/timelines/nothing", "/timelines/users/1", "/timelines/users/abc",
                             "/timelines/channels/99", "/timelines", "/timelines/users/1001/x"}) {
        const Reply reply = send("GET", path);
        EXPECT_EQ(reply.status, 404) << path;
        EXPECT_EQ(reply.code(), 404) << path;
        EXPECT_FALSE(reply.error().empty()) << path;
    }
}

class BackwardTest : public PagingTest, public ::testing::WithParamInterface<const char*> {
protected:
    std::string base(int size) const {
        return "/timelines/" + std::string(GetParam()) + "?size=" + std::to_string(size);
    }
};

TEST_P(BackwardTest, TheForwardAnchorUnderBackAnchorLeadsBack) {
    const std::vector<Json> pages = walk(GetParam(), 10);
    ASSERT_GT(pages.size(), 4U);
    EXPECT_FALSE(pages.back().contains("anchor"));
    for (std::size_t i = 1; i + 1 < pages.size() && i < 5; ++i) {
        const Json back = data(base(10) + "&backAnchor=" + anchorText(pages[i]));
        EXPECT_EQ(idsOf(back), idsOf(pages[i - 1])) << i;
        EXPECT_EQ(back.at("anchor"), pages[i - 1].at("anchor")) << i;
    }
}

TEST_P(BackwardTest, NothingLiesBeforeTheFirstPage) {
    const Json first = data(base(10));
    EXPECT_FALSE(first.contains("backAnchor"));
    const Json before = data(base(10) + "&backAnchor=" + anchorText(first));
    EXPECT_EQ(before.at("records"), Json::array());
    EXPECT_FALSE(before.contains("anchor"));
    EXPECT_FALSE(before.contains("backAnchor"));
}

TEST_P(BackwardTest, RefusesAnchorsItNeverGave) {
    for (const char* query : {"&anchor=nonsense", "&backAnchor=AAAA", "&anchor="}) {
        EXPECT_EQ(status(base(10) + query), 400) << query;
    }
}

INSTANTIATE_TEST_SUITE_P(AnchoredFeeds, BackwardTest,
                         ::testing::Values("popular", "latest", "channels/2"));

TEST_F(PagingTest, TextAnchorsComeWithABackAnchorOfTheirOwn) {
    const Json first = data("/timelines/popular?size=10");
    EXPECT_TRUE(first.at("anchor").is_string());
    const Json second = data("/timelines/popular?size=10&anchor=" + anchorText(first));
    EXPECT_NE(second.at("backAnchor"), second.at("anchor"));
    const std::string back = escaped(second.at("backAnchor"));
    EXPECT_EQ(idsOf(data("/timelines/popular?size=10&backAnchor=" + back)), idsOf(first));
    EXPECT_EQ(status("/timelines/popular?size=10&anchor=" + back), 400);
    // An anchor is good for its own feed only.
    EXPECT_EQ(status("/timelines/channels/2?size=10&anchor=" + anchorText(first)), 400);
}

TEST_F(PagingTest, NumberAnchorsAreNumbers) {
    const Json page = data("/timelines/latest?size=3");
    EXPECT_TRUE(page.at("anchor").is_number_integer());
    EXPECT_EQ(page.at("anchor"), idsOf(page).back());
}

TEST_F(PagingTest, SizesMayChangeOnTheWay) {
    const Ids whole = idsOf(data("/timelines/popular?size=30"));
    const Json first = data("/timelines/popular?size=10");
    const Ids rest = idsOf(data("/timelines/popular?size=20&anchor=" + anchorText(first)));
    EXPECT_EQ(rest, Ids(whole.begin() + 10, whole.end()));
}

TEST_F(PagingTest, TagFeedsAreFoundInAnyForm) {
    const Ids cats = idsOf(data("/timelines/tags/cats"));
    EXPECT_EQ(cats.size(), 20U);
    EXPECT_EQ(idsOf(data("/timelines/tags/%23cats")), cats);
    EXPECT_EQ(idsOf(data("/timelines/tags/CATS")), cats);
}

TEST_F(PagingTest, FeedsHoldWhatTheySay) {
    for (const Json& record : records("/timelines/users/1004")) {
        EXPECT_EQ(record.at("userId"), 1004);
    }
    for (const Json& record : records("/timelines/users/1001/likes?size=1000")) {
        EXPECT_EQ(record.at("liked"), true);
    }
    EXPECT_EQ(data("/timelines/channels/3").at("channel").at("channel"), "Animals");
    EXPECT_FALSE(data("/timelines/popular").contains("channel"));
}

} // namespace
} // namespace KeloServiceTest
