#pragma once

#include "service/http/Answer.hpp"
#include "service/store/Posts.hpp"
#include "service/store/Users.hpp"

#include <string>

namespace KeloService {

/// A user as "users/me" answers. `baseUrl` is the service's own address, without a final slash.
Json userRecord(const User& user, const std::string& baseUrl);

/// Adds what stands of a user inside another record, at that record's top level.
void addUserSummary(Json& record, const UserSummary& user, const std::string& baseUrl);

} // namespace KeloService
