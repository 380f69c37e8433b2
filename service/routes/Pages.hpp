#pragma once

#include "service/routes/Records.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace KeloService {

/// How clients move through a feed.
enum class Paging {
    /// By "page", "nextPage" and "previousPage".
    Numbers,
    /// By an opaque text under "anchor".
    TextAnchor,
    /// By a number under "anchor".
    NumberAnchor,
};

/// A list of posts: where it comes from and how it is sorted.
struct Feed {
    std::string title;
    Paging paging = Paging::Numbers;
    /// FROM and WHERE of its posts (as p); ?1 stands for `argument`.
    std::string source;
    /// Posts are sorted by this expression and then by their id, the largest first.
    std::string key;
    std::optional<std::int64_t> argument;
};

/// The page that the request's "page", "anchor", "backAnchor" and "size" ask for, with its posts.
/// `name` tells feeds apart: an anchor is only good for the feed that gave it. Throws a
/// ServiceError for an anchor that the feed never gave.
Json readPage(const Call& call, const Context& context, const Feed& feed, const std::string& name,
              const std::optional<std::int64_t>& user);

} // namespace KeloService
