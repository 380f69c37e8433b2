#include "support/KeyTable.hpp"
#include "support/Named.hpp"

#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>

#include <gtest/gtest.h>

namespace KeloAPI {

using testing::absent;
using testing::fails;
using testing::JsonText;
using testing::KeyTable;

namespace {

using testing::insufficient;

template <class Member>
auto showingChannel(Member member) {
    return testing::showing<KLChannel>(member);
}

std::shared_ptr<const KLChannelParser::TimelineParser> postPages() {
    return std::make_shared<KLChannelParser::TimelineParser>(
        std::make_shared<AnyObjectParserAdaptor>(std::make_shared<PostParser>()));
}

std::shared_ptr<KLChannel> channel(const std::string& json) {
    return KLChannelParser().parse(JsonText(json).object());
}

std::shared_ptr<KLChannel> channelWithTimeline(const std::string& json) {
    return KLChannelParser(postPages()).parse(JsonText(json).object());
}

KeyTable<KLChannel>::Rules rules() {
    using testing::dates;
    using testing::flags;
    using testing::identifiers;
    using testing::texts;
    using testing::urls;
    return {
        {"channelId", "12", "12", showingChannel(&KLChannel::channelId), identifiers(),
         fails(insufficient)},
        {"channel", R"("Comedy")", "Comedy", showingChannel(&KLChannel::name), texts(),
         fails(insufficient)},
        {"fontColor", R"("ffffff")", "ffffff", showingChannel(&KLChannel::fontColorHex), texts(),
         "000000"},
        {"backgroundColor", R"("11aa22")", "11aa22", showingChannel(&KLChannel::backgroundColorHex),
         texts(), "000000"},
        {"created", R"("1970-01-01T00:00:1.5")", "1500000", showingChannel(&KLChannel::created),
         dates(), absent},
        {"iconFullUrl", R"("https://i.example/1")", "https://i.example/1",
         showingChannel(&KLChannel::iconUrl), urls(), absent},
        {"retinaIconFullUrl", R"("https://i.example/2")", "https://i.example/2",
         showingChannel(&KLChannel::iconRetinaUrl), urls(), absent},
        {"exploreRetinaIconFullUrl", R"("https://i.example/3")", "https://i.example/3",
         showingChannel(&KLChannel::exploreIconRetinaUrl), urls(), absent},
        {"following", "true", "true", showingChannel(&KLChannel::following), flags(), "false"},
        {"showRecent", "1", "true", showingChannel(&KLChannel::showRecent), flags(), "false"},
        {"description", R"("All the laughs")", "All the laughs",
         showingChannel(&KLChannel::channelDescription), texts(), absent},
        {"vanityUrl", R"("comedy")", "comedy", showingChannel(&KLChannel::vanityPathSuffix),
         texts(), absent},
    };
}

} // namespace

TEST(ChannelTest, IsBlackAndEmptyByDefault) {
    const KLChannel channel;
    EXPECT_EQ(channel.channelId, "");
    EXPECT_EQ(channel.name, "");
    EXPECT_EQ(channel.fontColorHex, "000000");
    EXPECT_EQ(channel.backgroundColorHex, "000000");
    EXPECT_EQ(channel.iconUrl, std::nullopt);
    EXPECT_EQ(channel.iconRetinaUrl, std::nullopt);
    EXPECT_EQ(channel.exploreIconRetinaUrl, std::nullopt);
    EXPECT_FALSE(channel.following);
    EXPECT_EQ(channel.created, std::nullopt);
    EXPECT_EQ(channel.channelDescription, std::nullopt);
    EXPECT_EQ(channel.vanityPathSuffix, std::nullopt);
    EXPECT_EQ(channel.timelineData, nullptr);
    EXPECT_FALSE(channel.showRecent);
}

TEST(ChannelTest, KeepsWhatItWasMadeOf) {
    const KLChannel channel("12", "Comedy", "ffffff", "112233");
    EXPECT_EQ(channel.channelId, "12");
    EXPECT_EQ(channel.name, "Comedy");
    EXPECT_EQ(channel.fontColorHex, "ffffff");
    EXPECT_EQ(channel.backgroundColorHex, "112233");
    EXPECT_FALSE(channel.following);
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
    EXPECT_FALSE(a.isEqual(testing::Named("12"))) << "no channel";
    EXPECT_EQ(std::hash<KLChannel>()(a), std::hash<KLChannel>()(b));
    EXPECT_EQ(std::hash<KLChannel>()(a), std::hash<std::string>()("12"));
    EXPECT_NE(std::hash<KLChannel>()(a), std::hash<KLChannel>()(c));
}

TEST(ChannelParserTest, EveryKeyWithEveryKindOfValue) {
    KeyTable<KLChannel>(testing::parseWith<KLChannelParser>(), rules()).check();
}

TEST(ChannelParserTest, EveryKeyWithEveryKindOfValueAndATimelineParser) {
    auto all = rules();
    all.push_back({"timeline",
                   R"({"count":2})",
                   "(present)",
                   showingChannel(&KLChannel::timelineData),
                   {{"{}", "(present)"}, {R"({"text":"text"})", "(present)"}},
                   absent});
    const auto parser = std::make_shared<KLChannelParser>(postPages());
    KeyTable<KLChannel>([parser](const JsonObject& json) { return parser->parse(json); }, all)
        .check();
}

TEST(ChannelParserTest, TheRequiredKeysAreEnough) {
    const auto bare = channel(R"({"channelId":12,"channel":"Comedy"})");
    EXPECT_EQ(bare->channelId, "12");
    EXPECT_EQ(bare->name, "Comedy");
    EXPECT_EQ(bare->fontColorHex, "000000");
    EXPECT_EQ(bare->backgroundColorHex, "000000");
    EXPECT_FALSE(bare->following);
    EXPECT_EQ(bare->timelineData, nullptr);
    EXPECT_EQ(channel(R"({"channelId":"ab","channel":""})")->channelId, "ab");
}

TEST(ChannelParserTest, ReadsATimelineOnlyWithAParserForIt) {
    const std::string json = R"({"channelId":1,"channel":"a","timeline":{"count":9,"nextPage":2,
        "records":[{"postId":5},{"postId":"6"}]}})";
    EXPECT_EQ(channel(json)->timelineData, nullptr);
    EXPECT_EQ(KLChannelParser(nullptr).parse(JsonText(json).object())->timelineData, nullptr);

    const auto timeline = channelWithTimeline(json)->timelineData;
    ASSERT_NE(timeline, nullptr);
    ASSERT_EQ(timeline->count(), 2);
    EXPECT_EQ(dynamic_cast<KLWatchPost&>(*(*timeline)[0]).postId, "5");
    EXPECT_EQ(dynamic_cast<KLWatchPost&>(*(*timeline)[1]).postId, "6");
    EXPECT_EQ(timeline->metadata()->count(), 9);
    EXPECT_TRUE(timeline->hasNextPage());
}

