#pragma once

#include "service/http/Answer.hpp"
#include "service/store/Channels.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace KeloService {

/// What a page says about its place in a list.
struct PageMetadata {
    std::string title;
    std::int64_t count = 0;
    std::int64_t size = 0;
    std::optional<std::int64_t> nextPage;
    std::optional<std::int64_t> previousPage;
    std::optional<std::int64_t> nextAfter;
    /// A text or a number; null when there is none.
    Json anchor;
    std::optional<std::string> backAnchor;
    std::optional<Channel> channel;
};

/// A page's "data": its metadata, each key only when it means something, and its records.
Json pageRecord(const PageMetadata& metadata, Json records, const std::string& baseUrl);

Json channelRecord(const Channel& channel, const std::string& baseUrl);

} // namespace KeloService
