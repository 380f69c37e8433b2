#include "service/store/Feeds.hpp"

#include <algorithm>

namespace KeloService {
namespace {

std::string descending(const Feed& feed) {
    return " ORDER BY " + feed.key + " DESC, p.postId DESC";
}

std::string selection(const Feed& feed) {
    return "SELECT " + feed.key + ", p.postId " + feed.source;
}

std::string compared(const Feed& feed, const std::string& comparison) {
    return " AND (" + feed.key + ", p.postId) " + comparison + " (?2, ?3)";
}

std::vector<Position> readAll(Query& query) {
    std::vector<Position> rows;
    while (query.next()) {
        rows.push_back({query.integer(0), query.integer(1)});
    }
    return rows;
}

} // namespace

Feed allFeed() {
    return {"All posts", Paging::Pages, "FROM posts p WHERE 1", {}, "p.created", {}};
}

Feed homeFeed(std::int64_t userId) {
    return {"Home",
            Paging::Pages,
            "FROM follows f JOIN posts p ON p.userId = f.followeeId WHERE f.userId = ?1",
            userId,
            "p.created",
            {}};
}

Feed popularFeed() {
    return {"Popular now", Paging::TextAnchor, "FROM posts p WHERE 1", {}, "p.popularity", {}};
}

Feed latestFeed() {
    return {"Latest", Paging::NumberAnchor, "FROM posts p WHERE 1", {}, "p.postId", {}};
}

Feed picksFeed() {
    return {"Editors' picks",
            Paging::Pages,
            "FROM posts p WHERE p.pickRank IS NOT NULL",
            {},
            "p.pickRank",
            {}};
}

Feed emptyFeed() {
    return {"Nothing here yet", Paging::Pages, "FROM posts p WHERE 0", {}, "p.postId", {}};
}

Feed userFeed(std::int64_t userId, const std::string& username) {
    return {username, Paging::Pages, "FROM posts p WHERE p.userId = ?1", userId, "p.created", {}};
}

Feed userLikesFeed(std::int64_t userId, const std::string& username) {
    return {"Liked by " + username,
            Paging::Pages,
            "FROM likes l JOIN posts p USING (postId) WHERE l.userId = ?1",
            userId,
            "l.created",
            {}};
}

Feed channelFeed(std::int64_t channelId, const std::string& name) {
    return {name,      Paging::TextAnchor, "FROM posts p WHERE p.channelId = ?1",
            channelId, "p.popularity",     channelId};
}

Feed Feeds::tagFeed(const std::string& tag) {
    const std::string name = tag.starts_with('#') ? tag.substr(1) : tag;
    const auto lock = database_.lock();
    Query query = database_.query("SELECT tagId FROM tags WHERE name = lower(?1)");
    const std::int64_t tagId = query.bind(name).next() ? query.integer(0) : 0;
    return {
        "#" + name, Paging::Pages, "FROM postTags t JOIN posts p USING (postId) WHERE t.tagId = ?1",
        tagId,      "p.created",   {}};
}

std::int64_t Feeds::count(const Feed& feed) {
    const auto lock = database_.lock();
    Query query = database_.query("SELECT count(*) " + feed.source);
    // Feeds without an argument have no ?1 to bind.
    if (feed.argument) {
        query.bind(*feed.argument);
    }
    query.next();
    return query.integer(0);
}

Slice Feeds::fromOffset(const Feed& feed, std::int64_t offset, std::int64_t size) {
    const auto lock = database_.lock();
    Query query = database_.query(selection(feed) + descending(feed) + " LIMIT ?2 OFFSET ?3");
    Slice slice;
    slice.rows = readAll(query.bind(feed.argument, size + 1, offset));
    slice.moreBefore = offset > 0;
    slice.moreAfter = static_cast<std::int64_t>(slice.rows.size()) > size;
    if (slice.moreAfter) {
        slice.rows.pop_back();
    }
    return slice;
}

Slice Feeds::after(const Feed& feed, const std::optional<Position>& position, std::int64_t size) {
    if (!position) {
        return fromOffset(feed, 0, size);
    }
    const auto lock = database_.lock();
    Query query =
        database_.query(selection(feed) + compared(feed, "<") + descending(feed) + " LIMIT ?4");
    return finish(feed, readAll(query.bind(feed.argument, position->key, position->postId, size)));
}

Slice Feeds::before(const Feed& feed, const Position& position, std::int64_t size) {
    const auto lock = database_.lock();
    Query query = database_.query(selection(feed) + compared(feed, ">") + " ORDER BY " + feed.key +
                                  " ASC, p.postId ASC LIMIT ?4");
    std::vector<Position> rows =
        readAll(query.bind(feed.argument, position.key, position.postId, size));
    std::reverse(rows.begin(), rows.end());
    return finish(feed, std::move(rows));
}

Slice Feeds::finish(const Feed& feed, std::vector<Position> rows) {
    Slice slice;
    if (!rows.empty()) {
        slice.moreBefore = exists(feed, ">", rows.front());
        slice.moreAfter = exists(feed, "<", rows.back());
    }
    slice.rows = std::move(rows);
    return slice;
}

bool Feeds::exists(const Feed& feed, const char* comparison, const Position& position) {
    Query query =
        database_.query("SELECT 1 " + feed.source + compared(feed, comparison) + " LIMIT 1");
    return query.bind(feed.argument, position.key, position.postId).next();
}

} // namespace KeloService
