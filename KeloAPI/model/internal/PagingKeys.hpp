#pragma once

#include <KeloAPI/json/Json.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace KeloAPI {

/// The paging keys of a JSON object as both metadata types read them, before their defaults part.
struct PagingKeys {
    explicit PagingKeys(const JsonObject& json);

    std::optional<std::int64_t> count;
    std::optional<std::int64_t> nextPage;
    std::optional<std::int64_t> previousPage;
    std::optional<std::int64_t> size;
    std::optional<std::int64_t> nextAfter;
    std::optional<std::string> title;
    /// Text, or the decimal text of a number.
    std::optional<std::string> anchor;
    /// Text only, unlike `anchor`.
    std::optional<std::string> backAnchor;
    /// As it stands: one of the two types parses it.
    JsonValue channel;
    std::optional<std::int64_t> displayCount;
};

} // namespace KeloAPI
