#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLTag.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

using testing::fails;
using testing::JsonText;
using testing::KeyTable;
using testing::Reads;

namespace {

using testing::insufficient;

template <class Member>
auto showingTag(Member member) {
    return testing::showing<KLTag>(member);
}

std::shared_ptr<KLTag> tag(const std::string& json) {
    return KLTagParser().parse(JsonText(json).object());
}

/// Texts as names: each gets its "#".
Reads names() {
    Reads names = testing::texts();
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

TEST(TagTest, KeptNamesAreTakenAsTheyAre) {
    const auto tag = KLTag::kept("5", "cats");
    EXPECT_EQ(tag->tagId(), "5");
    EXPECT_EQ(tag->name(), "cats");
    EXPECT_EQ(KLTag::kept("", "")->name(), "");
    EXPECT_EQ(KLTag::kept("", "#cats")->name(), "#cats");
}

TEST(TagParserTest, EveryKeyWithEveryKindOfValue) {
    const KeyTable<KLTag>::Rules rules = {
        {"tag", R"("dogs")", "#dogs", showingTag(&KLTag::name), names(), fails(insufficient)},
        {"tagId", "5", "5", showingTag(&KLTag::tagId), testing::identifiers(), fails(insufficient)},
        {"postCount", "42", "42", showingTag(&KLTag::count), testing::integers(), "0"},
    };
    KeyTable<KLTag>(testing::parseWith<KLTagParser>(), rules).check();
}

TEST(TagParserTest, TagNameGoesBeforeTag) {
    const KeyTable<KLTag>::Rules beside = {
        {"tagName", R"("cats")", "#cats", showingTag(&KLTag::name), names(), "#dogs"}};
    KeyTable<KLTag>(testing::parseWith<KLTagParser>(), beside, [](const std::string& members) {
        return R"({"tagId":5,"tag":"dogs")" + (members.empty() ? "" : "," + members) + "}";
    }).check();
    const KeyTable<KLTag>::Rules alone = {
        {"tagName", R"("cats")", "#cats", showingTag(&KLTag::name), names(), fails(insufficient)}};
    KeyTable<KLTag>(testing::parseWith<KLTagParser>(), alone, [](const std::string& members) {
        return R"({"tagId":5,"tag":7)" + (members.empty() ? "" : "," + members) + "}";
    }).check();
}

TEST(TagParserTest, ReadsATagAndANumber) {
    const auto cats = tag(R"({"tag":"cats","tagId":5})");
    EXPECT_EQ(cats->tagId(), "5");
    EXPECT_EQ(cats->name(), "#cats");
    EXPECT_EQ(cats->nameWithoutHash(), "cats");
    EXPECT_EQ(cats->count, 0);
}

} // namespace KeloAPI
