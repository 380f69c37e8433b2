#include "service/media/Scene.hpp"

#include "service/seed/Random.hpp"

#include <algorithm>

namespace KeloService {
namespace {

using Colour = std::array<int, 3>;

/// Hues go round in steps of this.
constexpr int hues = 6 * 256;

/// `brightness` is up to 255.
Colour colour(int hue, int brightness) {
    const int rise = hue % 256;
    constexpr int full = 255;
    const Colour sectors[] = {{full, rise, 0}, {full - rise, full, 0},
                              {0, full, rise}, {0, full - rise, full},
                              {rise, 0, full}, {full, 0, full - rise}};
    Colour result = sectors[hue % hues / 256];
    for (int& part : result) {
        constexpr int paleness = 80;
        part = (paleness + part * (full - paleness) / full) * brightness / full;
    }
    return result;
}

// Video's brightness and colour differences, in the range that standard-definition video uses.
char luma(const Colour& c) {
    return static_cast<char>(16 + (66 * c[0] + 129 * c[1] + 25 * c[2] + 128) / 256);
}

char blueDifference(const Colour& c) {
    return static_cast<char>((128 * 256 - 38 * c[0] - 74 * c[1] + 112 * c[2] + 128) / 256);
}

char redDifference(const Colour& c) {
    return static_cast<char>((128 * 256 + 112 * c[0] - 94 * c[1] - 18 * c[2] + 128) / 256);
}

/// Goes from 0 to `highest` and back in each period.
int swing(std::uint32_t time, std::uint32_t period, int highest) {
    const std::uint32_t phase = time % period;
    const std::uint32_t way = 2 * std::min(phase, period - phase);
    return static_cast<int>(static_cast<std::uint64_t>(highest) * way / period);
}

/// Fills one row of a plane, and the box's part of it with another value.
void fillRow(std::string& plane, int side, int y, char ground, int boxStart, int boxSide,
             char box) {
    const auto row = plane.begin() + static_cast<std::ptrdiff_t>(y) * side;
    std::fill(row, row + side, ground);
    std::fill(row + boxStart, row + boxStart + boxSide, box);
}

} // namespace

Scene::Scene(std::uint64_t seed) {
    Random random(seed);
    duration_ = static_cast<std::uint32_t>(random.between(2, 5)) * 1000;
    hue_ = static_cast<int>(random.below(hues));
    startX_ = static_cast<std::uint32_t>(random.below(duration_));
    startY_ = static_cast<std::uint32_t>(random.below(duration_));
    periodX_ = duration_ / static_cast<std::uint32_t>(random.between(1, 2));
    periodY_ = duration_ / static_cast<std::uint32_t>(random.between(1, 2));
}

Scene::Colour Scene::ground(int side, int y) const {
    return colour(hue_, 200 - 120 * y / side);
}

Scene::Colour Scene::foreground() const {
    return colour(hue_ + hues / 2, 255);
}

Scene::Place Scene::boxAt(int side, std::uint32_t milliseconds) const {
    // Even places: pairs of rows and columns share their colour in video.
    const int box = side / 4 & ~1;
    const int x = swing(milliseconds + startX_, periodX_, side - box) & ~1;
    const int y = swing(milliseconds + startY_, periodY_, side - box) & ~1;
    return {x, y, box};
}

Picture Scene::picture(int side, std::uint32_t milliseconds) const {
    Picture picture(side);
    const Colour front = foreground();
    const Place box = boxAt(side, milliseconds);
    for (int y = 0; y < side; y += 2) {
        const Colour back = ground(side, y);
        const int width = y >= box.y && y < box.y + box.side ? box.side : 0;
        fillRow(picture.luma, side, y, luma(back), box.x, width, luma(front));
        fillRow(picture.luma, side, y + 1, luma(back), box.x, width, luma(front));
        fillRow(picture.blue, side / 2, y / 2, blueDifference(back), box.x / 2, width / 2,
                blueDifference(front));
        fillRow(picture.red, side / 2, y / 2, redDifference(back), box.x / 2, width / 2,
                redDifference(front));
    }
    return picture;
}

std::string Scene::pixels(int side, std::uint32_t milliseconds) const {
    std::string pixels;
    pixels.reserve(static_cast<std::size_t>(side) * static_cast<std::size_t>(side) * 3);
    const Colour front = foreground();
    const Place box = boxAt(side, milliseconds);
    for (int y = 0; y < side; ++y) {
        const Colour back = ground(side, y);
        const bool boxRow = y >= box.y && y < box.y + box.side;
        for (int x = 0; x < side; ++x) {
            for (const int part : boxRow&& x >= box.x && x < box.x + box.side ? front : back) {
                pixels += static_cast<char>(part);
            }
        }
    }
    return pixels;
}

} // namespace KeloService
