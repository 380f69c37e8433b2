#include "DateText.hpp"

#include <iomanip>
#include <sstream>

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
    std::ostringstream text;
    text << std::setfill('0') << std::setw(4) << int(parts.day.year());
    const auto add = [&text](char separator, int width, auto number) {
        text << separator << std::setw(width) << number;
    };
    add('-', 2, unsigned(parts.day.month()));
    add('-', 2, unsigned(parts.day.day()));
    add('T', 2, parts.time.hours().count());
    add(':', 2, parts.time.minutes().count());
    add(':', 2, parts.time.seconds().count());
    add('.', 3, parts.time.subseconds().count());
    text << 'Z';
    return text.str();
}

std::string shortText(KeloAPI::Date date) {
    std::string text = isoText(date);
    text.resize(text.find('.') - 3); // without seconds
    text[text.find('T')] = ' ';
    return text;
}

} // namespace KeloHost
