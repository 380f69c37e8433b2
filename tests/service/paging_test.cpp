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

std::string escaped(const std::string& text) {
    std::string escapedText;
    for (const char c : text) {
        const bool plain = std::isalnum(static_cast<unsigned char>(c)) != 0;
        constexpr char digits[] = "0123456789ABCDEF";
        const auto byte = static_cast<unsigned char>(c);
        escapedText +=
            plain ? std::string(1, c) : std::string{'%', digits[byte >> 4], digits[byte & 15]};
    }
    return escapedText;
}

std::string anchorText(const Json& page) {
    const Json& anchor = page.at("anchor");
    return escaped(anchor.is_string() ? anchor.get<std::string>() : anchor.dump());
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
    int status(const std::string& path) { return get(path)->status; }
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
    const Json first = data("/timelines/editors-picks?size=10");
    EXPECT_EQ(first.at("count"), 23);
    EXPECT_EQ(first.at("displayCount"), 23);
    EXPECT_EQ(first.at("title"), "Editors' picks");
    EXPECT_EQ(first.at("nextPage"), 2);
    EXPECT_EQ(first.at("nextAfter"), 10);
    EXPECT_FALSE(first.contains("previousPage"));
    EXPECT_FALSE(first.contains("anchor"));
    const Json second = data("/timelines/editors-picks?size=10&page=2");
    EXPECT_EQ(second.at("nextPage"), 3);
    EXPECT_EQ(second.at("previousPage"), 1);
    const Json third = data("/timelines/editors-picks?size=10&page=3");
    EXPECT_EQ(third.at("records").size(), 3U);
    EXPECT_FALSE(third.contains("nextPage"));
    EXPECT_FALSE(third.contains("nextAfter"));
    EXPECT_EQ(third.at("previousPage"), 2);
}

TEST_F(PagingTest, APageBeyondTheEndIsEmptyAndLeadsBack) {
    const Json page = data("/timelines/editors-picks?size=10&page=999");
    EXPECT_EQ(page.at("records"), Json::array());
    EXPECT_FALSE(page.contains("nextPage"));
    EXPECT_EQ(page.at("previousPage"), 3);
}

TEST_F(PagingTest, PagesBeginAtOne) {
    const Ids first = idsOf(data("/timelines/all?size=4"));
    EXPECT_EQ(idsOf(data("/timelines/all?size=4&page=1")), first);
    EXPECT_EQ(idsOf(data("/timelines/all?size=4&page=0")), first);
    EXPECT_EQ(idsOf(data("/timelines/all?size=4&page=-7")), first);
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
    const Json page = data("/timelines/empty");
    EXPECT_EQ(page.at("records"), Json::array());
    EXPECT_EQ(page.at("count"), 0);
    for (const char* key : {"nextPage", "previousPage", "anchor", "backAnchor", "nextAfter"}) {
        EXPECT_FALSE(page.contains(key)) << key;
    }
}

TEST_F(PagingTest, UnknownFeedsAreNotFound) {
    for (const char* path : {"/timelines/nothing", "/timelines/users/1", "/timelines/users/abc",
                             "/timelines/channels/99", "/timelines", "/timelines/users/1001/x"}) {
        const auto result = get(path);
        ASSERT_TRUE(result) << path;
        EXPECT_EQ(result->status, 404) << path;
        const Json envelope = Json::parse(result->body);
        EXPECT_EQ(envelope.at("code"), 404) << path;
        EXPECT_FALSE(envelope.at("error").get<std::string>().empty()) << path;
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

TEST_P(BackwardTest, TheLastPageHasNoAnchor) {
    EXPECT_FALSE(walk(GetParam(), 100).back().contains("anchor"));
}

TEST_P(BackwardTest, RefusesAnchorsItNeverGave) {
    EXPECT_EQ(status(base(10) + "&anchor=nonsense"), 400);
    EXPECT_EQ(status(base(10) + "&backAnchor=AAAA"), 400);
    EXPECT_EQ(status(base(10) + "&anchor="), 400);
}

INSTANTIATE_TEST_SUITE_P(AnchoredFeeds, BackwardTest,
                         ::testing::Values("popular", "latest", "channels/2"));

TEST_F(PagingTest, TextAnchorsComeWithABackAnchorOfTheirOwn) {
    const Json first = data("/timelines/popular?size=10");
    EXPECT_TRUE(first.at("anchor").is_string());
    const Json second = data("/timelines/popular?size=10&anchor=" + anchorText(first));
    EXPECT_NE(second.at("backAnchor"), second.at("anchor"));
    const std::string back = escaped(second.at("backAnchor").get<std::string>());
    EXPECT_EQ(idsOf(data("/timelines/popular?size=10&backAnchor=" + back)), idsOf(first));
    EXPECT_EQ(status("/timelines/popular?size=10&anchor=" + back), 400);
}

TEST_F(PagingTest, NumberAnchorsAreNumbers) {
    const Json page = data("/timelines/latest?size=3");
    EXPECT_TRUE(page.at("anchor").is_number_integer());
    EXPECT_EQ(page.at("anchor"), idsOf(page).back());
}

TEST_F(PagingTest, AnAnchorIsGoodForItsOwnFeedOnly) {
    const std::string anchor = anchorText(data("/timelines/popular?size=10"));
    EXPECT_EQ(status("/timelines/channels/2?size=10&anchor=" + anchor), 400);
}

TEST_F(PagingTest, SizesMayChangeOnTheWay) {
    const Ids whole = idsOf(data("/timelines/popular?size=30"));
    const Json first = data("/timelines/popular?size=10");
    const Ids rest = idsOf(data("/timelines/popular?size=20&anchor=" + anchorText(first)));
    EXPECT_EQ(rest, Ids(whole.begin() + 10, whole.end()));
}

TEST_F(PagingTest, ChannelFeedsCarryTheirChannel) {
    const Json channel = data("/timelines/channels/3").at("channel");
    EXPECT_EQ(channel.at("channelId"), 3);
    EXPECT_EQ(channel.at("channel"), "Animals");
    EXPECT_FALSE(data("/timelines/popular").contains("channel"));
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
    for (const Json& record : records("/timelines/channels/4")) {
        EXPECT_EQ(record.at("channelId"), 4);
    }
}

} // namespace
} // namespace KeloServiceTest
