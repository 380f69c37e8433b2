#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLPagingMetadata.hpp>

#include <gtest/gtest.h>

namespace KeloAPI::testing {

namespace {

std::shared_ptr<KLPagingMetadata> pagingMetadata(const std::string& json) {
    return std::make_shared<KLPagingMetadata>(JsonText(json).object());
}

std::string channelName(const KLPagingMetadata& metadata) {
    return metadata.channel() ? metadata.channel()->name : absent;
}

KeyRules<KLPagingMetadata> pagingRules() {
    using M = KLPagingMetadata;
    Reads counts = integers();
    counts["-3"] = "0";
    Reads channels = {{R"({"channelId":7,"channel":"a","timeline":{"records":[]}})", "a"}};
    for (const char* none :
         {R"({"channelId":7})", R"({"channel":"a"})", R"({"channelId":7,"channel":8})",
          R"([{"channelId":7,"channel":"a"}])"}) {
        channels[none] = absent;
    }
    return {
        {"count", "11", "11", &M::count, counts, "0"},
        {"nextPage", "12", "12", &M::nextPage, integers(), "0"},
        {"previousPage", "13", "13", &M::previousPage, integers(), "0"},
        {"size", "14", "14", &M::pageSize, integers(), "0"},
        {"nextAfter", "15", "15", &M::nextAfter, integers(), "0"},
        {"displayCount", "16", "16", &M::displayCount, integers(), "0"},
        {"title", R"("t")", "t", &M::title, texts(), absent},
        {"anchor", R"("a")", "a", &M::anchor, identifiers(), absent},
        {"backAnchor", R"("b")", "b", &M::backAnchor, texts(), absent},
        {"channel", R"({"channelId":1,"channel":"c"})", "c", channelName, channels, absent},
    };
}

/// Every value of the metadata, in the order of the keys above.
std::vector<std::string> fieldsOf(const KLPagingMetadata& metadata) {
    std::vector<std::string> fields;
    for (const auto& rule : pagingRules()) {
        fields.push_back(rule.property(metadata));
    }
    return fields;
}

using Fields = std::vector<std::string>;

const char* const pageM = R"({"count":1,"nextPage":2,"previousPage":3,"size":4,"nextAfter":5,
    "title":"mt","anchor":"ma","backAnchor":"mb","channel":{"channelId":7,"channel":"mc"},
    "displayCount":6})";
const char* const pageP = R"({"count":11,"nextPage":12,"previousPage":13,"size":14,"nextAfter":15,
    "title":"pt","anchor":"pa","backAnchor":"pb","channel":{"channelId":17,"channel":"pc"},
    "displayCount":16})";

} // namespace

TEST(PagingMetadataTest, EveryKeyWithEveryKindOfValue) {
    checkKeys<KLPagingMetadata>(
        [](const JsonObject& json) { return std::make_shared<KLPagingMetadata>(json); },
        pagingRules());
}

TEST(PagingMetadataTest, AChannelComesWithoutItsTimeline) {
    const auto with = pagingMetadata(
        R"({"channel":{"channelId":7,"channel":"a","timeline":{"records":[]},"following":true}})");
    ASSERT_NE(with->channel(), nullptr);
    EXPECT_TRUE(with->channel()->following);
    EXPECT_EQ(with->channel()->timelineData, nullptr);
}

TEST(PagingMetadataTest, TheCountIsNeverNegative) {
    const auto some = pagingMetadata(R"({"count":5})");
    for (const std::int64_t count : {std::int64_t{-5}, INT64_MIN, std::int64_t{7}, INT64_MAX}) {
        some->setCount(count);
        EXPECT_EQ(some->count(), count < 0 ? 0 : count);
    }
    EXPECT_EQ(KLPagingMetadata::ofRecords(3)->count(), 3);
}

TEST(PagingMetadataTest, ACopyHasTheFieldsAndItsOwnCounts) {
    const auto original = pagingMetadata(pageM);
    original->setCount(41);
    original->setDisplayCount(42);
    const KLPagingMetadata copy(*original);
    const Fields fields = {"41", "2", "3", "4", "5", "42", "mt", "ma", "mb", "mc"};
    EXPECT_EQ(fieldsOf(copy), fields);
    EXPECT_EQ(copy.channel(), original->channel()) << "the same object";
    original->setCount(0);
    original->setDisplayCount(0);
    EXPECT_EQ(fieldsOf(copy), fields);
}

TEST(PagingMetadataTest, JoiningTakesTheWayBackFromThePrependedPage) {
    const KLPagingMetadata joined(40, *pagingMetadata(pageM), *pagingMetadata(pageP));
    EXPECT_EQ(fieldsOf(joined), (Fields{"40", "2", "13", "4", "15", "6", "mt", "ma", "pb", "mc"}));
}

TEST(PagingMetadataTest, JoiningStoresTheCountAsGiven) {
    KLPagingMetadata joined(-7, *pagingMetadata(pageM), *pagingMetadata(pageP));
    EXPECT_EQ(joined.count(), -7);
    joined.setCount(joined.count());
    EXPECT_EQ(joined.count(), 0);
}

} // namespace KeloAPI::testing
