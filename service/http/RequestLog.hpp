#pragma once

#include "service/http/Answer.hpp"
#include "service/http/Request.hpp"

#include <cstdint>
#include <deque>
#include <mutex>
#include <string>

namespace KeloService {

/// What clients asked of the service, for tests and curious people. Safe to use from any thread.
class RequestLog {
public:
    /// The oldest entries go when there are more than this.
    static constexpr std::size_t keptEntries = 50000;

    /// `request.body` is the body's first bytes; `bodyBytes` its whole length, and `bodySha256` its
    /// hash where it was taken as it arrived.
    void add(const Request& request, std::uint64_t bodyBytes, const std::string& bodySha256 = "");
    /// The entries with a number greater than `since`, and the last number given so far.
    Json list(std::uint64_t since) const;
    /// Forgets the entries; numbers go on.
    void clear();

private:
    mutable std::mutex mutex_;
    std::deque<Json> entries_;
    std::uint64_t last_ = 0;
};

} // namespace KeloService
