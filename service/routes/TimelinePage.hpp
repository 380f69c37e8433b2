#pragma once

#include "service/http/Router.hpp"
#include "service/routes/Context.hpp"
#include "service/store/Feeds.hpp"
#include "service/store/Sessions.hpp"

#include <optional>
#include <string>

namespace KeloService {

/// The page of a feed that the request asks for, with its posts as the session's user sees them.
/// `name` is the path of the feed's timeline, which its anchors are good for.
Json timelinePage(const Call& call, const Context& context, const Feed& feed,
                  const std::string& name, const std::optional<Session>& session);

/// The channel that the path names under "id"; throws a "not found" ServiceError when there is
/// none.
Channel requireChannel(const Call& call, const Context& context);

} // namespace KeloService
