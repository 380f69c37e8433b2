#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLTag.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI::testing {

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
static_assert(std::is_constructible_v<KLTag, const char*>);

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
        EXPECT_EQ(tag.tagId(), "5");
        EXPECT_EQ(tag.name(), name);
        EXPECT_EQ(tag.nameWithoutHash(), withoutHash);
        EXPECT_EQ(tag.count, 0);
    }
}

TEST(TagTest, OfANameAloneHasNoIdentifier) {
    const KLTag tag("cats");
    EXPECT_EQ(tag.tagId(), "");
    EXPECT_EQ(tag.name(), "#cats");
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
