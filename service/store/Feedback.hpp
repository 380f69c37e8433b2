#pragma once

#include "service/store/Database.hpp"

#include <cstdint>
#include <string>

namespace KeloService {

/// What users told the recommender, in the order in which they said it. Safe to use from any
/// thread.
class Feedback {
public:
    explicit Feedback(Database& database)
        : database_(database) {}

    /// `kind` is "user" or "post".
    void add(std::int64_t userId, const std::string& kind, std::int64_t targetId,
             const std::string& boost);

private:
    Database& database_;
};

} // namespace KeloService
