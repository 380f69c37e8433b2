#pragma once

#include <cstddef>
#include <string>

namespace KeloService {

/// A square picture as video stores it: brightness for each pixel, and two colour differences for
/// each square of four.
struct Picture {
    /// `size` is in pixels, and even.
    explicit Picture(int size)
        : side(size)
        , luma(static_cast<std::size_t>(size) * static_cast<std::size_t>(size), '\0')
        , blue(luma.size() / 4, '\0')
        , red(luma.size() / 4, '\0') {}

    int side;
    // One byte per sample, row by row.
    std::string luma;
    std::string blue;
    std::string red;
};

} // namespace KeloService
