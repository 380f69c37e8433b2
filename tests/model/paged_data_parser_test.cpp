#include "support/JsonText.hpp"
#include "support/Named.hpp"

#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI::testing {

namespace {

std::shared_ptr<KLPagedData> parsedPage(const std::string& json) {
    return KLPagedDataParser<NamedParser>(std::make_shared<NamedParser>())
        .parse(JsonText(json).object());
}

std::vector<std::string> names(const KLPagedData& list) {
    std::vector<std::string> names;
    for (const auto& element : list) {
        names.push_back(dynamic_cast<Named&>(*element).name);
    }
    return names;
}

} // namespace

// A parser that is taken by value would be sliced to its base.
static_assert(!std::is_constructible_v<KLPagedDataParser<NamedParser>, NamedParser>);
static_assert(
    std::is_constructible_v<KLPagedDataParser<NamedParser>, std::shared_ptr<NamedParser>>);

TEST(PagedDataParserDeathTest, WithoutAnItemParserStopsTheProcess) {
    EXPECT_DEATH(KLPagedDataParser<NamedParser>(nullptr),
                 "^KeloAPI: contract violated: a parser of paged data needs an item parser\n$");
}

TEST(PagedDataParserTest, ReadsRecordsAndMetadataAndLeavesOutRecordsThatFail) {
    const auto list = parsedPage(R"({"records":[{"name":"a"},{},{"name":5},{"throw":4},
        {"name":"e"}],"count":50,"nextPage":2,"title":"t"})");
    EXPECT_EQ(names(*list), (std::vector<std::string>{"a", "e"}));
    EXPECT_EQ(list->metadata()->count(), 50) << "what the service says, not what was parsed";
    EXPECT_TRUE(list->hasNextPage());
    EXPECT_EQ(list->metadata()->title(), "t");
}

TEST(PagedDataParserTest, WithoutAListOfObjectsTheListIsEmpty) {
    for (const char* records :
         {"null", "5", "\"x\"", "{}", "{\"name\":\"a\"}", "[1]", "[{\"name\":\"a\"},1]",
          "[{\"name\":\"a\"},null]", "[[{\"name\":\"a\"}]]", "[]"}) {
        const auto list = parsedPage(R"({"nextPage":3,"records":)" + std::string(records) + "}");
        EXPECT_EQ(list->count(), 0) << records;
        EXPECT_EQ(list->metadata()->nextPage(), 3) << records;
    }
    EXPECT_EQ(parsedPage(R"({"nextPage":3})")->count(), 0);
    EXPECT_EQ(parsedPage("{}")->metadata()->count(), 0);
}

TEST(PagedDataParserTest, AParserOfABaseClassIsNotSliced) {
    const KLPagedDataParser<NamedParser> parser(std::make_shared<LouderParser>());
    EXPECT_EQ(names(*parser.parse(JsonText(R"({"records":[{"name":"a"}]})").object())),
              std::vector<std::string>{"a!"});
}

TEST(PagedDataParserTest, TakesAParserOfAnyObject) {
    const KLPagedDataParser<AnyObjectJsonParser> parser(
        std::make_shared<AnyObjectParserAdaptor>(std::make_shared<NamedParser>()));
    EXPECT_EQ(names(*parser.parse(JsonText(R"({"records":[{"name":"a"},{}]})").object())),
              std::vector<std::string>{"a"});
}

TEST(PagedDataParserTest, PagesNestInPages) {
    using Inner = KLPagedDataParser<NamedParser>;
    const KLPagedDataParser<Inner> parser(std::make_shared<Inner>(std::make_shared<NamedParser>()));
    const auto list = parser.parse(
        JsonText(R"({"records":[{"records":[{"name":"a"}]},{"nextPage":1}]})").object());
    ASSERT_EQ(list->count(), 2);
    EXPECT_EQ(names(dynamic_cast<KLPagedData&>(*(*list)[0])), std::vector<std::string>{"a"});
    EXPECT_TRUE(dynamic_cast<KLPagedData&>(*(*list)[1]).hasNextPage());
}

} // namespace KeloAPI::testing
