#include "support/JsonText.hpp"

#include <KeloAPI/model/Metadata.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

namespace {

Metadata metadata(const std::string& json) {
    return Metadata(testing::JsonText(json).object());
}

} // namespace

TEST(MetadataTest, OfAnEmptyObjectHasTheDefaults) {
    const Metadata empty = metadata("{}");
    EXPECT_EQ(empty.count(), 0);
    EXPECT_EQ(empty.nextPage(), std::nullopt);
    EXPECT_EQ(empty.previousPage(), std::nullopt);
    EXPECT_EQ(empty.pageSize(), 0);
    EXPECT_EQ(empty.anchor(), std::nullopt);
    EXPECT_EQ(empty.backAnchor(), std::nullopt);
    EXPECT_EQ(empty.title(), std::nullopt);
    EXPECT_EQ(empty.nextAfter(), 0);
    EXPECT_EQ(empty.displayCount(), 0);
}

TEST(MetadataTest, ReadsEveryKey) {
    Metadata all = metadata(R"({"count":1,"nextPage":2,"previousPage":3,"size":4,"nextAfter":5,
        "title":"t","anchor":"a","backAnchor":"b","channel":{"x":1},"displayCount":6})");
    EXPECT_EQ(all.count(), 1);
    EXPECT_EQ(all.nextPage(), 2);
    EXPECT_EQ(all.previousPage(), 3);
    EXPECT_EQ(all.pageSize(), 4);
    EXPECT_EQ(all.nextAfter(), 5);
    EXPECT_EQ(all.title(), "t");
    EXPECT_EQ(all.anchor(), "a");
    EXPECT_EQ(all.backAnchor(), "b");
    EXPECT_EQ(all.displayCount(), 6);
    all.setDisplayCount(-9);
    EXPECT_EQ(all.displayCount(), -9);
}

TEST(MetadataTest, NeedsTheJSONNoLonger) {
    const Metadata kept = metadata(R"({"title":"a title of some length, not a short text"})");
    EXPECT_EQ(kept.title(), "a title of some length, not a short text");
}

TEST(MetadataTest, MistypedKeysLeaveTheDefaults) {
    for (const char* value : {"null", "\"7\"", "[]", "{}", "[7]"}) {
        std::string json = "{";
        for (const char* key :
             {"count", "nextPage", "previousPage", "size", "nextAfter", "displayCount"}) {
            json += "\"" + std::string(key) + "\":" + value + ",";
        }
        json.back() = '}';
        const Metadata wrong = metadata(json);
        EXPECT_EQ(wrong.count(), 0) << value;
        EXPECT_EQ(wrong.nextPage(), std::nullopt) << value;
        EXPECT_EQ(wrong.previousPage(), std::nullopt) << value;
        EXPECT_EQ(wrong.pageSize(), 0) << value;
        EXPECT_EQ(wrong.nextAfter(), 0) << value;
        EXPECT_EQ(wrong.displayCount(), 0) << value;
    }
    for (const char* value : {"null", "7", "true", "[]", "{}", "[\"t\"]"}) {
        const Metadata wrong =
            metadata(R"({"title":)" + std::string(value) + R"(,"backAnchor":)" + value + "}");
        EXPECT_EQ(wrong.title(), std::nullopt) << value;
        EXPECT_EQ(wrong.backAnchor(), std::nullopt) << value;
    }
}

TEST(MetadataTest, AnyNumberConvertsToAnInteger) {
    EXPECT_EQ(metadata(R"({"nextPage":2.9})").nextPage(), 2) << "a fractional page number";
    EXPECT_EQ(metadata(R"({"nextPage":-2.9})").nextPage(), -2);
    EXPECT_EQ(metadata(R"({"nextPage":1e3})").nextPage(), 1000);
    EXPECT_EQ(metadata(R"({"nextPage":true})").nextPage(), 1);
    EXPECT_EQ(metadata(R"({"nextPage":18446744073709551615})").nextPage(), INT64_MAX);
    EXPECT_EQ(metadata(R"({"count":-5})").count(), -5) << "this form does not clamp";
    EXPECT_EQ(metadata(R"({"count":-9223372036854775808})").count(), INT64_MIN);
}

