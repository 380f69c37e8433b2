#pragma once

#include "service/store/Database.hpp"
#include "service/store/Posts.hpp"

#include <cstdint>
#include <optional>

namespace KeloService {

/// Who reposted what; the posts' counters follow. Safe to use from any thread.
class Reposts {
public:
    explicit Reposts(Database& database)
        : database_(database) {}

    /// Makes an existing user repost an existing post. A repost that is there already stays the
    /// same.
    Repost add(std::int64_t postId, std::int64_t userId);
    /// False when this user has no such repost of this post.
    bool remove(std::int64_t postId, std::int64_t userId, std::int64_t repostId);

private:
    std::optional<Repost> find(std::int64_t postId, std::int64_t userId);
    void addToCounter(std::int64_t postId, int number);

    Database& database_;
};

} // namespace KeloService
