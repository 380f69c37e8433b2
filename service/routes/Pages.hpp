#pragma once

#include "service/http/Request.hpp"
#include "service/records/MetadataRecord.hpp"
#include "service/store/Feeds.hpp"
#include "service/store/Posts.hpp"
#include "service/store/Sessions.hpp"

#include <cstdint>
#include <optional>
#include <vector>

namespace KeloService {

/// One page of a feed, before its posts are loaded.
struct Page {
    std::vector<std::int64_t> postIds;
    PageMetadata metadata;
};

/// A request's "size", kept between 1 and 1000; 20 when it has none. Throws a "bad request"
/// ServiceError when it is no integer, as `readInteger` does.
std::int64_t pageSize(const Request& request);

/// A query parameter as an integer, or `otherwise` when the request has none.
std::int64_t readInteger(const Request& request, const char* name, std::int64_t otherwise);

/// How the session's user sees posts: with as many comments and likes as the request's "c_max" and
/// "l_max" want.
PostView readView(const Request& request, const std::optional<Session>& session);

/// The page that the request's "page", "anchor", "backAnchor" and "size" ask for. `name` tells
/// feeds apart: an anchor is only good for the feed that gave it. Throws a ServiceError for an
/// anchor that the feed never gave.
Page readPage(Feeds& feeds, const Feed& feed, const std::string& name, const Request& request);

} // namespace KeloService
