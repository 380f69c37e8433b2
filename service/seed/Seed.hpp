#pragma once

#include "service/store/Database.hpp"

#include <cstdint>
#include <string_view>

namespace KeloService {

/// The password of every seeded user.
inline constexpr std::string_view developmentPassword = "loop-the-loop";
/// The user who is signed in from the start, and the session key that says so.
inline constexpr std::string_view developmentUser = "mara";
inline constexpr std::string_view developmentSessionKey = "kelo-development-session";

/// The moment at which the seeded service stands still: 2016-03-01 12:00 UTC, in milliseconds. All
/// that people do with it is younger.
inline constexpr std::int64_t seededMoment = 1456833600000;
/// Post ids are beyond what a double holds exactly, as a service of some age has them.
inline constexpr std::int64_t firstSeededPostId = 1150000000000000001;
inline constexpr std::int64_t seededPostIdStep = 4111;
inline constexpr std::int64_t firstSeededUserId = 1001;

/// Adds the places, music, sounds and long-form videos to a database that has its posts,
/// and gives posts what stands beside their texts: places, music and bylines.
void seedExtras(Database& database);

/// Fills a database that has no users with the same believable service every time.
void seedIfEmpty(Database& database);

} // namespace KeloService
