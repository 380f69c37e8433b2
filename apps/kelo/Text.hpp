#pragma once

#include <KeloAPI/KeloAPI.hpp>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

// Text for people: dates, sizes and the like, and UTF-8 on a terminal.
namespace KeloHost {

/// As `printf` writes values, up to a hundred bytes.
template <class... Values>
std::string formatted(const char* format, Values... values) {
    std::array<char, 100> text{};
    static_cast<void>(std::snprintf(text.data(), text.size(), format, values...));
    return text.data();
}

/// "2016-03-01T12:00:00.250Z"
std::string isoText(KeloAPI::Date date);
/// "2016-03-01", in UTC.
std::string dayText(KeloAPI::Date date);
/// "12 s", "5 min", "3 h", "40 d"; the full units only. What lies ahead is "0 s".
std::string ageText(std::chrono::microseconds age);

/// "712 B", "45 kB", "3.2 MB": thousands of thousands.
std::string sizeText(std::uint64_t bytes);
/// 1234567 as "1,234,567", and cut to "1.2M".
std::string groupedText(std::uint64_t number);
std::string compactText(std::uint64_t number);

/// "post" for 1, "posts" for others; "1 post", "2 posts".
template <class Number>
std::string plural(Number count, const std::string& noun) {
    return count == 1 ? noun : noun + "s";
}
template <class Number>
std::string countText(Number count, const std::string& noun) {
    return std::to_string(count) + " " + plural(count, noun);
}

/// A bar for how much of all is done, and the percentage beside it.
std::string barText(double done, double all, std::size_t width);
std::string percentText(double done, double all);

/// The stretch of a UTF-8 text that a range in UTF-16 code units covers; what lies behind the
/// text's end is left out.
std::string stretchOf(std::string_view text, KeloAPI::Range range);

/// A header field takes no control characters, and HTTP promises nothing beyond ASCII.
bool fitsHeader(std::string_view text);

/// `text` on one line, without what a terminal would take for a command: control characters become
/// blanks, and marks that turn the direction of writing go. Invalid UTF-8 becomes U+FFFD.
std::string printable(std::string_view text);

/// The columns that printable text takes.
std::size_t displayWidth(std::string_view text);

/// Printable text cut to at most `width` columns, its last one "…" when something is missing. The
/// cut is between what a reader sees as characters, never inside an emoji.
std::string clipped(std::string_view text, std::size_t width);

/// Printable text in lines of at most `width` columns, broken between words. A word that is wider
/// has a line to itself.
std::vector<std::string> wrappedLines(const std::string& text, std::size_t width);

/// Printable text with blanks behind it (or in front) to fill `width` columns.
std::string padded(std::string_view text, std::size_t width);
std::string rightAligned(std::string_view text, std::size_t width);

} // namespace KeloHost
