#pragma once

#include "service/store/Database.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace KeloService {

/// A short sound that users can put into their videos.
struct Sound {
    std::int64_t soundId = 0;
    std::string name;
    std::string path;
    bool featured = false;
    /// The post it was taken from.
    std::optional<std::int64_t> sourcePostId;
};

/// The service's sounds. Safe to use from any thread.
class Sounds {
public:
    explicit Sounds(Database& database)
        : database_(database) {}

    /// By id.
    std::vector<Sound> list();

private:
    Database& database_;
};

} // namespace KeloService
