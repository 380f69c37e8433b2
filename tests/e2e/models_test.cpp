#include "support/Awaited.hpp"
#include "support/ServiceTest.hpp"

#include <KeloAPI/model/KLByline.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPI/model/KLPostAudioMetadata.hpp>
#include <KeloAPI/model/KLSolicitation.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/model/KLUrlAction.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPI/parsing/KLClosureParser.hpp>

#include <algorithm>

namespace KeloAPI::testing {

class ModelsAtService : public ServiceTest {
protected:
    /// What a parser makes of the answer for a path; fails the test where there is an error.
    template <class P>
    std::vector<std::shared_ptr<typename P::T>>
    read(const std::string& path, std::shared_ptr<P> parser, Parameters parameters = {}) {
        const auto endpoint = Endpoint::create(session);
        endpoint->setPath(path);
        endpoint->setParameters(std::move(parameters));
        using Items = std::vector<std::shared_ptr<typename P::T>>;
        auto [items, metadata, timeline, error] =
            awaited<Items, std::optional<Metadata>, Timeline, std::optional<Error>>(
                [&](auto completion) { endpoint->request(std::move(parser), completion); });
        EXPECT_FALSE(error) << path << ": " << error->description();
        return std::move(items);
    }

    /// What `make` makes of each record of a feed's first 200.
    template <class T>
    std::vector<std::shared_ptr<T>>
    readRecords(std::function<std::shared_ptr<T>(const JsonObject&)> make) {
        auto made = std::make_shared<std::vector<std::shared_ptr<T>>>();
        const auto collect = [made, make](const JsonObject& json) -> std::shared_ptr<KLWatchPost> {
            if (auto one = make(json)) {
                made->push_back(std::move(one));
            }
            return PostParser().parse(json);
        };
        read("timelines/all", std::make_shared<KLClosureParser<KLWatchPost>>(collect),
             {{"size", 200}});
        return *made;
    }
};

TEST_F(ModelsAtService, AChannelWithItsTimeline) {
    const auto channels =
        read("channels/3",
             std::make_shared<KLChannelParser>(std::make_shared<KLChannelParser::TimelineParser>(
                 std::make_shared<AnyObjectParserAdaptor>(std::make_shared<PostParser>()))),
             {{"size", 7}});
    ASSERT_EQ(channels.size(), 1U);
    const KLChannel& channel = *channels.front();
    EXPECT_EQ(channel.channelId, "3");
    EXPECT_EQ(channel.name, "Animals");
    ASSERT_NE(channel.timelineData, nullptr);
    EXPECT_EQ(channel.timelineData->count(), 7);
    const auto& metadata = *channel.timelineData->metadata();
    EXPECT_EQ(metadata.pageSize(), 7);
    EXPECT_GT(metadata.count(), 50);
    EXPECT_TRUE(metadata.anchor());
    ASSERT_NE(metadata.channel(), nullptr) << "the page says whose it is";
    EXPECT_EQ(*metadata.channel(), channel);
    EXPECT_EQ(metadata.channel()->timelineData, nullptr);

    const auto posts = fetch(TimelineEndpoint::create("channels/3")).success()->posts;
    EXPECT_EQ(dynamic_cast<KLWatchPost&>(*(*channel.timelineData)[0]).postId,
              posts.front()->postId);
}

TEST_F(ModelsAtService, AVenueInBothForms) {
    const auto flat = readRecords<KLVenue>([](const JsonObject& json) -> std::shared_ptr<KLVenue> {
        return json["venueName"].exists() ? KLVenueParser().parse(json) : nullptr;
    });
    ASSERT_GT(flat.size(), 20U);
    for (const auto& venue : flat) {
        const auto nested =
            read("venues/" + venue->foursquareVenueId, std::make_shared<KLFoursquareVenueParser>());
        ASSERT_EQ(nested.size(), 1U);
        const KLVenue& other = *nested.front();
        const auto shared = [](const KLVenue& one) {
            return std::tuple(one.foursquareVenueId, one.name, one.address, one.city, one.state);
        };
        EXPECT_EQ(shared(other), shared(*venue));
        EXPECT_FALSE(venue->country);
        EXPECT_EQ(venue->latitude, 0);
        ASSERT_EQ(other.category == nullptr, venue->category == nullptr);
        if (venue->category) {
            EXPECT_EQ(other.category->categoryId, venue->category->categoryId);
            EXPECT_EQ(other.category->shortName, venue->category->shortName);
            EXPECT_EQ(other.category->iconUrl, venue->category->iconUrl);
            EXPECT_TRUE(other.category->iconUrl);
        }
    }
    EXPECT_TRUE(std::any_of(flat.begin(), flat.end(),
                            [](const auto& venue) { return venue->category != nullptr; }));
}

TEST_F(ModelsAtService, BylinesMusicTagsAndEntities) {
    std::size_t tags = 0;
    std::size_t entities = 0;
    const auto bylines =
        readRecords<KLByline>([&](const JsonObject& json) -> std::shared_ptr<KLByline> {
            const auto tagList = json["tags"].objects().value();
            for (const auto& tag : KLTagParser().parseArray(tagList)) {
                EXPECT_TRUE(tag->name.starts_with("#"));
                EXPECT_GT(tag->count, 0);
                ++tags;
            }
            const KLEntityParser parser(json["description"].text().value());
            const auto entityList = json["entities"].objects().value();
            for (const auto& entity : parser.parseArray(entityList)) {
                EXPECT_TRUE(entity->applicationLink().starts_with("kelo://"));
                EXPECT_TRUE(entity->idString && entity->type);
                ++entities;
            }
            const auto byline = json["byline"].object();
            return byline ? KLBylineParser().parse(*byline) : nullptr;
        });
    EXPECT_GT(tags, 200U);
    EXPECT_GT(entities, 200U);
    ASSERT_GT(bylines.size(), 10U);
    EXPECT_TRUE(std::any_of(bylines.begin(), bylines.end(),
                            [](const auto& byline) { return !byline->entities.empty(); }));

    const auto music = readRecords<KLPostAudioMetadata>(
        [](const JsonObject& json) -> std::shared_ptr<KLPostAudioMetadata> {
            const auto audio = json["audio"].object();
            return audio ? KLPostAudioMetadata::fromJSON(*audio) : nullptr;
        });
    ASSERT_GT(music.size(), 20U);
    for (const auto& audio : music) {
        EXPECT_FALSE(audio->trackName.empty() || audio->artistName.empty());
        EXPECT_EQ(audio->iTunesId.has_value(), audio->albumArtUrl.has_value());
    }
}

TEST_F(ModelsAtService, FeedInserts) {
    std::shared_ptr<KLUrlAction> action;
    const auto readCards = [&](const char* feed) {
        std::vector<std::string> references;
        const auto card = [&](const JsonObject& json) -> std::shared_ptr<KLFeedInsert> {
            const auto type = json["type"].text();
            if (type == "urlAction") {
                action = KLUrlActionParser().parse(json);
                return action;
            }
            if (type == "solicitation") {
                return KLSolicitationParser().parse(json);
            }
            return std::make_shared<KLFeedInsert>(std::string(json["reference"].text().value()),
                                                  false);
        };
        for (const auto& insert : read(std::string("inserts/") + feed,
                                       std::make_shared<KLClosureParser<KLFeedInsert>>(card))) {
            references.push_back(insert->reference);
        }
        return references;
    };
    EXPECT_EQ(readCards("popular"), (std::vector<std::string>{"editors-picks", "rate-the-app"}));
    EXPECT_EQ(readCards("home"), (std::vector<std::string>{"people-to-follow", "longform-launch"}));
    ASSERT_NE(action, nullptr);
    EXPECT_TRUE(action->closeable);
    EXPECT_EQ(action->actionUrl.absoluteString(), "kelo://upload-longform");
    EXPECT_TRUE(action->details && action->backgroundImage && action->actionIcon);
    ASSERT_TRUE(action->closeUrlPath);
}

} // namespace KeloAPI::testing
