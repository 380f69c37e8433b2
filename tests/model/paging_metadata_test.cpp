#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLPagingMetadata.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

namespace {

std::shared_ptr<KLPagingMetadata> pagingMetadata(const std::string& json) {
    return std::make_shared<KLPagingMetadata>(testing::JsonText(json).object());
}

const char* const pageM = R"({"count":1,"nextPage":2,"previousPage":3,"size":4,"nextAfter":5,
    "title":"mt","anchor":"ma","backAnchor":"mb","channel":{"channelId":7,"channel":"mc"},
    "displayCount":6})";
const char* const pageP = R"({"count":11,"nextPage":12,"previousPage":13,"size":14,"nextAfter":15,
    "title":"pt","anchor":"pa","backAnchor":"pb","channel":{"channelId":17,"channel":"pc"},
    "displayCount":16})";

} // namespace

TEST(PagingMetadataTest, OfAnEmptyObjectHasTheDefaults) {
    const auto empty = pagingMetadata("{}");
    EXPECT_EQ(empty->count(), 0);
    EXPECT_EQ(empty->nextPage(), 0);
    EXPECT_EQ(empty->previousPage(), 0);
    EXPECT_EQ(empty->pageSize(), 0);
    EXPECT_EQ(empty->anchor(), std::nullopt);
    EXPECT_EQ(empty->backAnchor(), std::nullopt);
    EXPECT_EQ(empty->title(), std::nullopt);
    EXPECT_EQ(empty->nextAfter(), 0);
    EXPECT_EQ(empty->channel(), nullptr);
    EXPECT_EQ(empty->displayCount(), 0);
}

TEST(PagingMetadataTest, ReadsEveryKey) {
    const auto all = pagingMetadata(pageM);
    EXPECT_EQ(all->count(), 1);
    EXPECT_EQ(all->nextPage(), 2);
    EXPECT_EQ(all->previousPage(), 3);
    EXPECT_EQ(all->pageSize(), 4);
    EXPECT_EQ(all->nextAfter(), 5);
    EXPECT_EQ(all->title(), "mt");
    EXPECT_EQ(all->anchor(), "ma");
    EXPECT_EQ(all->backAnchor(), "mb");
    ASSERT_NE(all->channel(), nullptr);
    EXPECT_EQ(all->channel()->channelId, "7");
    EXPECT_EQ(all->channel()->name, "mc");
    EXPECT_EQ(all->displayCount(), 6);
}

TEST(PagingMetadataTest, EveryKeyWithEveryKindOfValue) {
    const auto showing = [](auto member) { return testing::showing<KLPagingMetadata>(member); };
    testing::Reads counts = testing::integers();
    counts["-3"] = "0";
    using testing::absent;
    using testing::integers;
    const testing::KeyTable<KLPagingMetadata>::Rules rules = {
        {"count", "11", "11", showing(&KLPagingMetadata::count), counts, "0"},
        {"nextPage", "12", "12", showing(&KLPagingMetadata::nextPage), integers(), "0"},
        {"previousPage", "13", "13", showing(&KLPagingMetadata::previousPage), integers(), "0"},
        {"size", "14", "14", showing(&KLPagingMetadata::pageSize), integers(), "0"},
        {"nextAfter", "15", "15", showing(&KLPagingMetadata::nextAfter), integers(), "0"},
        {"displayCount", "16", "16", showing(&KLPagingMetadata::displayCount), integers(), "0"},
        {"title", R"("t")", "t", showing(&KLPagingMetadata::title), testing::texts(), absent},
        {"anchor", R"("a")", "a", showing(&KLPagingMetadata::anchor), testing::identifiers(),
         absent},
        {"backAnchor", R"("b")", "b", showing(&KLPagingMetadata::backAnchor), testing::texts(),
         absent},
        {"channel",
         R"({"channelId":1,"channel":"c"})",
         "(present)",
         showing(&KLPagingMetadata::channel),
         {},
         absent},
    };
    testing::KeyTable<KLPagingMetadata>(
        [](const JsonObject& json) { return std::make_shared<KLPagingMetadata>(json); }, rules)
        .check();
}

TEST(PagingMetadataTest, MistypedKeysLeaveTheDefaults) {
    const auto wrong = pagingMetadata(R"({"count":"1","nextPage":null,"previousPage":[],"size":{},
        "nextAfter":"5","title":7,"anchor":null,"backAnchor":12345,"channel":3,
        "displayCount":"6"})");
    EXPECT_EQ(wrong->count(), 0);
    EXPECT_EQ(wrong->nextPage(), 0);
    EXPECT_EQ(wrong->previousPage(), 0);
    EXPECT_EQ(wrong->pageSize(), 0);
    EXPECT_EQ(wrong->nextAfter(), 0);
    EXPECT_EQ(wrong->title(), std::nullopt);
    EXPECT_EQ(wrong->anchor(), std::nullopt);
    EXPECT_EQ(wrong->backAnchor(), std::nullopt);
    EXPECT_EQ(wrong->channel(), nullptr);
    EXPECT_EQ(wrong->displayCount(), 0);
    EXPECT_EQ(pagingMetadata(R"({"anchor":12345})")->anchor(), "12345");
    EXPECT_EQ(pagingMetadata(R"({"nextPage":3.7})")->nextPage(), 3);
}

