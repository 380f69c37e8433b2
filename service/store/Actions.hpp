#pragma once

#include "service/store/Database.hpp"
#include "service/store/Loops.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace KeloService {

/// A like or a repost.
struct PostMark {
    std::int64_t id = 0;
    std::int64_t postId = 0;
    std::int64_t userId = 0;
};

struct Follow {
    std::int64_t userId = 0;
    std::int64_t followeeId = 0;
};

struct FeedbackEntry {
    std::int64_t userId = 0;
    /// "user" or "post".
    std::string kind;
    std::int64_t targetId = 0;
    std::string boost;
};

struct LoopsEntry {
    std::int64_t userId = 0;
    LoopReport report;
};

struct ViewEntry {
    std::int64_t userId = 0;
    std::string longformId;
    std::string timestamp;
};

/// Reads back what users did since the seed, as it is kept now and in the order in which it came.
/// Safe to use from any thread.
class Actions {
public:
    explicit Actions(Database& database)
        : database_(database) {}

    std::vector<PostMark> likes();
    std::vector<PostMark> reposts();
    std::vector<Follow> follows();
    std::vector<FeedbackEntry> feedback();
    std::vector<LoopsEntry> loops();
    std::vector<ViewEntry> views();

private:
    template <typename Entry, typename Read>
    std::vector<Entry> readAll(const std::string& sql, Read read);

    Database& database_;
};

} // namespace KeloService
