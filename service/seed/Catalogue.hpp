#pragma once

#include "service/store/Database.hpp"

namespace KeloService {

/// Adds the long-form videos and the soundboard's sounds to a database that has its posts.
void seedCatalogue(Database& database);

} // namespace KeloService
