#pragma once

#include "service/http/Answer.hpp"
#include "service/store/Venues.hpp"

#include <string>

namespace KeloService {

/// Adds a venue in the service's own form, at a record's top level. That form tells of no country
/// and no coordinates.
void addVenue(Json& record, const Venue& venue, const std::string& baseUrl);

/// A venue in the form of the Foursquare venue service.
Json foursquareRecord(const Venue& venue, const std::string& baseUrl);

} // namespace KeloService
