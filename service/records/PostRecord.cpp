#include "service/records/PostRecord.hpp"

#include "service/DateText.hpp"
#include "service/records/UserRecord.hpp"
#include "service/records/VenueRecord.hpp"

#include <algorithm>
#include <cmath>

namespace KeloService {
namespace {

/// The service writes whole rates without a fraction.
Json rateNumber(double rate) {
    return rate == std::floor(rate) ? Json(static_cast<std::int64_t>(rate)) : Json(rate);
}

Json videoUrls(const Post& post, const std::string& baseUrl) {
    Json list = Json::array();
    for (const Rendition& rendition : post.renditions) {
        list.push_back({{"videoUrl", baseUrl + rendition.path},
                        {"format", rendition.format},
                        {"rate", rateNumber(rendition.rate)},
                        {"id", rendition.version}});
    }
    return list;
}

Json tags(const Post& post) {
    Json list = Json::array();
    for (const Tag& tag : post.tags) {
        list.push_back({{"tagId", tag.tagId}, {"tag", tag.name}, {"postCount", tag.postCount}});
    }
    return list;
}

std::string linkOf(const Entity& entity) {
    if (entity.type == "tag") {
        return "kelo://tag/" + entity.title;
    }
    const std::string place = entity.type == "channel" ? "channel-id/" : "user-id/";
    return "kelo://" + place + std::to_string(entity.targetId);
}

Json entityRecord(const Entity& entity) {
    return {{"type", entity.type},
            {"id", entity.targetId},
            {"title", entity.title},
            {"link", linkOf(entity)},
            {"range", {entity.start, entity.end}}};
}

Json entities(const Post& post) {
    Json list = Json::array();
    for (const Entity& entity : post.entities) {
        list.push_back(entityRecord(entity));
    }
    return list;
}

Json bylineRecord(const Byline& byline, const std::string& baseUrl) {
    Json record{
        {"body", byline.body}, {"iconUrl", baseUrl + byline.iconPath}, {"entities", Json::array()}};
    if (byline.entity) {
        record["entities"].push_back(entityRecord(*byline.entity));
    }
    return record;
}

Json audioRecord(const Track& track, const std::string& baseUrl) {
    Json description{{"trackName", track.name},
                     {"artistName", track.artist},
                     {"hasAudioTrackTimeline", track.hasTimeline}};
    if (track.storeId) {
        description["itunesId"] = *track.storeId;
    }
    if (track.affiliateToken) {
        description["itunes_affiliate_token"] = *track.affiliateToken;
    }
    if (track.artPath) {
        description["albumArtUrl"] = baseUrl + *track.artPath;
    }
    return {{"trackId", track.trackId}, {"track", description}};
}

Json likes(const Post& post, const std::string& baseUrl) {
    Json records = Json::array();
    for (const Like& like : post.likes) {
        records.push_back(likeRecord(like, baseUrl));
    }
    return {{"count", post.likeCount}, {"records", records}};
}

Json comments(const Post& post, const std::string& baseUrl) {
    Json records = Json::array();
    for (const Comment& comment : post.comments) {
        Json record{{"commentId", comment.commentId},
                    {"created", dateText(comment.created)},
                    {"comment", comment.text}};
        addUserSummary(record, comment.user, baseUrl);
        records.push_back(record);
    }
    return {{"count", post.commentCount}, {"records", records}};
}

} // namespace

Json likeRecord(const Like& like, const std::string& baseUrl) {
    Json record{{"likeId", like.likeId}, {"created", dateText(like.created)}};
    addUserSummary(record, like.user, baseUrl);
    return record;
}

Json repostRecord(const Repost& repost, const std::string& baseUrl) {
    Json record{{"repostId", repost.repostId}, {"created", dateText(repost.created)}};
    addUserSummary(record, repost.user, baseUrl);
    return record;
}

Json postRecord(const Post& post, const std::string& baseUrl) {
    Json record{{"postId", post.postId},
                {"created", dateText(post.created)},
                {"description", post.caption},
                {"thumbnailUrl", baseUrl + "/media/thumbnails/" + post.permalinkId + ".png"},
                {"videoUrls", videoUrls(post, baseUrl)},
                {"permalinkUrl", baseUrl + "/v/" + post.permalinkId},
                {"shareUrl", baseUrl + "/v/" + post.permalinkId + "?via=share"},
                {"liked", post.liked}};
    if (post.myRepostId) {
        record["myRepostId"] = *post.myRepostId;
    }
    addUserSummary(record, post.author, baseUrl);
    record["private"] = post.authorIsPrivate;
    record["loopCount"] = post.authorLoopCount;
    record["loopVelocity"] = post.authorLoopVelocity;
    record["loops"] = {
        {"count", post.loopCount}, {"velocity", post.loopVelocity}, {"onFire", post.onFire}};
    record["likes"] = likes(post, baseUrl);
    record["comments"] = comments(post, baseUrl);
    record["reposts"] = {{"count", post.repostCount}};
    record["tags"] = tags(post);
    record["entities"] = entities(post);
    if (post.channelId) {
        record["channelId"] = *post.channelId;
        record["channel"] = post.channelName;
    }
    if (post.venue) {
        addVenue(record, *post.venue, baseUrl);
    }
    if (post.byline) {
        record["byline"] = bylineRecord(*post.byline, baseUrl);
    }
    if (post.track) {
        record["audio"] = audioRecord(*post.track, baseUrl);
    }
    record["explicitContent"] = false;
    record["promoted"] = false;
    return record;
}

} // namespace KeloService
