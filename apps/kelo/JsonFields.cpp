#include "JsonFields.hpp"

#include "DateText.hpp"
#include "FeedPost.hpp"

#include <KeloAPI/model/KLByline.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPI/model/KLPostAudioMetadata.hpp>
#include <KeloAPI/model/KLPostsMosaic.hpp>
#include <KeloAPI/model/KLRekelo.hpp>
#include <KeloAPI/model/KLSolicitation.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/model/KLUrlAction.hpp>
#include <KeloAPI/model/KLUserMosaic.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/model/PostThumbnail.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>

namespace KeloHost {

using namespace KeloAPI;

// The models that stand only inside others.
static Parameters fieldsOf(const KLByline& byline);
static Parameters fieldsOf(const KLPostAudioMetadata& audio);
static Parameters fieldsOf(const KLRekelo& rekelo);

namespace {

ParameterValue textOf(const std::optional<URL>& url) {
    return url ? ParameterValue(url->absoluteString()) : ParameterValue();
}

ParameterValue textOf(const std::optional<Date>& date) {
    return date ? ParameterValue(isoText(*date)) : ParameterValue();
}

template <class T>
ParameterValue objectOf(const std::shared_ptr<T>& object) {
    return object == nullptr ? ParameterValue() : ParameterValue(fieldsOf(*object));
}

template <class T>
ParameterList listOf(const std::vector<std::shared_ptr<T>>& objects) {
    ParameterList list;
    list.reserve(objects.size());
    for (const auto& object : objects) {
        list.emplace_back(fieldsOf(*object));
    }
    return list;
}

/// The elements of a list, all of them of this class.
template <class T>
ParameterList elementsOf(const KLPagedData& data) {
    ParameterList list;
    for (const auto& element : data) {
        list.emplace_back(fieldsOf(dynamic_cast<const T&>(*element)));
    }
    return list;
}

void addFields(Parameters& fields, const KLUrlAction& action) {
    fields.insert({{"kind", "urlAction"},
                   {"title", action.title()},
                   {"actionTitle", action.actionTitle()},
                   {"actionUrl", action.actionUrl().absoluteString()},
                   {"backgroundImage", textOf(action.backgroundImage())},
                   {"backgroundVideo", textOf(action.backgroundVideo())},
                   {"details", valueOf(action.details())},
                   {"actionIcon", textOf(action.actionIcon())},
                   {"closeUrlPath", valueOf(action.closeUrlPath())}});
}

void addFields(Parameters& fields, const KLSolicitation& solicitation) {
    fields.insert(
        {{"kind", "solicitation"}, {"closeUrlPath", valueOf(solicitation.closeUrlPath())}});
}

void addFields(Parameters& fields, const KLPostsMosaic& mosaic) {
    fields.insert({{"kind", "postsMosaic"},
                   {"title", mosaic.title()},
                   {"subtitle", mosaic.subtitle()},
                   {"link", mosaic.link()},
                   {"type", static_cast<int>(mosaic.type())},
                   {"pinnable", mosaic.pinnable()},
                   {"posts", elementsOf<FeedPost>(*mosaic.posts())}});
}

void addFields(Parameters& fields, const KLUserMosaic& mosaic) {
    fields.insert({{"kind", "userMosaic"},
                   {"title", mosaic.title()},
                   {"subtitle", mosaic.subtitle()},
                   {"link", mosaic.link()},
                   {"users", elementsOf<KLWatchUser>(*mosaic.users())}});
}

/// Adds the fields of the card's class, if it is this one.
template <class Card>
bool addFieldsOf(Parameters& fields, const KLFeedInsert& insert) {
    const auto* card = dynamic_cast<const Card*>(&insert);
    if (card != nullptr) {
        addFields(fields, *card);
    }
    return card != nullptr;
}

} // namespace

ParameterValue valueOf(const Number& number) {
    switch (number.kind()) {
    case Number::Kind::Boolean:
        return number.boolValue();
    case Number::Kind::Signed:
        return number.int64Value();
    case Number::Kind::Unsigned:
        return number.uint64Value();
    default:
        return number.doubleValue();
    }
}

Parameters fieldsOf(const KLByline& byline) {
    return {{"text", byline.text()},
            {"iconUrl", textOf(byline.iconUrl)},
            {"entities", listOf(byline.entities)}};
}

Parameters fieldsOf(const KLEntity& entity) {
    return {{"idString", valueOf(entity.idString())},
            {"type", valueOf(entity.type())},
            {"title", entity.title()},
            {"link", entity.link()},
            {"range",
             Parameters{{"location", entity.range.location}, {"length", entity.range.length}}}};
}

Parameters fieldsOf(const KLPostAudioMetadata& audio) {
    const auto& storeId = audio.iTunesId();
    return {{"artistName", audio.artistName},
            {"trackName", audio.trackName},
            {"trackId", audio.trackId},
            {"iTunesId", storeId ? valueOf(*storeId) : ParameterValue()},
            {"affiliateToken", valueOf(audio.affiliateToken())},
            {"hasTrackTimeline", audio.hasTrackTimeline()},
            {"albumArtUrl", textOf(audio.albumArtUrl)}};
}

Parameters fieldsOf(const KLRekelo& rekelo) {
    return {{"rekeloId", valueOf(rekelo.rekeloId)}, {"user", objectOf(rekelo.user)}};
}

Parameters fieldsOf(const KLTag& tag) {
    return {{"tagId", tag.tagId()}, {"name", tag.name()}, {"count", tag.count}};
}

Parameters fieldsOf(const KLVenueCategory& category) {
    return {{"categoryId", category.categoryId()},
            {"shortName", category.shortName()},
            {"iconUrl", textOf(category.iconUrl)}};
}

Parameters fieldsOf(const LoopData& loops) {
    return {{"count", valueOf(loops.count)},
            {"velocity", valueOf(loops.velocity)},
            {"created", isoText(loops.created)},
            {"onFire", loops.onFire}};
}

Parameters fieldsOf(const PostThumbnail& thumbnail) {
    return {{"url", thumbnail.url().absoluteString()},
            {"width", thumbnail.width()},
            {"height", thumbnail.height()}};
}

Parameters fieldsOf(const SoundboardSound& sound) {
    return {{"soundId", sound.soundId()},
            {"name", sound.name()},
            {"soundUrl", sound.soundUrl().absoluteString()},
            {"featured", sound.featured()},
            {"sourcePostId", valueOf(sound.sourcePostId())}};
}

Parameters fieldsOf(const KLWatchUser& user) {
    return {{"username", valueOf(user.username)}, {"loopData", objectOf(user.loopData)}};
}

Parameters fieldsOf(const FeedPost& shown) {
    const KLWatchPost& post = *shown.post;
    return {{"postId", valueOf(post.postId)},
            {"user", objectOf(post.user)},
            {"caption", valueOf(post.caption)},
            {"created", textOf(post.created)},
            {"videoUrl", valueOf(post.videoUrl)},
            {"thumbnailUrl", valueOf(post.thumbnailUrl)},
            {"liked", valueOf(post.liked)},
            {"rekeloed", post.rekeloed()},
            {"currentUserRekelo", objectOf(post.currentUserRekelo)},
            {"channel", valueOf(shown.channel)},
            {"venue", objectOf(shown.venue)},
            {"byline", objectOf(shown.byline)},
            {"audio", objectOf(shown.audio)},
            {"tags", listOf(shown.tags)},
            {"entities", listOf(shown.entities)}};
}

Parameters fieldsOf(const KLVenue& venue) {
    return {{"foursquareVenueId", venue.foursquareVenueId()},
            {"name", venue.name()},
            {"address", valueOf(venue.address)},
            {"city", valueOf(venue.city)},
            {"state", valueOf(venue.state)},
            {"country", valueOf(venue.country)},
            {"latitude", venue.latitude},
            {"longitude", venue.longitude},
            {"category", objectOf(venue.category)}};
}

Parameters fieldsOf(const KLChannel& channel) {
    const auto& timeline = channel.timelineData;
    return {{"channelId", channel.channelId},
            {"name", channel.name},
            {"fontColorHex", channel.fontColorHex},
            {"backgroundColorHex", channel.backgroundColorHex},
            {"iconUrl", textOf(channel.iconUrl)},
            {"iconRetinaUrl", textOf(channel.iconRetinaUrl)},
            {"exploreIconRetinaUrl", textOf(channel.exploreIconRetinaUrl)},
            {"following", channel.following},
            {"created", textOf(channel.created)},
            {"channelDescription", valueOf(channel.channelDescription)},
            {"vanityPathSuffix", valueOf(channel.vanityPathSuffix)},
            {"timelineData", timeline ? elementsOf<FeedPost>(*timeline) : ParameterValue()},
            {"showRecent", channel.showRecent}};
}

Parameters fieldsOf(const KLFeedInsert& insert) {
    Parameters fields = {{"reference", insert.reference()}, {"closeable", insert.closeable()}};
    const bool known =
        addFieldsOf<KLUrlAction>(fields, insert) || addFieldsOf<KLSolicitation>(fields, insert) ||
        addFieldsOf<KLPostsMosaic>(fields, insert) || addFieldsOf<KLUserMosaic>(fields, insert);
    if (!known) {
        fields.emplace("kind", ParameterValue());
    }
    return fields;
}

} // namespace KeloHost
