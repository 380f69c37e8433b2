#pragma once

#include "service/store/Database.hpp"

#include <cstdint>

namespace KeloService {

/// Whose account outside the service a user follows through it. Apart from following on the service
/// itself, which fills the home feed. Safe to use from any thread.
class Follows {
public:
    explicit Follows(Database& database)
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
