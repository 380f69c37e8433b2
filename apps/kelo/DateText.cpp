#include "DateText.hpp"

#include <cstdio>

namespace KeloHost {

namespace {

struct Parts {
    std::chrono::year_month_day day;
    std::chrono::hh_mm_ss<std::chrono::milliseconds> time;

    explicit Parts(KeloAPI::Date date)
        : day(std::chrono::floor<std::chrono::days>(date))
        , time(std::chrono::floor<std::chrono::milliseconds>(
              date - std::chrono::floor<std::chrono::days>(date))) {}
};

} // namespace

std::string isoText(KeloAPI::Date date) {
    const Parts parts(date);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ", int(parts.day.year()),
                  unsigned(parts.day.month()), unsigned(parts.day.day()),
                  static_cast<int>(parts.time.hours().count()),
                  static_cast<int>(parts.time.minutes().count()),
                  static_cast<int>(parts.time.seconds().count()),
                  static_cast<int>(parts.time.subseconds().count()));
    return text;
}

std::string shortText(KeloAPI::Date date) {
    std::string text = isoText(date);
    text.resize(text.find('.') - 3); // without seconds
    text[text.find('T')] = ' ';
    return text;
}

} // namespace KeloHost
