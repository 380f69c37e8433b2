#pragma once

#include "service/store/Database.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace KeloService {

struct VenueCategory {
    std::string categoryId;
    std::string shortName;
    /// Of the icon's path: its size stands between them.
    std::string iconPrefix;
    std::string iconSuffix;
};

/// The place at which posts were made.
struct Venue {
    std::string venueId;
    std::string name;
    std::optional<std::string> address;
    std::string city;
    std::optional<std::string> state;
    std::string country;
    double latitude = 0;
    double longitude = 0;
    std::optional<VenueCategory> category;
};

/// The service's venues. Safe to use from any thread.
class Venues {
public:
    explicit Venues(Database& database)
        : database_(database) {}

    std::optional<Venue> find(const std::string& venueId);
    std::optional<Venue> ofPost(std::int64_t postId);

private:
    Database& database_;
};

} // namespace KeloService
