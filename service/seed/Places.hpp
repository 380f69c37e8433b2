#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace KeloService {

struct CategorySeed {
    std::string_view categoryId;
    std::string_view shortName;
};

struct PlaceSeed {
    std::string_view venueId;
    std::string_view name;
    /// Empty where it has none.
    std::string_view address;
    std::string_view city;
    std::string_view state;
    std::string_view country;
    double latitude;
    double longitude;
    /// Position of its category, or behind the last for none.
    std::size_t category;
};

/// The invented kinds of places and the places.
std::span<const CategorySeed> categories();
std::span<const PlaceSeed> places();

} // namespace KeloService
