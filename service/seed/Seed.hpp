#pragma once

#include "service/store/Database.hpp"

#include <string_view>

namespace KeloService {

/// The password of every seeded user.
inline constexpr std::string_view developmentPassword = "loop-the-loop";
/// The user who is signed in from the start, and the session key that says so.
inline constexpr std::string_view developmentUser = "mara";
inline constexpr std::string_view developmentSessionKey = "kelo-development-session";

/// Fills a database that has no users with the same believable service every time.
void seedIfEmpty(Database& database);

} // namespace KeloService
