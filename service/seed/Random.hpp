#pragma once

#include <cstdint>
#include <span>

namespace KeloService {

/// The same numbers on every machine, which the standard's distributions do not promise.
class Random {
public:
    explicit Random(std::uint64_t seed)
        : state_(seed) {}

    std::uint64_t next() {
        std::uint64_t mixed = state_ += 0x9E3779B97F4A7C15;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EB;
        return mixed ^ (mixed >> 31);
    }
    /// From 0 to bound - 1.
    std::int64_t below(std::int64_t bound) {
        return static_cast<std::int64_t>(next() % static_cast<std::uint64_t>(bound));
    }
    /// From lowest to highest.
    std::int64_t between(std::int64_t lowest, std::int64_t highest) {
        return lowest + below(highest - lowest + 1);
    }
    bool oneIn(std::int64_t count) { return below(count) == 0; }
    /// Mostly small, now and then very large, up to 10^digits.
    std::int64_t skewed(int digits) {
        std::int64_t bound = 10;
        for (std::int64_t i = below(digits); i > 0; --i) {
            bound *= 10;
        }
        return below(bound);
    }
    template <typename Element, std::size_t extent>
    const Element& oneOf(std::span<Element, extent> elements) {
        return elements[static_cast<std::size_t>(
            below(static_cast<std::int64_t>(elements.size())))];
    }

private:
    std::uint64_t state_;
};

} // namespace KeloService
