#include "Text.hpp"

#include <algorithm>
#include <utility>

namespace KeloHost {

using namespace std::chrono;

std::string isoText(KeloAPI::Date date) {
    const auto midnight = floor<days>(date);
    const year_month_day day(midnight);
    const hh_mm_ss time(floor<milliseconds>(date - midnight));
    return formatted("%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", int(day.year()), unsigned(day.month()),
                     unsigned(day.day()), int(time.hours().count()), int(time.minutes().count()),
                     int(time.seconds().count()), int(time.subseconds().count()));
}

std::string dayText(KeloAPI::Date date) {
    const std::string text = isoText(date);
    return text.substr(0, text.find('T'));
}

std::string ageText(microseconds age) {
    const std::int64_t seconds =
        std::max<std::int64_t>(floor<std::chrono::seconds>(age).count(), 0);
    if (seconds < 60) {
        return std::to_string(seconds) + " s";
    }
    if (seconds < 3600) {
        return std::to_string(seconds / 60) + " min";
    }
    constexpr std::int64_t day = std::int64_t{24} * 3600;
    return seconds < day ? std::to_string(seconds / 3600) + " h"
                         : std::to_string(seconds / day) + " d";
}

std::string sizeText(std::uint64_t bytes) {
    constexpr std::uint64_t thousand = 1000;
    if (bytes < thousand) {
        return std::to_string(bytes) + " B";
    }
    if (bytes < thousand * thousand) {
        return std::to_string(bytes / thousand) + " kB";
    }
    return formatted("%.1f MB", static_cast<double>(bytes) / (thousand * thousand));
}

std::string groupedText(std::uint64_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t at = digits.size(); at > 3;) {
        at -= 3;
        digits.insert(at, 1, ',');
    }
    return digits;
}

std::string compactText(std::uint64_t number) {
    constexpr std::pair<std::uint64_t, char> units[] = {
        {1'000'000'000, 'G'}, {1'000'000, 'M'}, {1000, 'k'}};
    for (const auto& [size, letter] : units) {
        if (number >= size) {
            const std::uint64_t tenths = number / (size / 10);
            return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10) + letter;
        }
    }
    return std::to_string(number);
}

std::string barText(double done, double all, std::size_t width) {
    const double share = std::clamp(done / all, 0.0, 1.0);
    const auto filled = static_cast<std::size_t>(static_cast<double>(width) * share);
    std::string bar;
    for (std::size_t i = 0; i < width; ++i) {
        bar += i < filled ? "█" : "░";
    }
    return bar;
}

std::string percentText(double done, double all) {
    return formatted("%3d %%", static_cast<int>(100 * done / all));
}

bool fitsHeader(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

std::string stretchOf(std::string_view text, KeloAPI::Range range) {
    std::string stretch;
    // Where the character stands that the byte belongs to, and where the next one does.
    std::int64_t unit = 0;
    std::int64_t next = 0;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if ((byte & 0xC0U) != 0x80U) {
            unit = next;
            next += byte >= 0xF0U ? 2 : 1;
        }
        if (unit >= range.location && unit - range.location < range.length) {
            stretch += character;
        }
    }
    return stretch;
}

} // namespace KeloHost
