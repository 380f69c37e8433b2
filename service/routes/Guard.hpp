#pragma once

#include "service/http/Router.hpp"
#include "service/routes/Context.hpp"

#include <optional>
#include <string>

namespace KeloService {

/// The user whose session key the request carries, absent when it carries none. Throws a
/// ServiceError when the key is unknown (100) or expired (103), or the session has a captcha to
/// solve (419).
std::optional<std::int64_t> sessionUser(const Call& call, const Context& context);
/// The same where there must be a session: throws a ServiceError (100) when the request has none.
std::int64_t requireUser(const Call& call, const Context& context);

/// Makes the key this user's, fresh and without demands, whatever it was before. An absent key is
/// made up. Returns the key.
std::string addSession(Database& database, std::int64_t userId,
                       const std::optional<std::string>& key = std::nullopt);
std::optional<std::int64_t> findUser(Database& database, const std::string& username);

/// The "user", "post" or "channel" that the path names under "id"; throws a "not found"
/// ServiceError when there is none.
std::int64_t requireExisting(const Call& call, const Context& context, const std::string& kind);

/// The request's body as a JSON object; throws a "bad request" ServiceError otherwise.
Json bodyObject(const Call& call);
/// A text of that object; throws a "bad request" ServiceError when it is missing.
std::string requiredText(const Json& object, const char* key);

/// A query parameter as an integer, or `otherwise` when the request has none; throws a "bad
/// request" ServiceError when it is no integer.
std::int64_t readInteger(const Call& call, const char* name, std::int64_t otherwise);

} // namespace KeloService
