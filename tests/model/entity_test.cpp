#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLEntity.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

using testing::absent;
using testing::fails;
using testing::JsonText;
using testing::KeyTable;

static_assert(!std::is_default_constructible_v<KLEntity>);
static_assert(
    std::is_constructible_v<KLEntity, const char*, const char*, const char*, const char*, Range>);
static_assert(!std::is_default_constructible_v<KLEntityParser>);
static_assert(std::is_constructible_v<KLEntityParser, const char*>);

namespace {

using testing::insufficient;
constexpr auto invalid = JsonParseError::InvalidData;

/// A text of code points in UTF-8.
std::string utf8(std::u32string_view points) {
    std::string text;
    const auto tail = [&](char32_t point, unsigned shift) {
        text += static_cast<char>(0x80U | ((point >> shift) & 0x3FU));
    };
    for (const char32_t point : points) {
        if (point < 0x80) {
            text += static_cast<char>(point);
        } else if (point < 0x800) {
            text += static_cast<char>(0xC0U | (point >> 6U));
            tail(point, 0);
        } else if (point < 0x10000) {
            text += static_cast<char>(0xE0U | (point >> 12U));
            tail(point, 6);
            tail(point, 0);
        } else {
            text += static_cast<char>(0xF0U | (point >> 18U));
            tail(point, 12);
            tail(point, 6);
            tail(point, 0);
        }
    }
    return text;
}

/// The plain conversion: the UTF-16 text of code points.
std::u16string utf16(std::u32string_view points) {
    std::u16string text;
    for (const char32_t point : points) {
        if (point < 0x10000) {
            text += static_cast<char16_t>(point);
        } else {
            text += static_cast<char16_t>(0xD7C0U + (point >> 10U));
            text += static_cast<char16_t>(0xDC00U + (point & 0x3FFU));
        }
    }
    return text;
}

std::shared_ptr<KLEntity> entity(const std::string& text, const std::string& json) {
    return KLEntityParser(text).parse(JsonText(json).object());
}

/// What becomes of a range, written as JSON, of a text.
std::string outcome(const std::string& text, const std::string& range) {
    try {
        const Range made = entity(text, R"({"range":)" + range + "}")->range;
        return std::to_string(made.location) + "+" + std::to_string(made.length);
    } catch (const JsonParseError& error) {
        return fails(static_cast<JsonParseError::Case>(error.code()));
    }
}

} // namespace

TEST(EntityTest, KeepsWhatItWasMadeOf) {
    KLEntity entity("7", "user", "Mara", "kelo://user/7", Range{3, 4});
    EXPECT_EQ(entity.idString(), "7");
    EXPECT_EQ(entity.type(), "user");
    EXPECT_EQ(entity.title(), "Mara");
    EXPECT_EQ(entity.link(), "kelo://user/7") << "only a parser puts the separator before it";
    EXPECT_EQ(entity.range, (Range{3, 4}));
    entity.range = Range{0, 1};
    EXPECT_EQ(entity.range, (Range{0, 1}));
}