TEST(PagingMetadataTest, AChannelThatCannotBeReadIsNone) {
    for (const char* channel :
         {"null", "7", "\"comedy\"", "[]", "true", "{}", R"({"channelId":7})", R"({"channel":"a"})",
          R"({"channelId":7,"channel":8})", R"([{"channelId":7,"channel":"a"}])"}) {
        const auto none = pagingMetadata(R"({"count":3,"channel":)" + std::string(channel) +
                                         R"(,"displayCount":4})");
        EXPECT_EQ(none->channel(), nullptr) << channel;
        EXPECT_EQ(none->count(), 3) << channel;
        EXPECT_EQ(none->displayCount(), 4) << channel;
    }
}

TEST(PagingMetadataTest, AChannelComesWithoutItsTimeline) {
    const auto with = pagingMetadata(
        R"({"channel":{"channelId":7,"channel":"a","timeline":{"records":[]},"following":true}})");
    ASSERT_NE(with->channel(), nullptr);
    EXPECT_TRUE(with->channel()->following);
    EXPECT_EQ(with->channel()->timelineData, nullptr);
}

TEST(PagingMetadataTest, TheCountIsNeverNegative) {
    EXPECT_EQ(pagingMetadata(R"({"count":-5})")->count(), 0);
    const auto some = pagingMetadata(R"({"count":5})");
    some->setCount(-5);
    EXPECT_EQ(some->count(), 0);
    some->setCount(INT64_MIN);
    EXPECT_EQ(some->count(), 0);
    some->setCount(7);
    EXPECT_EQ(some->count(), 7);
    some->setCount(INT64_MAX);
    EXPECT_EQ(some->count(), INT64_MAX);
    EXPECT_EQ(KLPagingMetadata::ofRecords(3)->count(), 3);
}

TEST(PagingMetadataTest, TheOtherNumbersMayBeNegative) {
    const auto negative = pagingMetadata(
        R"({"nextPage":-1,"previousPage":-2,"size":-3,"nextAfter":-4,"displayCount":-5})");
    EXPECT_EQ(negative->nextPage(), -1);
    EXPECT_EQ(negative->previousPage(), -2);
    EXPECT_EQ(negative->pageSize(), -3);
    EXPECT_EQ(negative->nextAfter(), -4);
    EXPECT_EQ(negative->displayCount(), -5);
}

TEST(PagingMetadataTest, ACopyHasTheFieldsAndItsOwnCounts) {
    const auto original = pagingMetadata(pageM);
    original->setCount(41);
    original->setDisplayCount(42);
    const KLPagingMetadata copy(*original);
    EXPECT_EQ(copy.count(), 41);
    EXPECT_EQ(copy.nextPage(), 2);
    EXPECT_EQ(copy.previousPage(), 3);
    EXPECT_EQ(copy.pageSize(), 4);
    EXPECT_EQ(copy.nextAfter(), 5);
    EXPECT_EQ(copy.title(), "mt");
    EXPECT_EQ(copy.anchor(), "ma");
    EXPECT_EQ(copy.backAnchor(), "mb");
    EXPECT_EQ(copy.channel(), original->channel()) << "the same object";
    EXPECT_EQ(copy.displayCount(), 42);
    original->setCount(0);
    original->setDisplayCount(0);
    EXPECT_EQ(copy.count(), 41);
    EXPECT_EQ(copy.displayCount(), 42);
}

TEST(PagingMetadataTest, JoiningTakesTheWayBackFromThePrependedPage) {
    const KLPagingMetadata joined(40, *pagingMetadata(pageM), *pagingMetadata(pageP));
    EXPECT_EQ(joined.count(), 40);
    EXPECT_EQ(joined.nextPage(), 2);
    EXPECT_EQ(joined.pageSize(), 4);
    EXPECT_EQ(joined.anchor(), "ma");
    EXPECT_EQ(joined.title(), "mt");
    EXPECT_EQ(joined.channel()->name, "mc");
    EXPECT_EQ(joined.displayCount(), 6);
    EXPECT_EQ(joined.previousPage(), 13);
    EXPECT_EQ(joined.backAnchor(), "pb");
    EXPECT_EQ(joined.nextAfter(), 15) << "from the prepended page, too";
}

TEST(PagingMetadataTest, JoiningStoresTheCountAsGiven) {
    KLPagingMetadata joined(-7, *pagingMetadata(pageM), *pagingMetadata(pageP));
    EXPECT_EQ(joined.count(), -7);
    joined.setCount(joined.count());
    EXPECT_EQ(joined.count(), 0);
}

} // namespace KeloAPI
