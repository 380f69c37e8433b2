#pragma once

#include "service/store/Database.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace KeloService {

/// How an image is made that belongs to no post, user or channel.
struct StoredImage {
    std::int64_t seed = 0;
    int side = 0;
};

/// Icons of venue categories and bylines, and album art. Safe to use from any thread.
class Images {
public:
    explicit Images(Database& database)
        : database_(database) {}

    std::optional<StoredImage> find(const std::string& path);

private:
    Database& database_;
};

} // namespace KeloService
