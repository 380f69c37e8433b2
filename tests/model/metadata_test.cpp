#include "support/KeyTable.hpp"

#include <KeloAPI/model/Metadata.hpp>

#include <gtest/gtest.h>

namespace KeloAPI::testing {

TEST(MetadataTest, EveryKeyWithEveryKindOfValue) {
    using M = Metadata;
    Reads numbers = integers();
    numbers["-2.9"] = "-2";
    numbers["-9223372036854775808"] = "-9223372036854775808";
    Reads anchors = identifiers();
    anchors["18446744073709551616"] = "18446744073709551616";
    anchors["1e3"] = "1000";
    checkKeys<M>([](const JsonObject& json) { return std::make_shared<M>(json); },
                 {{"count", "11", "11", &M::count, numbers, "0"},
                  {"nextPage", "12", "12", &M::nextPage, numbers, absent},
                  {"previousPage", "13", "13", &M::previousPage, numbers, absent},
                  {"size", "14", "14", &M::pageSize, numbers, "0"},
                  {"nextAfter", "15", "15", &M::nextAfter, numbers, "0"},
                  {"displayCount", "16", "16", &M::displayCount, numbers, "0"},
                  {"title", R"("t")", "t", &M::title, texts(), absent},
                  {"anchor", R"("a")", "a", &M::anchor, anchors, absent},
                  // Unlike the anchor, never a number.
                  {"backAnchor", R"("b")", "b", &M::backAnchor, texts(), absent}});
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

} // namespace KeloAPI::testing
