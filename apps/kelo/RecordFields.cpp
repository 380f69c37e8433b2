#include "Feed.hpp"
#include "Records.hpp"
#include "Text.hpp"

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
    return {{"text", byline.text},
            {"iconUrl", valueOf(byline.iconUrl)},
            {"entities", valueOf(byline.entities)}};
}

Parameters fieldsOf(const KLEntity& entity) {
    return {{"idString", valueOf(entity.idString)},
            {"type", valueOf(entity.type)},
            {"title", entity.title},
            {"link", entity.link},
            {"range",
             Parameters{{"location", entity.range.location}, {"length", entity.range.length}}}};
}

Parameters fieldsOf(const KLPostAudioMetadata& audio) {
    return {{"artistName", audio.artistName},
            {"trackName", audio.trackName},
            {"trackId", audio.trackId},
            {"iTunesId", valueOf(audio.iTunesId)},
            {"affiliateToken", valueOf(audio.affiliateToken)},
            {"hasTrackTimeline", audio.hasTrackTimeline},
            {"albumArtUrl", valueOf(audio.albumArtUrl)}};
}

Parameters fieldsOf(const KLRekelo& rekelo) {
    return {{"rekeloId", valueOf(rekelo.rekeloId)}, {"user", valueOf(rekelo.user)}};
}

Parameters fieldsOf(const KLTag& tag) {
    return {{"tagId", tag.tagId}, {"name", tag.name}, {"count", tag.count}};
}

Parameters fieldsOf(const KLVenueCategory& category) {
    return {{"categoryId", category.categoryId},
            {"shortName", category.shortName},
            {"iconUrl", valueOf(category.iconUrl)}};
}

Parameters fieldsOf(const LoopData& loops) {
    return {{"count", valueOf(loops.count)},
            {"velocity", valueOf(loops.velocity)},
            {"created", isoText(loops.created)},
            {"onFire", loops.onFire}};
}

Parameters fieldsOf(const PostThumbnail& thumbnail) {
    return {{"url", thumbnail.url.absoluteString()},
            {"width", thumbnail.width},
            {"height", thumbnail.height}};
}

Parameters fieldsOf(const SoundboardSound& sound) {
    return {{"soundId", sound.soundId},
            {"name", sound.name},
            {"soundUrl", sound.soundUrl.absoluteString()},
            {"featured", sound.featured},
            {"sourcePostId", valueOf(sound.sourcePostId)}};
}

Parameters fieldsOf(const KLWatchUser& user) {
    return {{"username", valueOf(user.username)}, {"loopData", valueOf(user.loopData)}};
}

Parameters fieldsOf(const FeedUser& shown) {
    Parameters fields = fieldsOf(*shown.user);
    fields.emplace("userId", valueOf(shown.userId));
    return fields;
}

Parameters fieldsOf(const FeedPost& shown) {
    const KLWatchPost& post = *shown.post;
    return {{"postId", valueOf(post.postId)},
            {"user", valueOf(shown.author)},
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
    return {{"foursquareVenueId", venue.foursquareVenueId},
            {"name", venue.name},
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

Parameters fieldsOf(const KLFeedInsert& card) {
    Parameters fields = {
        {"reference", card.reference}, {"closeable", card.closeable}, {"kind", nullptr}};
    Parameters more;
    if (const auto* action = dynamic_cast<const KLUrlAction*>(&card)) {
        more = {{"kind", "urlAction"},
                {"title", action->title},
                {"actionTitle", action->actionTitle},
                {"actionUrl", valueOf(action->actionUrl)},
                {"backgroundImage", valueOf(action->backgroundImage)},
                {"backgroundVideo", valueOf(action->backgroundVideo)},
                {"details", valueOf(action->details)},
                {"actionIcon", valueOf(action->actionIcon)},
                {"closeUrlPath", valueOf(action->closeUrlPath)}};
    } else if (const auto* prompt = dynamic_cast<const KLSolicitation*>(&card)) {
        more = {{"kind", "solicitation"}, {"closeUrlPath", valueOf(prompt->closeUrlPath)}};
    } else if (const auto* mosaic = dynamic_cast<const KLPostsMosaic*>(&card)) {
        more = {{"kind", "postsMosaic"},
                {"title", mosaic->title},
                {"subtitle", mosaic->subtitle},
                {"link", mosaic->link},
                {"type", static_cast<int>(mosaic->type)},
                {"pinnable", mosaic->pinnable},
                {"posts", valueOf(elementsOf<FeedPost>(*mosaic->posts))}};
    } else if (const auto* people = dynamic_cast<const KLUserMosaic*>(&card)) {
        more = {{"kind", "userMosaic"},
                {"title", people->title},
                {"subtitle", people->subtitle},
                {"link", people->link},
                {"users", valueOf(elementsOf<FeedUser>(*people->users))}};
    }
    more.merge(fields);
    return more;
}

} // namespace KeloHost
