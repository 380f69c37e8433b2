#pragma once

#include "service/store/Database.hpp"

#include <cstdint>

namespace KeloService {

/// Whose Twitter account a user follows through the service. Apart from following on the service
/// itself, which fills the home feed. Safe to use from any thread.
class TwitterFollows {
public:
    explicit TwitterFollows(Database& database)
        : database_(database) {}

    /// False when it is so already.
    bool add(std::int64_t userId, std::int64_t followeeId);
    /// False when it is not so.
    bool remove(std::int64_t userId, std::int64_t followeeId);

private:
    bool exists(std::int64_t userId, std::int64_t followeeId);

    Database& database_;
};

} // namespace KeloService
