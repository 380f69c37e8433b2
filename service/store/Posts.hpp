#pragma once

#include "service/store/Database.hpp"
#include "service/store/Venues.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace KeloService {

/// What stands of a user beside something that the user did.
struct UserSummary {
    std::int64_t userId = 0;
    std::string username;
    std::string avatarPath;
    bool verified = false;
};

struct Rendition {
    std::string format;
    double rate = 0;
    std::string version;
    std::string path;
};

/// A rendition of a certain post.
struct PostRendition {
    std::int64_t postId = 0;
    Rendition rendition;
};

struct Tag {
    std::int64_t tagId = 0;
    std::string name;
    std::int64_t postCount = 0;
};

/// A stretch of a text that links to a tag, a user or a channel; `start` and `end` count code
/// points.
struct Entity {
    std::int64_t start = 0;
    std::int64_t end = 0;
    std::string type;
    std::int64_t targetId = 0;
    std::string title;
};

struct Like {
    std::int64_t likeId = 0;
    std::int64_t created = 0;
    UserSummary user;
};

struct Repost {
    std::int64_t repostId = 0;
    std::int64_t created = 0;
    UserSummary user;
};

struct Comment {
    std::int64_t commentId = 0;
    std::int64_t created = 0;
    std::string text;
    UserSummary user;
};

/// A line of text beside a post.
struct Byline {
    std::string body;
    std::string iconPath;
    std::optional<Entity> entity;
};

/// The music of a post.
struct Track {
    std::int64_t trackId = 0;
    std::string name;
    std::string artist;
    std::optional<std::int64_t> storeId;
    std::optional<std::string> affiliateToken;
    bool hasTimeline = false;
    std::optional<std::string> artPath;
};

struct Post {
    std::int64_t postId = 0;
    std::int64_t created = 0;
    std::string caption;
    std::string permalinkId;
    std::optional<std::int64_t> channelId;
    /// Of its channel, where it has one.
    std::string channelName;
    std::int64_t loopCount = 0;
    double loopVelocity = 0;
    bool onFire = false;
    std::int64_t likeCount = 0;
    std::int64_t commentCount = 0;
    std::int64_t repostCount = 0;

    UserSummary author;
    std::int64_t authorLoopCount = 0;
    double authorLoopVelocity = 0;
    bool authorIsPrivate = false;

    bool liked = false;
    std::optional<std::int64_t> myRepostId;
    std::vector<Rendition> renditions;
    std::vector<Tag> tags;
    std::vector<Entity> entities;
    std::optional<Venue> venue;
    std::optional<Byline> byline;
    std::optional<Track> track;
    std::vector<Like> likes;
    std::vector<Comment> comments;
};

/// How a post is looked at: by whom, and how much of what hangs on it is wanted.
struct PostView {
    std::optional<std::int64_t> viewerId;
    std::int64_t mostLikes = 0;
    std::int64_t mostComments = 0;
};

/// The service's posts. Safe to use from any thread.
class Posts {
public:
    Posts(Database& database, Venues& venues)
        : database_(database)
        , venues_(venues) {}

    /// Those of the posts that exist, in the given order.
    std::vector<Post> find(const std::vector<std::int64_t>& postIds, const PostView& view);
    bool exists(std::int64_t postId);
    std::optional<std::int64_t> findByPermalink(const std::string& permalinkId);
    /// The rendition whose video lies at this path.
    std::optional<PostRendition> findRendition(const std::string& path);

private:
    std::optional<Post> findOne(std::int64_t postId, const PostView& view);
    void addRenditions(Post& post);
    void addTexts(Post& post);
    void addByline(Post& post);
    void addTrack(Post& post);
    void addLikes(Post& post, std::int64_t most);
    void addComments(Post& post, std::int64_t most);

    Database& database_;
    Venues& venues_;
};

} // namespace KeloService
