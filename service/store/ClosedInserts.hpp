#pragma once

#include "service/store/Database.hpp"

#include <cstdint>
#include <string>

namespace KeloService {

/// Which inserts users have dismissed. Safe to use from any thread.
class ClosedInserts {
public:
    explicit ClosedInserts(Database& database)
        : database_(database) {}

    bool contains(std::int64_t userId, const std::string& reference);
    /// A second time does nothing.
    void add(std::int64_t userId, const std::string& reference);

private:
    Database& database_;
};

} // namespace KeloService
