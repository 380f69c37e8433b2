#include "service/store/Posts.hpp"

namespace KeloService {
namespace {

UserSummary readUser(const Query& query, int firstColumn) {
    return {query.integer(firstColumn), query.text(firstColumn + 1), query.text(firstColumn + 2),
            query.boolean(firstColumn + 3)};
}

Post readPost(const Query& query) {
    Post post;
    post.postId = query.integer(0);
    post.created = query.integer(1);
    post.caption = query.text(2);
    post.permalinkId = query.text(3);
    if (!query.isNull(4)) {
        post.channelId = query.integer(4);
    }
    post.loopCount = query.integer(5);
    post.loopVelocity = query.real(6);
    post.onFire = query.boolean(7);
    post.likeCount = query.integer(8);
    post.commentCount = query.integer(9);
    post.repostCount = query.integer(10);
    post.author = readUser(query, 11);
    post.authorLoopCount = query.integer(15);
    post.authorLoopVelocity = query.real(16);
    post.authorIsPrivate = query.boolean(17);
    post.liked = query.boolean(18);
    if (!query.isNull(19)) {
        post.myRepostId = query.integer(19);
    }
    post.channelName = query.text(20);
    return post;
}

} // namespace

std::vector<Post> Posts::find(const std::vector<std::int64_t>& postIds, const PostView& view) {
    const auto lock = database_.lock();
    std::vector<Post> posts;
    posts.reserve(postIds.size());
    for (const std::int64_t postId : postIds) {
        if (auto post = findOne(postId, view)) {
            posts.push_back(std::move(*post));
        }
    }
    return posts;
}

bool Posts::exists(std::int64_t postId) {
    const auto lock = database_.lock();
    return database_.query("SELECT 1 FROM posts WHERE postId = ?1").bind(postId).next();
}

std::optional<std::int64_t> Posts::findByPermalink(const std::string& permalinkId) {
    const auto lock = database_.lock();
    Query query = database_.query("SELECT postId FROM posts WHERE permalinkId = ?1");
    return query.bind(permalinkId).next() ? std::optional(query.integer(0)) : std::nullopt;
}

std::optional<PostRendition> Posts::findRendition(const std::string& path) {
    const auto lock = database_.lock();
    Query query =
        database_.query("SELECT postId, format, rate, version FROM renditions WHERE path = ?1");
    if (!query.bind(path).next()) {
        return std::nullopt;
    }
    return PostRendition{query.integer(0), {query.text(1), query.real(2), query.text(3), path}};
}

std::optional<Post> Posts::findOne(std::int64_t postId, const PostView& view) {
    Query query = database_.query(
        "SELECT p.postId, p.created, p.caption, p.permalinkId, p.channelId, p.loopCount, "
        "p.loopVelocity, p.onFire, p.likeCount, p.commentCount, p.repostCount, "
        "u.userId, u.username, u.avatarPath, u.verified, u.loopCount, u.loopVelocity, u.private, "
        "EXISTS (SELECT 1 FROM likes l WHERE l.postId = p.postId AND l.userId = ?2), "
        "(SELECT r.repostId FROM reposts r WHERE r.postId = p.postId AND r.userId = ?2), "
        "(SELECT c.name FROM channels c WHERE c.channelId = p.channelId) "
        "FROM posts p JOIN users u USING (userId) WHERE p.postId = ?1");
    if (!query.bind(postId, view.viewerId).next()) {
        return std::nullopt;
    }
    Post post = readPost(query);
    addRenditions(post);
    addTexts(post);
    post.venue = venues_.ofPost(postId);
    addByline(post);
    addTrack(post);
    addLikes(post, view.mostLikes);
    addComments(post, view.mostComments);
    return post;
}

void Posts::addRenditions(Post& post) {
    Query query = database_.query("SELECT format, rate, version, path FROM renditions "
                                  "WHERE postId = ?1 ORDER BY position");
    query.bind(post.postId);
    while (query.next()) {
        post.renditions.push_back({query.text(0), query.real(1), query.text(2), query.text(3)});
    }
}

void Posts::addTexts(Post& post) {
    Query tags =
        database_.query("SELECT tagId, name, postCount FROM postTags JOIN tags USING (tagId) "
                        "WHERE postId = ?1 ORDER BY tagId");
    tags.bind(post.postId);
    while (tags.next()) {
        post.tags.push_back({tags.integer(0), tags.text(1), tags.integer(2)});
    }
    Query entities = database_.query("SELECT start, end, type, targetId, title FROM entities "
                                     "WHERE postId = ?1 ORDER BY start");
    entities.bind(post.postId);
    while (entities.next()) {
        post.entities.push_back({entities.integer(0), entities.integer(1), entities.text(2),
                                 entities.integer(3), entities.text(4)});
    }
}

void Posts::addByline(Post& post) {
    Query query = database_.query("SELECT body, iconPath, start, end, type, targetId, title "
                                  "FROM bylines WHERE postId = ?1");
    if (!query.bind(post.postId).next()) {
        return;
    }
    post.byline = Byline{query.text(0), query.text(1), {}};
    if (!query.isNull(2)) {
        post.byline->entity = Entity{query.integer(2), query.integer(3), query.text(4),
                                     query.integer(5), query.text(6)};
    }
}

void Posts::addTrack(Post& post) {
    Query query = database_.query(
        "SELECT trackId, name, artist, hasTimeline, storeId, affiliateToken, artPath "
        "FROM postExtras JOIN tracks USING (trackId) WHERE postId = ?1");
    if (!query.bind(post.postId).next()) {
        return;
    }
    Track track{query.integer(0), query.text(1), query.text(2), {}, {}, query.boolean(3), {}};
    if (!query.isNull(4)) {
        track.storeId = query.integer(4);
    }
    if (!query.isNull(5)) {
        track.affiliateToken = query.text(5);
    }
    if (!query.isNull(6)) {
        track.artPath = query.text(6);
    }
    post.track = std::move(track);
}

void Posts::addLikes(Post& post, std::int64_t most) {
    Query query =
        database_.query("SELECT l.likeId, l.created, u.userId, u.username, u.avatarPath, "
                        "u.verified FROM likes l JOIN users u USING (userId) "
                        "WHERE l.postId = ?1 ORDER BY l.created DESC, l.likeId DESC LIMIT ?2");
    query.bind(post.postId, most);
    while (query.next()) {
        post.likes.push_back({query.integer(0), query.integer(1), readUser(query, 2)});
    }
}

void Posts::addComments(Post& post, std::int64_t most) {
    Query query = database_.query(
        "SELECT c.commentId, c.created, c.comment, u.userId, u.username, u.avatarPath, u.verified "
        "FROM comments c JOIN users u USING (userId) "
        "WHERE c.postId = ?1 ORDER BY c.created DESC, c.commentId DESC LIMIT ?2");
    query.bind(post.postId, most);
    while (query.next()) {
        post.comments.push_back(
            {query.integer(0), query.integer(1), query.text(2), readUser(query, 3)});
    }
}

} // namespace KeloService
