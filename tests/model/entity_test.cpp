#include "support/KeyTable.hpp"
#include "support/Words.hpp"

#include <KeloAPI/model/KLByline.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLTag.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>

namespace KeloAPI::testing {

static_assert(!std::is_default_constructible_v<KLEntity>);
static_assert(!std::is_default_constructible_v<KLEntityParser>);

namespace {

/// How many units code points take in UTF-16.
std::int64_t unitsOf(std::u32string_view points) {
    const auto pairs = std::count_if(points.begin(), points.end(),
                                     [](char32_t point) { return point >= 0x10000; });
    return static_cast<std::int64_t>(points.size()) + pairs;
}

const std::string outside = fails(invalid, "range");

std::string shownRange(const KLEntity& entity) {
    return std::to_string(entity.range.location) + "+" + std::to_string(entity.range.length);
}

/// What becomes of a range, written as JSON, of a text.
std::string outcome(const std::string& text, const std::string& range) {
    const KLEntityParser parser(text);
    const auto [entity, failure] = parsed<KLEntity>(
        [&](const JsonObject& json) { return parser.parse(json); }, R"({"range":)" + range + "}");
    return entity ? shownRange(*entity) : failure;
}

} // namespace

TEST(EntityTest, TheApplicationLinkIsTheLinkWithoutItsFirstSeparator) {
    const std::pair<const char*, const char*> table[] = {
        {"", ""},       {" | ", ""},     {" | x", "x"},         {"x", "x"},
        {" |x", " |x"}, {"a | b", "ab"}, {" | a | b", "a | b"}, {" |  | ", " | "},
    };
    for (const auto& [link, expected] : table) {
        const KLEntity entity({}, {}, "", link, Range{});
        EXPECT_EQ(entity.applicationLink(), expected) << link;
        EXPECT_EQ(entity.link, link) << "only a parser puts the separator before it";
    }
}

TEST(EntityTest, EqualityLooksAtIdentifierTypeAndTitle) {
    const KLEntity base("7", "user", "Mara", "x", Range{1, 2});
    const KLEntity same("7", "user", "Mara", "y", Range{3, 4});
    EXPECT_EQ(base, same) << "link and range play no part";
    EXPECT_EQ(std::hash<KLEntity>()(base), std::hash<KLEntity>()(same));

    const std::shared_ptr<KLEntity> others[] = {
        std::make_shared<KLEntity>("8", "user", "Mara", "x", Range{1, 2}),
        std::make_shared<KLEntity>(std::nullopt, "user", "Mara", "x", Range{1, 2}),
        std::make_shared<KLEntity>("7", "tag", "Mara", "x", Range{1, 2}),
        std::make_shared<KLEntity>("7", std::nullopt, "Mara", "x", Range{1, 2}),
        std::make_shared<KLEntity>("7", "user", "", "x", Range{1, 2}),
        std::make_shared<KLEntity>("user", "7", "Mara", "x", Range{1, 2}),
    };
    for (const auto& other : others) {
        EXPECT_NE(base, *other);
        EXPECT_NE(std::hash<KLEntity>()(base), std::hash<KLEntity>()(*other));
    }
    const KLEntity bare(std::nullopt, std::nullopt, "", "", Range{});
    EXPECT_EQ(bare, KLEntity(std::nullopt, std::nullopt, "", "", Range{}))
        << "two absent values are equal";
    EXPECT_NE(bare, KLEntity("", std::nullopt, "", "", Range{})) << "an empty text is not absent";
}

TEST(EntityParserTest, EveryKeyWithEveryKindOfValue) {
    Reads links = texts();
    for (auto& [value, shown] : links) {
        shown.insert(0, shown.empty() ? "" : " | ");
    }
    links[R"(" | x")"] = " |  | x";
    const Reads ranges = {{"[1,2]", "2+1"}};
    const KLEntityParser parser("\xF0\x9F\x98\x80 x");
    checkKeys<KLEntity>(
        [&](const JsonObject& json) { return parser.parse(json); },
        {{"range", "[0,3]", "0+4", shownRange, ranges, fails(insufficient)},
         {"title", R"("Mara")", "Mara", &KLEntity::title, texts(), ""},
         {"type", R"("user")", "user", &KLEntity::type, texts(), absent},
         {"link", R"("kelo://user/7")", " | kelo://user/7", &KLEntity::link, links, ""},
         {"id", "77", "77", &KLEntity::idString, identifiers(), absent}});
}

TEST(EntityParserTest, ARangeIsAListOfTwoNumbersInOrderAndWithinTheText) {
    const std::string noRange = fails(insufficient, "range");
    const std::pair<const char*, std::string> table[] = {
        {"[0,0]", "0+0"},
        {"[0,5]", "0+5"},
        {"[5,5]", "5+0"},
        {"[2,4]", "2+2"},
        {"[2.0,4.9]", "2+2"},
        {"[false,true]", "0+1"},
        {"[-0.5,1]", "0+1"},
        {"[0,6]", outside},
        {"[6,6]", outside},
        {"[4,2]", outside},
        {"[5,3]", outside},
        {"[-1,3]", outside},
        {"[-2,-1]", outside},
        {"[0,1e300]", outside},
        {"[-1e300,1]", outside},
        {"[0,18446744073709551615]", outside},
        {"[0,4611686018427387904]", outside},
        {"[4611686018427387904,4611686018427387905]", outside},
        {"[]", noRange},
        {"[1]", noRange},
        {"[1,2,3]", noRange},
        {R"(["1","2"])", noRange},
        {R"([1,"2"])", noRange},
        {"[null,2]", noRange},
        {"[1,null]", noRange},
        {"[[1],[2]]", noRange},
        {"[{},{}]", noRange},
        {"[9,9,9]", noRange},
        {R"({"location":1,"length":1})", noRange},
        {R"("1,2")", noRange},
    };
    for (const auto& [range, expected] : table) {
        EXPECT_EQ(outcome("abcde", range), expected) << range;
    }
    EXPECT_EQ(outcome("", "[0,0]"), "0+0");
    EXPECT_EQ(outcome("", "[0,1]"), outside);
}

TEST(EntityParserTest, AnEmojiBeforeAWordCountsTwice) {
    EXPECT_EQ(outcome("\xF0\x9F\x98\x82 word", "[2,6]"), "3+4");
}

TEST(EntityParserTest, EveryOffsetAgreesWithThePlainConversion) {
    const std::u32string captions[] = {
        U"",
        U"plain",
        U"\u00e9t\u00e9 \u4e16\u754c",
        U"\U0001F602\U0001F602 #loop \U0001F525",
        // A family joined by zero-width joiners, a skin tone, a keycap.
        U"a\U0001F468\u200D\U0001F469\u200D\U0001F467b \U0001F44D\U0001F3FD 1\uFE0F\u20E3",
        // Flags: pairs of regional indicators, and one of tags.
        U"\U0001F1E9\U0001F1EA vs \U0001F1EB\U0001F1F7 "
        U"\U0001F3F4\U000E0067\U000E0062\U000E0073\U000E0063\U000E0074\U000E007F",
        // Combining marks, a byte-order mark, and the last points of each length.
        U"e\u0301a\u0308\u0323 \uFEFFx \u007F\u0080\u07FF\u0800\uD7FF\uE000\uFFFF\U00010000"
        U"\U0010FFFF",
        // Right to left, and a zero character.
        std::u32string(U"\u05E9\u05DC\u05D5\u05DD") + U'\0' + U"\U0001F642",
    };
    for (const std::u32string_view caption : captions) {
        std::string text;
        for (const char32_t point : caption) {
            text += utf8Of(point);
        }
        for (std::size_t start = 0; start <= caption.size(); ++start) {
            for (std::size_t end = start; end <= caption.size(); ++end) {
                const std::string range =
                    "[" + std::to_string(start) + "," + std::to_string(end) + "]";
                EXPECT_EQ(outcome(text, range),
                          std::to_string(unitsOf(caption.substr(0, start))) + "+" +
                              std::to_string(unitsOf(caption.substr(start, end - start))))
                    << text << range;
            }
        }
        const std::string beyond = std::to_string(caption.size() + 1);
        EXPECT_EQ(outcome(text, "[0," + beyond + "]"), outside) << text;
    }
}

TEST(EntityParserTest, TextThatIsNoUTF8IsCountedWithoutHarm) {
    EXPECT_EQ(outcome("\x80\xBF", "[0,0]"), "0+0") << "nothing begins a code point";
    EXPECT_EQ(outcome("\x80\xBF", "[0,1]"), outside);
    EXPECT_EQ(outcome("a\xF0\x9F", "[0,2]"), "0+3");
    EXPECT_EQ(outcome("\xFF\xFE", "[1,2]"), "2+2");
}

static_assert(!std::is_default_constructible_v<KLByline>);

namespace {

/// The titles of a byline's entities.
std::string titles(const KLByline& byline) {
    std::string titles;
    for (const auto& entity : byline.entities) {
        titles += entity->title + ";";
    }
    return titles;
}

} // namespace

TEST(BylineTest, StartsWithItsTextAlone) {
    const KLByline byline("Featured");
    EXPECT_EQ(byline.text, "Featured");
    EXPECT_EQ(byline.iconUrl, std::nullopt);
    EXPECT_TRUE(byline.entities.empty());
}

TEST(BylineParserTest, EveryKeyWithEveryKindOfValue) {
    Reads bodies = texts();
    bodies[R"("")"] = fails(insufficient);
    const Reads mixedLists = {{R"([{"range":[0,1],"title":"a"},1])", ""}, {"[null]", ""}};
    const std::string icon = "https://i.example/b.png";
    checkParser<KLBylineParser>(
        {{"body", R"("Ann")", "Ann", &KLByline::text, bodies, fails(insufficient)},
         {"entities", R"([{"range":[0,1],"title":"a"}])", "a;", titles, mixedLists, ""},
         {"iconUrl", '"' + icon + '"', icon, &KLByline::iconUrl, urls(), fails(insufficient)}});
}

TEST(BylineParserTest, LeavesOutEntitiesThatFail) {
    const JsonText json(R"({"iconUrl":"b.png","body":"\ud83d\ude02 by ann","entities":[
        {"range":[5,8],"title":"ann","link":"kelo://user/1"}, {"title":"no range"},
        {"range":[0,99],"title":"too long"}, {"range":[2,1],"title":"reversed"},
        {"range":[0,1],"title":"emoji"}]})");
    const auto made = KLBylineParser().parse(json.object());
    ASSERT_EQ(titles(*made), "ann;emoji;");
    EXPECT_EQ(made->entities[0]->range, (Range{6, 3}));
    EXPECT_EQ(made->entities[0]->applicationLink(), "kelo://user/1");
    EXPECT_EQ(made->entities[1]->range, (Range{0, 2}));
}

