#pragma once

#include "service/store/Database.hpp"

namespace KeloService {

/// Gives the posts of a database what stands beside their texts: the places where they were made,
/// their music, bylines; and makes those known.
void seedExtras(Database& database);

} // namespace KeloService
