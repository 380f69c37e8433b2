#pragma once

#include "service/store/Database.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace KeloService {

/// The long-form videos and their views. Safe to use from any thread.
class Longforms {
public:
    explicit Longforms(Database& database)
        : database_(database) {}

    /// Views in all; absent when there is no such video.
    std::optional<std::int64_t> viewCount(const std::string& longformId);
    /// One more view of an existing video. `timestamp` is kept as the client wrote it.
    void addView(std::int64_t userId, const std::string& longformId, const std::string& timestamp);

private:
    Database& database_;
};

} // namespace KeloService
