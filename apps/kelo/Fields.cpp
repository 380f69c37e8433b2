#include "Fields.hpp"

#include "FeedPost.hpp"
#include "TextForms.hpp"

#include <KeloAPI/KeloAPI.hpp>

namespace KeloHost {

using namespace KeloAPI;

ParameterValue valueOf(const URL& url) {
    return url.absoluteString();
}

ParameterValue valueOf(Date date) {
    return isoText(date);
}

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
            {"iconUrl", valueOf(byline.iconUrl)},
            {"entities", valueOf(byline.entities)}};
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
    return {{"artistName", audio.artistName},
            {"trackName", audio.trackName},
            {"trackId", audio.trackId},
            {"iTunesId", valueOf(audio.iTunesId())},
            {"affiliateToken", valueOf(audio.affiliateToken())},
            {"hasTrackTimeline", audio.hasTrackTimeline()},
            {"albumArtUrl", valueOf(audio.albumArtUrl)}};
}

Parameters fieldsOf(const KLRekelo& rekelo) {
    return {{"rekeloId", valueOf(rekelo.rekeloId)}, {"user", valueOf(rekelo.user)}};
}

Parameters fieldsOf(const KLTag& tag) {
    return {{"tagId", tag.tagId()}, {"name", tag.name()}, {"count", tag.count}};
}

Parameters fieldsOf(const KLVenueCategory& category) {
    return {{"categoryId", category.categoryId()},
            {"shortName", category.shortName()},
            {"iconUrl", valueOf(category.iconUrl)}};
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
    return {{"username", valueOf(user.username)}, {"loopData", valueOf(user.loopData)}};
}

Parameters fieldsOf(const FeedPost& shown) {
    const KLWatchPost& post = *shown.post;
    return {{"postId", valueOf(post.postId)},
            {"user", valueOf(post.user)},
            {"caption", valueOf(post.caption)},
            {"created", valueOf(post.created)},
            {"videoUrl", valueOf(post.videoUrl)},
            {"thumbnailUrl", valueOf(post.thumbnailUrl)},
            {"liked", valueOf(post.liked)},
            {"rekeloed", post.rekeloed()},
            {"currentUserRekelo", valueOf(post.currentUserRekelo)},
            {"channel", valueOf(shown.channel)},
            {"venue", valueOf(shown.venue)},
            {"byline", valueOf(shown.byline)},
            {"audio", valueOf(shown.audio)},
            {"tags", valueOf(shown.tags)},
            {"entities", valueOf(shown.entities)}};
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
            {"category", valueOf(venue.category)}};
}

Parameters fieldsOf(const KLChannel& channel) {
    const auto& timeline = channel.timelineData;
    return {{"channelId", channel.channelId},
            {"name", channel.name},
            {"fontColorHex", channel.fontColorHex},
            {"backgroundColorHex", channel.backgroundColorHex},
            {"iconUrl", valueOf(channel.iconUrl)},
            {"iconRetinaUrl", valueOf(channel.iconRetinaUrl)},
            {"exploreIconRetinaUrl", valueOf(channel.exploreIconRetinaUrl)},
            {"following", channel.following},
            {"created", valueOf(channel.created)},
            {"channelDescription", valueOf(channel.channelDescription)},
            {"vanityPathSuffix", valueOf(channel.vanityPathSuffix)},
            {"timelineData",
             timeline == nullptr ? ParameterValue() : valueOf(elementsOf<FeedPost>(*timeline))},
            {"showRecent", channel.showRecent}};
}

} // namespace KeloHost
