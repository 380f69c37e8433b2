#include "service/routes/Guard.hpp"
#include "service/routes/Records.hpp"
#include "service/routes/Routes.hpp"

#include <algorithm>

namespace KeloService {
namespace {

/// How much of likes and comments a record carries, unless the request wants something else.
constexpr std::int64_t usualNested = 3;
constexpr std::int64_t mostNested = 10;

// The author's fields and the venue's, which has no country and no coordinates here, lie at the
// record's top level.
constexpr const char* postSelection = R"sql(
SELECT p.postId, p.created AS "created@", p.caption AS description,
    '/media/thumbnails/' || p.permalinkId || '.png' AS "thumbnailUrl/",
    '/v/' || p.permalinkId AS "permalinkUrl/",
    '/v/' || p.permalinkId || '?via=share' AS "shareUrl/",
    EXISTS (SELECT 1 FROM likes l WHERE l.postId = p.postId AND l.userId = ?2) AS "liked?",
    (SELECT r.repostId FROM reposts r WHERE r.postId = p.postId AND r.userId = ?2) AS myRepostId,
    u.userId, u.username, u.avatarPath AS "avatarUrl/", u.verified AS "verified?",
    u.private AS "private?", u.loopCount, u.loopVelocity,
    p.loopCount AS "loops.count", p.loopVelocity AS "loops.velocity", p.onFire AS "loops.onFire?",
    p.likeCount AS "likes.count", p.commentCount AS "comments.count",
    p.repostCount AS "reposts.count", p.channelId, c.name AS channel,
    v.venueId AS foursquareVenueId, v.name AS venueName, v.address AS venueAddress,
    v.city AS venueCity, v.state AS venueState, v.categoryId AS venueCategoryId,
    v.categoryName AS venueCategoryShortName,
    '/media/icons/category-' || v.categoryId || '_32.png' AS "venueCategoryIconUrl/",
    b.body AS "byline.body", b.iconPath AS "byline.iconUrl/",
    t.trackId AS "audio.trackId", t.name AS "audio.track.trackName",
    t.artist AS "audio.track.artistName", t.hasTimeline AS "audio.track.hasAudioTrackTimeline?",
    t.storeId AS "audio.track.itunesId",
    t.affiliateToken AS "audio.track.itunes_affiliate_token",
    t.artPath AS "audio.track.albumArtUrl/",
    0 AS "explicitContent?", 0 AS "promoted?"
FROM posts p JOIN users u USING (userId)
    LEFT JOIN channels c USING (channelId)
    LEFT JOIN venues v USING (venueId)
    LEFT JOIN tracks t USING (trackId)
    LEFT JOIN bylines b ON b.postId = p.postId
WHERE p.postId = ?1)sql";

// The service writes rates without a fraction.
constexpr const char* renditionSelection = R"sql(
SELECT path AS "videoUrl/", format, CAST(rate AS INTEGER) AS rate, version AS id
FROM renditions WHERE postId = ?1 ORDER BY position)sql";

constexpr const char* tagSelection = R"sql(
SELECT tagId, name AS tag, postCount
FROM postTags JOIN tags USING (tagId) WHERE postId = ?1 ORDER BY tagId)sql";

/// The links of a caption ("entities") or of a byline ("bylines").
std::string linkSelection(const std::string& table) {
    return R"sql(
SELECT type, targetId AS id, title, 'kelo://' || CASE type
    WHEN 'tag' THEN 'tag/' || title
    WHEN 'channel' THEN 'channel-id/' || targetId
    ELSE 'user-id/' || targetId END AS link,
    start AS "range.0", end AS "range.1"
FROM )sql" +
           table + " WHERE postId = ?1 AND start IS NOT NULL ORDER BY start";
}

Json newestMarks(const Context& context, const char* noun, std::int64_t postId, std::int64_t most) {
    return records(context,
                   markSelection(noun) + "ORDER BY m.created DESC, m." + noun + "Id DESC LIMIT ?2",
                   postId, most);
}

Json postRecord(const Context& context, std::int64_t postId, const PostView& view) {
    Json post = records(context, postSelection, postId, view.viewer).at(0);
    post["videoUrls"] = records(context, renditionSelection, postId);
    post["likes"]["records"] = newestMarks(context, "like", postId, view.mostLikes);
    post["comments"]["records"] = newestMarks(context, "comment", postId, view.mostComments);
    post["tags"] = records(context, tagSelection, postId);
    post["entities"] = records(context, linkSelection("entities"), postId);
    if (post.contains("byline")) {
        post["byline"]["entities"] = records(context, linkSelection("bylines"), postId);
    }
    return post;
}

std::int64_t nested(const Call& call, const char* name) {
    return std::clamp<std::int64_t>(readInteger(call, name, usualNested), 0, mostNested);
}

Answer showPost(const Call& call, const Context& context) {
    const PostView view = readView(call, sessionUser(call, context));
    return dataAnswer(postRecord(context, requireExisting(call, context, "post"), view));
}

} // namespace

PostView readView(const Call& call, const std::optional<std::int64_t>& user) {
    return {user, nested(call, "l_max"), nested(call, "c_max")};
}

Json postRecords(const Context& context, const std::vector<std::int64_t>& postIds,
                 const PostView& view) {
    Json list = Json::array();
    for (const std::int64_t postId : postIds) {
        list.push_back(postRecord(context, postId, view));
    }
    return list;
}

void addPostRoutes(Routes& routes) {
    routes.add("GET", "/posts/:id", showPost);
}

} // namespace KeloService
