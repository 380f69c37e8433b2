#pragma once

#include "service/store/Database.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace KeloService {

/// How clients move through a feed.
enum class Paging {
    /// By "page", "nextPage" and "previousPage".
    Pages,
    /// By an opaque text under "anchor".
    TextAnchor,
    /// By a number under "anchor".
    NumberAnchor,
};

/// A list of posts: where it comes from and how it is sorted. Made by the functions below.
struct Feed {
    std::string title;
    Paging paging = Paging::Pages;
    /// FROM and WHERE of its posts (as p); ?1 stands for `argument`.
    std::string source;
    std::optional<std::int64_t> argument;
    /// Posts are sorted by this expression and then by their id, the largest first.
    std::string key;
    std::optional<std::int64_t> channelId;
};

Feed allFeed();
Feed homeFeed(std::int64_t userId);
Feed popularFeed();
/// Everything, newest first, with the last post's id as the anchor.
Feed latestFeed();
/// A short list that ends soon.
Feed picksFeed();
Feed emptyFeed();
Feed userFeed(std::int64_t userId, const std::string& username);
Feed userLikesFeed(std::int64_t userId, const std::string& username);
Feed channelFeed(std::int64_t channelId, const std::string& name);

/// Where a post stands in a feed.
struct Position {
    std::int64_t key = 0;
    std::int64_t postId = 0;
};

/// A run of neighbours in a feed.
struct Slice {
    std::vector<Position> rows;
    bool moreBefore = false;
    bool moreAfter = false;
};

/// Reads feeds. Safe to use from any thread.
class Feeds {
public:
    explicit Feeds(Database& database)
        : database_(database) {}

    /// The feed of a tag, written with or without its "#", in any case; empty for an unknown one.
    Feed tagFeed(const std::string& tag);

    std::int64_t count(const Feed& feed);
    Slice fromOffset(const Feed& feed, std::int64_t offset, std::int64_t size);
    /// The posts that follow the position; the feed's first ones when it is absent.
    Slice after(const Feed& feed, const std::optional<Position>& position, std::int64_t size);
    /// The posts that stand just before the position.
    Slice before(const Feed& feed, const Position& position, std::int64_t size);

private:
    Slice finish(const Feed& feed, std::vector<Position> rows);
    bool exists(const Feed& feed, const char* comparison, const Position& position);

    Database& database_;
};

} // namespace KeloService
