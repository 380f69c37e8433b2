#pragma once

#include "service/http/Answer.hpp"
#include "service/store/Posts.hpp"
#include "service/store/Users.hpp"

#include <cstdint>
#include <string>

namespace KeloService {

/// The wire's form of a time in milliseconds since 1970: "2016-03-01T12:00:00.250000", in UTC.
std::string dateText(std::int64_t milliseconds);

/// A user as "users/me" answers. `baseUrl` is the service's own address, without a final slash.
Json userRecord(const User& user, const std::string& baseUrl);

/// Adds what stands of a user inside another record, at that record's top level.
void addUserSummary(Json& record, const UserSummary& user, const std::string& baseUrl);

} // namespace KeloService
