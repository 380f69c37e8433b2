#include "Calls.hpp"
#include "Steps.hpp"

#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>
#include <KeloAPI/model/KLByline.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLPagedDataParser.hpp>
#include <KeloAPI/model/KLPostAudioMetadata.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/parsing/AnyObjectJsonParser.hpp>
#include <KeloAPI/parsing/KLClosureParser.hpp>

#include <optional>

namespace KeloTour {

using namespace KeloAPI;

namespace {

void channelWithTimeline() {
    const auto posts = std::make_shared<AnyObjectParserAdaptor>(std::make_shared<PostParser>());
    const auto parser =
        std::make_shared<KLChannelParser>(std::make_shared<KLChannelParser::TimelineParser>(posts));
    const auto channel = readOne(endpointAt("channels/3", {{"size", 4}}), parser);
    came("the channel " + channel->name + ": " + channel->channelDescription.value_or("") +
         ", on #" + channel->backgroundColorHex);
    check(channel->timelineData != nullptr, "it has no timeline");
    const auto& page = *channel->timelineData;
    came(std::to_string(page.count()) + " of its " + std::to_string(page.metadata()->count()) +
         " posts came with it");
    check(page.count() == 4, "it should be 4");
    const auto& named = page.metadata()->channel();
    check(named != nullptr && *named == *channel, "the page does not name its channel");
    note("the page's own metadata names the same channel");
}

/// What the first posts of a feed have beside them; the last one of each kind.
struct Found {
    std::shared_ptr<KLVenue> venue;
    std::shared_ptr<KLByline> byline;
    std::shared_ptr<KLPostAudioMetadata> audio;
    std::size_t entities = 0;
    /// The last entity that stands behind a character of two UTF-16 units, and its caption.
    std::shared_ptr<KLEntity> moved;
    std::string caption;
};

void look(const JsonObject& record, Found& found) {
    if (record["venueName"].exists()) {
        found.venue = KLVenueParser().parse(record);
    }
    if (const auto byline = record["byline"].object()) {
        found.byline = KLBylineParser().parse(*byline);
    }
    if (const auto audio = record["audio"].object()) {
        found.audio = KLPostAudioMetadata::fromJSON(*audio);
    }
    const std::string caption(record["description"].text().value_or(""));
    const KLEntityParser parser(caption);
    const auto entities = record["entities"].objects().value_or(JsonObjectList());
    for (const JsonObject json : entities) {
        const auto entity = parser.parse(json);
        ++found.entities;
        const auto offsets = json["range"].array().value();
        if (entity->range.location > (*offsets.begin()).integer()) {
            found.moved = entity;
            found.caption = caption;
        }
    }
}

void besidePosts() {
    const auto found = std::make_shared<Found>();
    const auto parser = std::make_shared<KLClosureParser<KLWatchPost>>(
        [found](const JsonObject& record) -> std::shared_ptr<KLWatchPost> {
            look(record, *found);
            return PostParser().parse(record);
        });
    const auto posts = readAll(endpointAt("timelines/all", {{"size", 100}}), parser);
    check(posts.size() == 100, "there should be 100 posts");
    check(found->venue && found->byline && found->audio && found->moved, "something is missing");
    came("a venue: " + found->venue->name() + ", " + found->venue->city.value_or(""));
    came("a byline: " + found->byline->text());
    came("music: " + found->audio->trackName + " by " + found->audio->artistName);
    came(std::to_string(found->entities) +
         " linked stretches of captions, one in: " + found->caption);
    const Range& range = found->moved->range;
    note(found->moved->title() + " is linked to " + found->moved->applicationLink() +
         " and stands at the UTF-16 units " + std::to_string(range.location) + " to " +
         std::to_string(range.location + range.length));
}

void venueInTheOtherForm() {
    const auto venue = readOne(endpointAt("venues/50a1f0c2e4b0000000000005"),
                               std::make_shared<KLFoursquareVenueParser>());
    came(venue->name() + ", " + venue->city.value_or("") + ", " + venue->country.value_or("") +
         ", at " + std::to_string(venue->latitude) + ", " + std::to_string(venue->longitude));
    check(venue->category != nullptr && venue->category->iconUrl.has_value(),
          "it has no category with an icon");
    came("a " + venue->category->shortName() + ", shown as " +
         venue->category->iconUrl->absoluteString());
}

/// What a phone would keep between two launches, and find again.
void archives() {
    const auto channel = readOne(endpointAt("channels/3"), std::make_shared<KLChannelParser>());
    const Data archive = KeyedArchiver::archivedData(channel);
    came(std::to_string(archive.size()) + " bytes of " +
         KeyedUnarchiver::rootClassName(archive).value_or("nothing"));
    const auto again = KeyedUnarchiver::unarchive<KLChannel>(archive);
    check(again != nullptr && *again == *channel && again->name == channel->name &&
              again->iconUrl == channel->iconUrl && again->created == channel->created &&
              again->channelDescription == channel->channelDescription,
          "what is restored is another channel");
    came("restored: " + again->name);
    const auto venue = readOne(endpointAt("venues/50a1f0c2e4b0000000000005"),
                               std::make_shared<KLFoursquareVenueParser>());
    const auto place = KeyedUnarchiver::unarchive<KLVenue>(KeyedArchiver::archivedData(venue));
    check(place != nullptr && place->category != nullptr && place->latitude == venue->latitude &&
              place->category->iconUrl == venue->category->iconUrl,
          "what is restored is another venue");
    came("restored: " + place->name() + ", a " + place->category->shortName());
    const Data half(std::string(archive.text().substr(0, archive.size() / 2)));
    check(KeyedUnarchiver::unarchive<KLChannel>(half) == nullptr, "half an archive was read");
    note("half of the bytes restore nothing");
}

} // namespace

void tourModels(Tour& tour) {
    tour.step("A channel with the first page of its timeline", channelWithTimeline);
    tour.step("What stands beside posts", besidePosts);
    tour.step("A venue in its nested form", venueInTheOtherForm);
    tour.step("A channel and a venue, archived and restored", archives);
}

} // namespace KeloTour
