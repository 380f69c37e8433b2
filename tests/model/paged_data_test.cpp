#include "support/JsonText.hpp"
#include "support/Named.hpp"

#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>

namespace KeloAPI::testing {

namespace {

KLPagedData::Elements elements(int count) {
    KLPagedData::Elements made;
    for (int i = 0; i < count; ++i) {
        made.push_back(std::make_shared<Named>("x"));
    }
    return made;
}

std::shared_ptr<KLPagingMetadata> elementsMetadata(const std::string& json) {
    return std::make_shared<KLPagingMetadata>(JsonText(json).object());
}

KLPagedData::Elements joined(KLPagedData::Elements a, const KLPagedData::Elements& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

} // namespace

static_assert(!std::is_copy_constructible_v<KLPagedData>);

TEST(PagedDataTest, OfElementsCountsThemAndKnowsNoMore) {
    for (const int count : {0, 3}) {
        const auto given = elements(count);
        const KLPagedData list(given);
        EXPECT_EQ(list.count(), count);
        EXPECT_EQ(list.startIndex(), 0);
        EXPECT_EQ(list.endIndex(), count);
        EXPECT_EQ(list.metadata()->count(), count);
        EXPECT_FALSE(list.hasNextPage());
        EXPECT_EQ(list.metadata()->pageSize(), 0);
        EXPECT_EQ(list.metadata()->anchor(), std::nullopt);
        EXPECT_EQ(KLPagedData::Elements(list.begin(), list.end()), given);
    }
    EXPECT_EQ(KLPagedData().metadata()->count(), 0);
    EXPECT_EQ(KLPagedData().count(), 0);
}

TEST(PagedDataTest, StoresElementsAndMetadataAsGiven) {
    const auto given = elementsMetadata(R"({"count":100,"nextPage":2})");
    KLPagedData list(elements(2), given);
    EXPECT_EQ(list.metadata(), given);
    EXPECT_EQ(list.metadata()->count(), 100);
    const auto other = elementsMetadata("{}");
    list.setMetadata(other);
    EXPECT_EQ(list.metadata(), other);
    list.setData(elements(5));
    EXPECT_EQ(list.count(), 5);
    EXPECT_EQ(list.metadata()->count(), 0) << "assigning the elements does not count them";
}

TEST(PagedDataTest, HasANextPageWhereItsNumberIsAboveZero) {
    const std::pair<const char*, bool> table[] = {
        {"{}", false},
        {R"({"nextPage":0})", false},
        {R"({"nextPage":-1})", false},
        {R"({"nextPage":1})", true},
        {R"({"nextPage":2})", true},
        {R"({"nextPage":0.9})", false},
        {R"({"nextPage":"2"})", false},
        {R"({"anchor":"A"})", false},
    };
    for (const auto& [json, expected] : table) {
        EXPECT_EQ(KLPagedData({}, elementsMetadata(json)).hasNextPage(), expected) << json;
    }
}

TEST(PagedDataTest, ReadsReplacesInsertsAndRemovesAtEveryPlace) {
    const auto parts = elements(5);
    KLPagedData list({parts[1]});
    const auto expectParts = [&](const KLPagedData::Elements& expected) {
        EXPECT_EQ(list.data(), expected);
        EXPECT_EQ(list.metadata()->count(), list.count());
    };
    list.insert(parts[0], 0);
    list.insertObject(parts[3], 2);
    list.insert(parts[2], 2);
    list.append(parts[4]);
    list.addObject(list[0]); // an element of its own
    expectParts({parts[0], parts[1], parts[2], parts[3], parts[4], parts[0]});
    EXPECT_EQ(list.objectAtIndex(2), parts[2]);
    list[1] = parts[4];
    EXPECT_EQ(list.objectAtIndex(1), parts[4]);
    EXPECT_EQ(list.removeAtIndex(2), parts[2]);
    EXPECT_EQ(list.removeObjectAtIndex(4), parts[0]);
    expectParts({parts[0], parts[4], parts[3], parts[4]});
}

TEST(PagedDataTest, ACountOfZeroStaysThereWhenAnElementGoes) {
    KLPagedData list(elements(2), elementsMetadata(R"({"count":0})"));
    list.removeAtIndex(0);
    EXPECT_EQ(list.count(), 1);
    EXPECT_EQ(list.metadata()->count(), 0);
}

TEST(PagedDataTest, RemovesTheFirstElementThatIsTheSameObject) {
    const auto a = std::make_shared<Named>("a");
    const auto b = std::make_shared<Named>("b");
    KLPagedData list({a, b, a});
    EXPECT_TRUE(list.remove(a));
    EXPECT_EQ(list.data(), (KLPagedData::Elements{b, a}));
    EXPECT_EQ(list.metadata()->count(), 2);
    EXPECT_TRUE(list.removeObject(a));
    EXPECT_FALSE(list.remove(a));
    EXPECT_FALSE(list.remove(nullptr));
    EXPECT_FALSE(list.remove(std::make_shared<Named>("b"))) << "only equal";
    EXPECT_EQ(list.data(), KLPagedData::Elements{b});
    EXPECT_EQ(list.metadata()->count(), 1);
}

TEST(PagedDataTest, AppendingAPageTakesItsMetadataOver) {
    const auto fifty = elements(50);
    const auto ten = elements(10);
    KLPagedData list(fifty);
    const KLPagedData page(ten, elementsMetadata(R"({"count":10,"nextPage":7})"));
    list.appendPagedData(page);
    EXPECT_EQ(list.data(), joined(fifty, ten));
    EXPECT_EQ(list.metadata(), page.metadata()) << "the same object";
    EXPECT_EQ(list.metadata()->count(), 10);
    EXPECT_TRUE(list.hasNextPage());
    EXPECT_EQ(page.count(), 10) << "the page stays as it was";
}

TEST(PagedDataTest, ListsThatShareTheirMetadataSeeEachOthersCounts) {
    KLPagedData list(elements(2));
    KLPagedData page(elements(3), elementsMetadata(R"({"count":3})"));
    list.appendPagedData(page);
    list.append(std::make_shared<Named>("x"));
    EXPECT_EQ(page.metadata()->count(), 4);
    page.removeAtIndex(0);
    EXPECT_EQ(list.metadata()->count(), 3);
    EXPECT_EQ(list.count(), 6);
    EXPECT_EQ(page.count(), 2);
}

TEST(PagedDataTest, AppendedOrPrependedToItselfItDoubles) {
    const auto three = elements(3);
    KLPagedData list(three, elementsMetadata(R"({"count":9,"nextPage":2})"));
    const auto before = list.metadata();
    list.appendPagedData(list);
    EXPECT_EQ(list.data(), joined(three, three));
    EXPECT_EQ(list.metadata(), before);
    EXPECT_EQ(list.metadata()->count(), 9);
    list.prependPagedData(list);
    EXPECT_EQ(list.data(), joined(joined(three, three), joined(three, three)));
    EXPECT_EQ(list.metadata()->count(), 12);
}

TEST(PagedDataTest, AddingNothingDoesNothing) {
    const auto two = elements(2);
    KLPagedData list(two);
    const auto before = list.metadata();
    list.addPagedData(nullptr);
    EXPECT_EQ(list.data(), two);
    EXPECT_EQ(list.metadata(), before);
    const auto page = std::make_shared<KLPagedData>(elements(1));
    list.addPagedData(page);
    EXPECT_EQ(list.count(), 3);
    EXPECT_EQ(list.metadata(), page->metadata());
}

TEST(PagedDataTest, PrependingAPageMergesAndRecounts) {
    const auto twenty = elements(20);
    const auto five = elements(5);
    KLPagedData list(twenty, elementsMetadata(R"({"count":999,"nextPage":4,"previousPage":2})"));
    const KLPagedData page(five, elementsMetadata(R"({"count":5,"nextPage":9,"previousPage":1})"));
    const auto before = list.metadata();
    list.prependPagedData(page);
    EXPECT_EQ(list.data(), joined(five, twenty));
    EXPECT_EQ(list.metadata()->count(), 25);
    EXPECT_EQ(list.metadata()->nextPage(), 4) << "its own";
    EXPECT_EQ(list.metadata()->previousPage(), 1) << "the page's";
    EXPECT_NE(list.metadata(), page.metadata());
    EXPECT_EQ(before->count(), 999) << "the old metadata is replaced, not changed";
    EXPECT_EQ(page.count(), 5);
}

TEST(PagedDataTest, DoesNotMoveToNewRoomWithEveryPage) {
    const KLPagedData page(elements(20));
    for (const auto grow : {&KLPagedData::appendPagedData, &KLPagedData::prependPagedData}) {
        KLPagedData list;
        int moves = 0;
        for (int i = 0; i < 1000; ++i) {
            const auto* const before = list.data().data();
            (list.*grow)(page);
            moves += list.data().data() != before ? 1 : 0;
        }
        EXPECT_EQ(list.count(), 20'000);
        EXPECT_LE(moves, 20);
    }
}

TEST(PagedDataTest, ACopySharesTheElementsOnly) {
    const auto two = elements(2);
    KLPagedData list(two, elementsMetadata(R"({"count":7,"nextPage":3,"anchor":"A"})"));
    const auto copy = list.copy();
    EXPECT_EQ(copy->data(), two);
    EXPECT_NE(copy->metadata(), list.metadata());
    EXPECT_EQ(copy->metadata()->count(), 7);
    EXPECT_EQ(copy->metadata()->nextPage(), 3);
    EXPECT_EQ(copy->metadata()->anchor(), "A");
    copy->append(std::make_shared<Named>("new"));
    EXPECT_EQ(list.data(), two);
    EXPECT_EQ(list.metadata()->count(), 7);
    EXPECT_EQ(copy->metadata()->count(), 8);
    EXPECT_EQ((*copy)[0], list[0]);
}

TEST(PagedDataDeathTest, AnIndexOutsideStopsTheProcess) {
    KLPagedData list(elements(2));
    const KLPagedData& fixed = list;
    const auto object = std::make_shared<Named>("x");
    constexpr const char* inserted =
        "KeloAPI: contract violated: index of an insertion outside the paged data\n";
    constexpr const char* noElement = "KeloAPI: contract violated: index outside the paged data\n";
    EXPECT_DEATH(list.insert(object, 3), inserted);
    EXPECT_DEATH(list.insertObject(object, -1), inserted);
    EXPECT_DEATH(list.removeAtIndex(2), noElement);
    EXPECT_DEATH(list.removeObjectAtIndex(-1), noElement);
    EXPECT_DEATH(KLPagedData().removeAtIndex(0), noElement);
    EXPECT_DEATH(static_cast<void>(list[2]), noElement);
    EXPECT_DEATH(static_cast<void>(fixed[-1]), noElement);
    EXPECT_DEATH(static_cast<void>(fixed.objectAtIndex(INT64_MIN)), noElement);
    EXPECT_DEATH(list[INT64_MAX] = object, noElement);
}

TEST(PagedDataDeathTest, ACountThatOverflowsStopsTheProcess) {
    KLPagedData list({}, elementsMetadata(R"({"count":9223372036854775807})"));
    constexpr const char* line = "^KeloAPI: contract violated: count of paged data overflows\n$";
    EXPECT_DEATH(list.append(std::make_shared<Named>("x")), line);
    const auto other = KLPagingMetadata::ofRecords(1);
    KLPagedData low(elements(1), std::make_shared<KLPagingMetadata>(INT64_MIN, *other, *other));
    EXPECT_EQ(low.metadata()->count(), INT64_MIN);
    EXPECT_DEATH(low.removeAtIndex(0), line);
}

TEST(PagedDataDeathTest, MissingMetadataStopsTheProcess) {
    constexpr const char* line = "KeloAPI: contract violated: paged data needs metadata\n";
    EXPECT_DEATH(KLPagedData({}, nullptr), line);
    KLPagedData list;
    EXPECT_DEATH(list.setMetadata(nullptr), line);
}

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

TEST(PagedDataTest, GivesItsElementsTypedAndTakesThemInAnotherOrder) {
    const auto user = std::make_shared<KLWatchUser>();
    const auto one = std::make_shared<KLWatchPost>();
    const auto two = std::make_shared<KLWatchPost>();
    one->postId = "1";
    two->postId = "2";
    KLPagedData list({one, user, two});
    EXPECT_THAT(list.as<KLWatchPost>(), ::testing::ElementsAre(one, two));
    EXPECT_THAT(list.as<Object>(), ::testing::SizeIs(3));
    std::reverse(list.begin(), list.end());
    EXPECT_THAT(list.as<KLWatchPost>(), ::testing::ElementsAre(two, one));
    EXPECT_EQ(list.metadata()->count(), 3);
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