namespace {

/// Texts as names: each gets its "#".
Reads tagNames() {
    Reads names = texts();
    for (auto& [value, shown] : names) {
        shown.insert(0, "#");
    }
    return names;
}

} // namespace

static_assert(!std::is_default_constructible_v<KLTag>);

TEST(TagTest, StoresItsNameWithAHash) {
    const std::tuple<const char*, const char*, const char*> table[] = {
        {"cats", "#cats", "cats"},
        {"#cats", "#cats", "cats"},
        {"##cats", "##cats", "#cats"},
        {"", "#", ""},
        {"#", "#", ""},
        {" #cats", "# #cats", " #cats"},
        {"c#", "#c#", "c#"},
        {"\xEF\xBC\x83x", "#\xEF\xBC\x83x", "\xEF\xBC\x83x"},
    };
    for (const auto& [given, name, withoutHash] : table) {
        const KLTag tag("5", given);
        EXPECT_EQ(tag.tagId, "5");
        EXPECT_EQ(tag.name, name);
        EXPECT_EQ(tag.nameWithoutHash(), withoutHash);
        EXPECT_EQ(tag.count, 0);
    }
}

TEST(TagTest, OfANameAloneHasNoIdentifier) {
    const KLTag tag("cats");
    EXPECT_EQ(tag.tagId, "");
    EXPECT_EQ(tag.name, "#cats");
    EXPECT_EQ(tag.count, 0);
}

TEST(TagParserTest, EveryKeyWithEveryKindOfValue) {
    checkParser<KLTagParser>({
        {"tag", R"("dogs")", "#dogs", &KLTag::name, tagNames(), fails(insufficient)},
        {"tagId", "5", "5", &KLTag::tagId, identifiers(), fails(insufficient)},
        {"postCount", "42", "42", &KLTag::count, integers(), "0"},
    });
}

TEST(TagParserTest, TagNameGoesBeforeTag) {
    checkParser<KLTagParser>({{"tagName", R"("cats")", "#cats", &KLTag::name, tagNames(), "#dogs"}},
                             R"({"tagId":5,"tag":"dogs")");
    checkParser<KLTagParser>(
        {{"tagName", R"("cats")", "#cats", &KLTag::name, tagNames(), fails(insufficient, "tag")}},
        R"({"tagId":5,"tag":7)");
}

} // namespace KeloAPI::testing
