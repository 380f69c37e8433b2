#pragma once

#include <atomic>
#include <cstdint>

namespace KeloService {

/// The highest rate that can be set, in bytes per second.
inline constexpr std::int64_t highestMediaRate = 1000000000;

/// How many bytes per second an answer is sent with at most, or a segment read; 0 for as fast as
/// possible. A change holds for what is under way, too. Safe to use from any thread.
class SendRate {
public:
    std::int64_t bytesPerSecond() const { return bytesPerSecond_; }
    void set(std::int64_t bytesPerSecond) { bytesPerSecond_ = bytesPerSecond; }

private:
    std::atomic<std::int64_t> bytesPerSecond_ = 0;
};

} // namespace KeloService
