#pragma once

#include "service/store/Database.hpp"

#include <cstdint>
#include <vector>

namespace KeloService {

/// One client's report of how often a post has looped.
struct LoopReport {
    std::int64_t postId = 0;
    std::int64_t count = 0;
    /// The client's clock, in seconds since 1970.
    double ts = 0;
};

/// Loops that clients count; the counters of posts and of their authors follow. Safe to use from
/// any thread.
class Loops {
public:
    explicit Loops(Database& database)
        : database_(database) {}

    /// All of the reports, about existing posts, or none when the database fails.
    void add(std::int64_t userId, const std::vector<LoopReport>& reports);

private:
    void addOne(std::int64_t userId, const LoopReport& report);

    Database& database_;
};

} // namespace KeloService
