#pragma once

#include "service/http/Router.hpp"
#include "service/routes/Context.hpp"

#include <optional>
#include <string>

namespace KeloService {

/// The request's body as a JSON object; throws a "bad request" ServiceError otherwise.
Json bodyObject(const Call& call);

/// A text of that object; throws a "bad request" ServiceError when it is missing.
std::string requiredText(const Json& object, const char* key);

/// The post or user that the path names under "id"; throws a "not found" ServiceError when there is
/// none.
std::int64_t requirePost(const Call& call, const Context& context);
User requireUser(const Call& call, const Context& context);

/// Where a captcha is shown.
std::string captchaUrl(const Context& context, const std::string& token);

/// The session whose key the request carries, absent when it carries none. Throws a ServiceError
/// when the key is unknown (100) or expired (103), or the session has a captcha to solve (419).
std::optional<Session> presentedSession(const Call& call, const Context& context);

/// The same where a session must be there: throws a ServiceError (100) when the request has none.
Session requireSession(const Call& call, const Context& context);

} // namespace KeloService
