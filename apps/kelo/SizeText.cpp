#include "SizeText.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

namespace KeloHost {

std::string sizeText(std::uint64_t bytes) {
    constexpr std::uint64_t thousand = 1000;
    if (bytes < thousand) {
        return std::to_string(bytes) + " B";
    }
    if (bytes < thousand * thousand) {
        return std::to_string(bytes / thousand) + " kB";
    }
    const double millions = static_cast<double>(bytes) / (thousand * thousand);
    std::array<char, 40> text{};
    static_cast<void>(std::snprintf(text.data(), text.size(), "%.1f MB", millions));
    return text.data();
}

std::string ageText(std::chrono::microseconds age) {
    using namespace std::chrono;
    const auto seconds = std::max(duration_cast<std::chrono::seconds>(age), 0s);
    if (seconds < 1min) {
        return std::to_string(seconds.count()) + " s";
    }
    if (seconds < 1h) {
        return std::to_string(seconds / 1min) + " min";
    }
    if (seconds < days(1)) {
        return std::to_string(seconds / 1h) + " h";
    }
    return std::to_string(seconds / days(1)) + " d";
}

} // namespace KeloHost
