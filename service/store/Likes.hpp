#pragma once

#include "service/store/Database.hpp"
#include "service/store/Posts.hpp"

#include <cstdint>
#include <optional>

namespace KeloService {

/// Who likes which post; the like counters of posts and users follow. Safe to use from any thread.
class Likes {
public:
    explicit Likes(Database& database)
        : database_(database) {}

    /// Makes an existing user like an existing post. A like that is there already stays the same.
    Like add(std::int64_t postId, std::int64_t userId);
    /// Nothing happens when there is no such like.
    void remove(std::int64_t postId, std::int64_t userId);

private:
    std::optional<Like> find(std::int64_t postId, std::int64_t userId);
    void addToCounters(std::int64_t postId, std::int64_t userId, int number);

    Database& database_;
};

} // namespace KeloService
