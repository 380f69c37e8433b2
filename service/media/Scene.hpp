#pragma once

#include "service/media/Picture.hpp"

#include <array>
#include <cstdint>
#include <string>

namespace KeloService {

/// A small animation: a box that moves over a shaded ground and ends where it began. The same seed
/// gives the same one on every machine, at any size.
class Scene {
public:
    explicit Scene(std::uint64_t seed);

    /// Milliseconds after which it repeats; a whole number of seconds.
    std::uint32_t duration() const { return duration_; }
    /// What is seen at a moment, as video stores it. `side` is in pixels, and even.
    Picture picture(int side, std::uint32_t milliseconds) const;
    /// The same as red, green and blue bytes, row by row.
    std::string pixels(int side, std::uint32_t milliseconds) const;

private:
    using Colour = std::array<int, 3>;
    struct Place {
        int x;
        int y;
        int side;
    };

    Colour ground(int side, int y) const;
    Colour foreground() const;
    Place boxAt(int side, std::uint32_t milliseconds) const;

    std::uint32_t duration_;
    int hue_;
    std::uint32_t startX_;
    std::uint32_t startY_;
    std::uint32_t periodX_;
    std::uint32_t periodY_;
};

} // namespace KeloService