TEST(MetadataTest, AnAnchorIsTextOrANumber) {
    EXPECT_EQ(metadata(R"({"anchor":12345})").anchor(), "12345");
    EXPECT_EQ(metadata(R"({"anchor":"x"})").anchor(), "x");
    EXPECT_EQ(metadata(R"({"anchor":""})").anchor(), "");
    EXPECT_EQ(metadata(R"({"anchor":1.5})").anchor(), "1.5");
    EXPECT_EQ(metadata(R"({"anchor":18446744073709551615})").anchor(), "18446744073709551615");
    EXPECT_EQ(metadata(R"({"anchor":18446744073709551616})").anchor(), "18446744073709551616");
    EXPECT_EQ(metadata(R"({"anchor":1e3})").anchor(), "1000");
    EXPECT_EQ(metadata(R"({"anchor":true})").anchor(), "1");
    for (const char* value : {"null", "[]", "{}"}) {
        EXPECT_EQ(metadata(R"({"anchor":)" + std::string(value) + "}").anchor(), std::nullopt);
    }
    EXPECT_EQ(metadata(R"({"backAnchor":12345})").backAnchor(), std::nullopt)
        << "unlike the anchor, never a number";
}

TEST(NextPageTest, IsAskedForByNumber) {
    EXPECT_EQ(metadata(R"({"nextPage":3,"previousPage":1})").nextPageParameters(20),
              (Parameters{{"page", 3}, {"size", 20}}));
}

TEST(NextPageTest, IsAskedForByAnchor) {
    EXPECT_EQ(metadata(R"({"anchor":"A","backAnchor":"B"})").nextPageParameters(20),
              (Parameters{{"anchor", "A"}, {"size", 20}}));
    EXPECT_EQ(metadata(R"({"anchor":7,"nextPage":2})").nextPageParameters(5),
              (Parameters{{"anchor", "7"}, {"page", 2}, {"size", 5}}));
}

TEST(NextPageTest, IsNothingWithoutNumberAndAnchor) {
    EXPECT_EQ(metadata("{}").nextPageParameters(20), std::nullopt);
    EXPECT_EQ(metadata(R"({"anchor":""})").nextPageParameters(20), std::nullopt);
    EXPECT_EQ(metadata(R"({"previousPage":1,"backAnchor":"B","size":9,"nextAfter":4})")
                  .nextPageParameters(20),
              std::nullopt);
}

TEST(NextPageTest, PresenceDecides) {
    EXPECT_EQ(metadata(R"({"nextPage":0})").nextPageParameters(20),
              (Parameters{{"page", 0}, {"size", 20}}))
        << "a page number 0 that is there counts";
    EXPECT_EQ(metadata(R"({"nextPage":-1,"anchor":""})").nextPageParameters(0),
              (Parameters{{"page", -1}, {"size", 0}}));
    EXPECT_EQ(metadata(R"({"nextPage":2.5})").nextPageParameters(-3),
              (Parameters{{"page", 2}, {"size", -3}}));
}

TEST(PreviousPageTest, SendsTheForwardAnchorUnderTheBackwardKey) {
    EXPECT_EQ(
        metadata(R"({"previousPage":1,"anchor":"A","backAnchor":"B"})").previousPageParameters(10),
        (Parameters{{"page", 1}, {"backAnchor", "A"}, {"size", 10}}));
    EXPECT_EQ(metadata(R"({"anchor":"A"})").previousPageParameters(10),
              (Parameters{{"backAnchor", "A"}, {"size", 10}}));
}

TEST(PreviousPageTest, NeverSendsTheStoredBackAnchor) {
    EXPECT_EQ(metadata(R"({"backAnchor":"B"})").previousPageParameters(10), std::nullopt);
    EXPECT_EQ(metadata(R"({"backAnchor":"B","anchor":"","nextPage":2})").previousPageParameters(10),
              std::nullopt);
    EXPECT_EQ(metadata(R"({"backAnchor":"B","previousPage":0})").previousPageParameters(10),
              (Parameters{{"page", 0}, {"size", 10}}));
}

} // namespace KeloAPI
