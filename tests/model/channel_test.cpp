#include "support/KeyTable.hpp"
#include "support/Named.hpp"

#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>

#include <gtest/gtest.h>

namespace KeloAPI::testing {

namespace {

std::shared_ptr<const KLChannelParser::TimelineParser> postPages() {
    return std::make_shared<KLChannelParser::TimelineParser>(
        std::make_shared<AnyObjectParserAdaptor>(std::make_shared<PostParser>()));
}

KeyRules<KLChannel> channelRules() {
    using C = KLChannel;
    return {
        {"channelId", "12", "12", &C::channelId, identifiers(), fails(insufficient)},
        {"channel", R"("Comedy")", "Comedy", &C::name, texts(), fails(insufficient)},
        {"fontColor", R"("ffffff")", "ffffff", &C::fontColorHex, texts(), "000000"},
        {"backgroundColor", R"("11aa22")", "11aa22", &C::backgroundColorHex, texts(), "000000"},
        {"created", R"("1970-01-01T00:00:1.5")", "1500000", &C::created, dates(), absent},
        {"iconFullUrl", R"("a/1")", "a/1", &C::iconUrl, urls(), absent},
        {"retinaIconFullUrl", R"("a/2")", "a/2", &C::iconRetinaUrl, urls(), absent},
        {"exploreRetinaIconFullUrl", R"("a/3")", "a/3", &C::exploreIconRetinaUrl, urls(), absent},
        {"following", "true", "true", &C::following, flags(), "false"},
        {"showRecent", "1", "true", &C::showRecent, flags(), "false"},
        {"description", R"("All laughs")", "All laughs", &C::channelDescription, texts(), absent},
        {"vanityUrl", R"("comedy")", "comedy", &C::vanityPathSuffix, texts(), absent},
    };
}

} // namespace

TEST(ChannelTest, IsBlackAndEmptyByDefault) {
    const KLChannel channel;
    for (const auto& rule : channelRules()) {
        const bool required = rule.required();
        EXPECT_EQ(rule.property(channel), required ? "" : rule.otherwise) << rule.key;
    }
    EXPECT_EQ(channel.timelineData, nullptr);
}

TEST(ChannelTest, IsEqualByItsIdentifierAlone) {
    const KLChannel a("12", "Comedy", "ffffff", "000000");
    KLChannel b("12", "Weird", "000000", "ffffff");
    b.following = true;
    const KLChannel c("13", "Comedy", "ffffff", "000000");
    EXPECT_EQ(a, b);
    EXPECT_NE(a, c);
    EXPECT_TRUE(a.isEqual(b));
    EXPECT_TRUE(a.isEqual(a));
    EXPECT_FALSE(a.isEqual(c));
    EXPECT_FALSE(a.isEqual(Named("12"))) << "no channel";
    EXPECT_EQ(std::hash<KLChannel>()(a), std::hash<KLChannel>()(b));
    EXPECT_EQ(std::hash<KLChannel>()(a), std::hash<std::string>()("12"));
    EXPECT_NE(std::hash<KLChannel>()(a), std::hash<KLChannel>()(c));
}

TEST(ChannelParserTest, EveryKeyWithEveryKindOfValue) {
    auto rules = channelRules();
    checkParser<KLChannelParser>(rules);
    const Reads timelines = {{"{}", "(present)"}, {R"({"text":"text"})", "(present)"}};
    rules.push_back(
        {"timeline", R"({"count":2})", "(present)", &KLChannel::timelineData, timelines, absent});
    const KLChannelParser withPages(postPages());
    checkKeys<KLChannel>([&](const JsonObject& json) { return withPages.parse(json); }, rules);
}

TEST(ChannelParserTest, ReadsATimelineOnlyWithAParserForIt) {
    const std::string json = R"({"channelId":1,"channel":"a","timeline":{"count":9,"nextPage":2,
        "records":[{"postId":5},{"postId":"6"}]}})";
    EXPECT_EQ(KLChannelParser().parse(JsonText(json).object())->timelineData, nullptr);
    EXPECT_EQ(KLChannelParser(nullptr).parse(JsonText(json).object())->timelineData, nullptr);

    const auto timeline = KLChannelParser(postPages()).parse(JsonText(json).object())->timelineData;
    ASSERT_NE(timeline, nullptr);
    ASSERT_EQ(timeline->count(), 2);
    EXPECT_EQ(dynamic_cast<KLWatchPost&>(*(*timeline)[0]).postId, "5");
    EXPECT_EQ(dynamic_cast<KLWatchPost&>(*(*timeline)[1]).postId, "6");
    EXPECT_EQ(timeline->metadata()->count(), 9);
    EXPECT_TRUE(timeline->hasNextPage());
}

TEST(ChannelParserTest, TheIdentifierIsJudgedFirst) {
    EXPECT_EQ(failureOf<KLChannelParser>(R"({"channelId":null,"channel":7})"),
              fails(insufficient, "channelId"));
}

} // namespace KeloAPI::testing
