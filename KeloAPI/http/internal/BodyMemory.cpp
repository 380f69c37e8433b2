#include <KeloAPI/http/internal/BodyMemory.hpp>

#include <atomic>

namespace KeloAPI::BodyMemory {

namespace {

constinit std::atomic<std::size_t> taken = 0;

} // namespace

bool take(std::size_t bytes, std::size_t max) {
    std::size_t before = taken.load(std::memory_order_relaxed);
    do {
        if (before > max || bytes > max - before) {
            return false;
        }
    } while (!taken.compare_exchange_weak(before, before + bytes, std::memory_order_relaxed));
    return true;
}

void giveBack(std::size_t bytes) {
    taken.fetch_sub(bytes, std::memory_order_relaxed);
}

} // namespace KeloAPI::BodyMemory
