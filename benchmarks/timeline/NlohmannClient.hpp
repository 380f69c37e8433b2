#pragma once

#include <KeloAPI/model/KLRekelo.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace KeloBenchmark {

/// A page of a timeline as a client written in an afternoon reads it: nlohmann-json's value tree,
/// and the same models filled from it.
struct Page {
    std::vector<std::shared_ptr<KeloAPI::KLWatchPost>> posts;
    std::int64_t count = 0;
    std::optional<std::int64_t> nextPage;
    std::optional<std::int64_t> previousPage;
    std::int64_t size = 0;
    std::optional<std::string> anchor;
    std::optional<std::string> backAnchor;
    std::optional<std::string> title;
    std::int64_t nextAfter = 0;
    std::int64_t displayCount = 0;
};

/// Throws what nlohmann-json throws.
Page readWithNlohmann(const std::string& body);

} // namespace KeloBenchmark
