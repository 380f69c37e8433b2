#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLPagingMetadata.hpp>
#include <KeloAPI/model/Metadata.hpp>

#include <gtest/gtest.h>

namespace KeloAPI::testing {

namespace {

std::shared_ptr<KLPagingMetadata> pagingMetadata(const std::string& json) {
    return std::make_shared<KLPagingMetadata>(JsonText(json).object());
}

std::string channelName(const KLPagingMetadata& metadata) {
    return metadata.channel() ? metadata.channel()->name : absent;
}

/// The keys that both kinds of metadata have; page numbers that are missing show this.
template <class M>
KeyRules<M> pageRules(const std::string& noPage) {
    Reads numbers = integers();
    numbers["-2.9"] = "-2";
    numbers["-9223372036854775808"] = "-9223372036854775808";
    Reads anchors = identifiers();
    anchors["18446744073709551616"] = "18446744073709551616";
    anchors["1e3"] = "1000";
    return {
        {"count", "11", "11", &M::count, numbers, "0"},
        {"nextPage", "12", "12", &M::nextPage, numbers, noPage},
        {"previousPage", "13", "13", &M::previousPage, numbers, noPage},
        {"size", "14", "14", &M::pageSize, numbers, "0"},
        {"nextAfter", "15", "15", &M::nextAfter, numbers, "0"},
        {"displayCount", "16", "16", &M::displayCount, numbers, "0"},
        {"title", R"("t")", "t", &M::title, texts(), absent},
        {"anchor", R"("a")", "a", &M::anchor, anchors, absent},
        // Unlike the anchor, never a number.
        {"backAnchor", R"("b")", "b", &M::backAnchor, texts(), absent},
    };
}

KeyRules<KLPagingMetadata> pagingRules() {
    Reads channels = {{R"({"channelId":7,"channel":"a","timeline":{"records":[]}})", "a"}};
    for (const char* none :
         {R"({"channelId":7})", R"({"channel":"a"})", R"({"channelId":7,"channel":8})",
          R"([{"channelId":7,"channel":"a"}])"}) {
        channels[none] = absent;
    }
    auto rules = pageRules<KLPagingMetadata>("0");
    for (auto& [value, shown] : rules.front().reads) {
        shown = value.starts_with('-') ? "0" : shown; // of a count
    }
    rules.push_back(
        {"channel", R"({"channelId":1,"channel":"c"})", "c", channelName, channels, absent});
    return rules;
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

TEST(MetadataTest, IsMadeOfValuesWithoutJSON) {
    const Metadata metadata({.count = 10, .nextPage = 2, .title = "Loops"});
    EXPECT_EQ(metadata.count(), 10);
    EXPECT_EQ(metadata.nextPage(), 2);
    EXPECT_EQ(metadata.previousPage(), std::nullopt);
    EXPECT_EQ(metadata.title(), "Loops");
    EXPECT_EQ(metadata.nextPageParameters(5), (Parameters{{"page", 2}, {"size", 5}}));
}

TEST(MetadataTest, EveryKeyWithEveryKindOfValue) {
    checkKeys<Metadata>([](const JsonObject& json) { return std::make_shared<Metadata>(json); },
                        pageRules<Metadata>(absent));
}

TEST(MetadataTest, TheDisplayCountMayBeChanged) {
    Metadata metadata(JsonText("{}").object());
    metadata.setDisplayCount(-9);
    EXPECT_EQ(metadata.displayCount(), -9);
}

TEST(MetadataTest, NumbersAndAnchorAskForOtherPages) {
    using Asked = std::optional<Parameters>;
    struct {
        const char* json;
        std::int64_t size;
        Asked next;
        Asked previous;
    } const cases[] = {
        {"{}", 20, {}, {}},
        {R"({"nextPage":3,"previousPage":1})", 20, Parameters{{"page", 3}, {"size", 20}},
         Parameters{{"page", 1}, {"size", 20}}},
        // The forward anchor goes both ways, backwards under another key; the stored back anchor
        // goes nowhere.
        {R"({"anchor":"A","backAnchor":"B"})", 20, Parameters{{"anchor", "A"}, {"size", 20}},
         Parameters{{"backAnchor", "A"}, {"size", 20}}},
        {R"({"anchor":7,"nextPage":2})", 5, Parameters{{"anchor", "7"}, {"page", 2}, {"size", 5}},
         Parameters{{"backAnchor", "7"}, {"size", 5}}},
        {R"({"previousPage":1,"anchor":"A","backAnchor":"B"})", 10,
         Parameters{{"anchor", "A"}, {"size", 10}},
         Parameters{{"page", 1}, {"backAnchor", "A"}, {"size", 10}}},
        {R"({"anchor":"","backAnchor":"B"})", 10, {}, {}},
        {R"({"previousPage":1,"backAnchor":"B","size":9,"nextAfter":4})",
         20,
         {},
         Parameters{{"page", 1}, {"size", 20}}},
        {R"({"backAnchor":"B","anchor":"","nextPage":2})",
         10,
         Parameters{{"page", 2}, {"size", 10}},
         {}},
        // That a number is there counts, not which it is.
        {R"({"nextPage":0,"previousPage":0})", 20, Parameters{{"page", 0}, {"size", 20}},
         Parameters{{"page", 0}, {"size", 20}}},
        {R"({"nextPage":-1,"anchor":""})", 0, Parameters{{"page", -1}, {"size", 0}}, {}},
        {R"({"nextPage":2.5})", -3, Parameters{{"page", 2}, {"size", -3}}, {}},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.json);
        const Metadata metadata(JsonText(one.json).object());
        EXPECT_EQ(metadata.nextPageParameters(one.size), one.next);
        EXPECT_EQ(metadata.previousPageParameters(one.size), one.previous);
    }
}

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