TEST(EntityTest, TheApplicationLinkIsTheLinkWithoutItsFirstSeparator) {
    const std::pair<const char*, const char*> table[] = {
        {"", ""},       {" | ", ""},     {" | x", "x"},         {"x", "x"},
        {" |x", " |x"}, {"a | b", "ab"}, {" | a | b", "a | b"}, {" |  | ", " | "},
    };
    for (const auto& [link, expected] : table) {
        const KLEntity entity({}, {}, "", link, Range{});
        EXPECT_EQ(entity.applicationLink(), expected) << link;
        EXPECT_EQ(entity.link(), link);
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
    const auto showing = [](auto member) { return testing::showing<KLEntity>(member); };
    testing::Reads links = testing::texts();
    for (auto& [value, shown] : links) {
        shown.insert(0, shown.empty() ? "" : " | ");
    }
    const KeyTable<KLEntity>::Rules rules = {
        {"range",
         "[0,3]",
         "0+4",
         [](const KLEntity& entity) {
             return std::to_string(entity.range.location) + "+" +
                    std::to_string(entity.range.length);
         },
         {{"[1,2]", "2+1"}},
         fails(insufficient)},
        {"title", R"("Mara")", "Mara", showing(&KLEntity::title), testing::texts(), ""},
        {"type", R"("user")", "user", showing(&KLEntity::type), testing::texts(), absent},
        {"link", R"("kelo://user/7")", " | kelo://user/7", showing(&KLEntity::link), links, ""},
        {"id", "77", "77", showing(&KLEntity::idString), testing::identifiers(), absent},
    };
    const std::string text = "\xF0\x9F\x98\x80 x";
    KeyTable<KLEntity>([&](const JsonObject& json) { return KLEntityParser(text).parse(json); },
                       rules)
        .check();
}

TEST(EntityParserTest, ARangeIsAListOfTwoNumbersInOrderAndWithinTheText) {
    const std::pair<const char*, std::string> table[] = {
        {"[0,0]", "0+0"},
        {"[0,5]", "0+5"},
        {"[5,5]", "5+0"},
        {"[2,4]", "2+2"},
        {"[2.0,4.9]", "2+2"},
        {"[false,true]", "0+1"},
        {"[-0.5,1]", "0+1"},
        {"[0,6]", fails(invalid)},
        {"[6,6]", fails(invalid)},
        {"[4,2]", fails(invalid)},
        {"[5,3]", fails(invalid)},
        {"[-1,3]", fails(invalid)},
        {"[-2,-1]", fails(invalid)},
        {"[0,1e300]", fails(invalid)},
        {"[-1e300,1]", fails(invalid)},
        {"[0,18446744073709551615]", fails(invalid)},
        {"[0,4611686018427387904]", fails(invalid)},
        {"[4611686018427387904,4611686018427387905]", fails(invalid)},
        {"[]", fails(insufficient)},
        {"[1]", fails(insufficient)},
        {"[1,2,3]", fails(insufficient)},
        {R"(["1","2"])", fails(insufficient)},
        {R"([1,"2"])", fails(insufficient)},
        {"[null,2]", fails(insufficient)},
        {"[1,null]", fails(insufficient)},
        {"[[1],[2]]", fails(insufficient)},
        {"[{},{}]", fails(insufficient)},
        {"[9,9,9]", fails(insufficient)},
        {R"({"location":1,"length":1})", fails(insufficient)},
        {R"("1,2")", fails(insufficient)},
    };
    for (const auto& [range, expected] : table) {
        EXPECT_EQ(outcome("abcde", range), expected) << range;
    }
    EXPECT_EQ(outcome("", "[0,0]"), "0+0");
    EXPECT_EQ(outcome("", "[0,1]"), fails(invalid));
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
    for (const auto& caption : captions) {
        const std::string text = utf8(caption);
        const KLEntityParser parser(text);
        for (std::size_t start = 0; start <= caption.size(); ++start) {
            for (std::size_t end = start; end <= caption.size(); ++end) {
                const JsonText json(R"({"range":[)" + std::to_string(start) + "," +
                                    std::to_string(end) + "]}");
                const Range range = parser.parse(json.object())->range;
                const auto location = utf16(std::u32string_view(caption).substr(0, start)).size();
                const auto length =
                    utf16(std::u32string_view(caption).substr(start, end - start)).size();
                EXPECT_EQ(range.location, static_cast<std::int64_t>(location)) << text;
                EXPECT_EQ(range.length, static_cast<std::int64_t>(length)) << text;
            }
        }
        const std::string beyond = std::to_string(caption.size() + 1);
        EXPECT_EQ(outcome(text, "[0," + beyond + "]"), fails(invalid)) << text;
    }
}

TEST(EntityParserTest, TheRangeCutsTheLinkedWordOutOfTheText) {
    const std::u32string caption = U"\U0001F1E9\U0001F1EA cafe\u0301 #loop\u0301";
    const auto at = caption.find(U'#');
    const auto made =
        entity(utf8(caption), R"({"range":[)" + std::to_string(at) + "," +
                                  std::to_string(caption.size()) + R"(],"title":"loop"})");
    const std::u16string whole = utf16(caption);
    EXPECT_EQ(whole.substr(static_cast<std::size_t>(made->range.location),
                           static_cast<std::size_t>(made->range.length)),
              u"#loop\u0301");
}

TEST(EntityParserTest, TextThatIsNoUTF8IsCountedWithoutHarm) {
    EXPECT_EQ(outcome("\x80\xBF", "[0,0]"), "0+0") << "nothing begins a code point";
    EXPECT_EQ(outcome("\x80\xBF", "[0,1]"), fails(invalid));
    EXPECT_EQ(outcome("a\xF0\x9F", "[0,2]"), "0+3");
    EXPECT_EQ(outcome("\xFF\xFE", "[1,2]"), "2+2");
}

TEST(EntityParserTest, KeepsTheLinkBehindASeparator) {
    const auto made = entity("abc", R"({"range":[0,1],"link":"x"})");
    EXPECT_EQ(made->link(), " | x");
    EXPECT_EQ(made->applicationLink(), "x");
    const auto twice = entity("abc", R"({"range":[0,1],"link":" | x"})");
    EXPECT_EQ(twice->link(), " |  | x");
    EXPECT_EQ(twice->applicationLink(), " | x");
    EXPECT_EQ(entity("abc", R"({"range":[0,1],"link":""})")->link(), "");
}

} // namespace KeloAPI