TEST(ChannelParserTest, TheTimelineOfATimelinesChannelIsNotRead) {
    const auto outer = channelWithTimeline(R"({"channelId":1,"channel":"a","timeline":{
        "records":[],"channel":{"channelId":2,"channel":"b","timeline":{"records":[]}}}})");
    ASSERT_NE(outer->timelineData, nullptr);
    const auto inner = outer->timelineData->metadata()->channel();
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(inner->channelId, "2");
    EXPECT_EQ(inner->timelineData, nullptr);
}

TEST(ChannelParserTest, RecordsOfATimelineThatFailAreLeftOut) {
    const auto parser = std::make_shared<KLChannelParser::TimelineParser>(
        std::make_shared<AnyObjectParserAdaptor>(std::make_shared<testing::NamedParser>()));
    const auto made = KLChannelParser(parser).parse(
        JsonText(R"({"channelId":1,"channel":"a","timeline":{"records":[{},{"name":"x"}]}})")
            .object());
    ASSERT_NE(made->timelineData, nullptr);
    EXPECT_EQ(made->timelineData->count(), 1);
}

TEST(ChannelParserTest, TheErrorNamesTheKey) {
    const std::pair<const char*, const char*> table[] = {
        {R"({"channel":"a"})", "channelId"},
        {R"({"channelId":null,"channel":7})", "channelId"},
        {R"({"channelId":1})", "channel"},
    };
    for (const auto& [json, key] : table) {
        try {
            channel(json);
            ADD_FAILURE() << json;
        } catch (const JsonParseError& error) {
            EXPECT_EQ(std::get<std::string>(error.error().userInfo().at("key")), key) << json;
        }
    }
}

} // namespace KeloAPI
