#include "service/DateText.hpp"

#include <algorithm>
#include <chrono>

namespace KeloService {
namespace {

std::string padded(std::int64_t number, std::size_t width) {
    const std::string digits = std::to_string(number);
    return std::string(width - std::min(width, digits.size()), '0') + digits;
}

} // namespace

std::string dateText(std::int64_t milliseconds) {
    using namespace std::chrono;
    const sys_time<std::chrono::milliseconds> time{std::chrono::milliseconds(milliseconds)};
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    return padded(static_cast<int>(date.year()), 4) + '-' +
           padded(static_cast<unsigned>(date.month()), 2) + '-' +
           padded(static_cast<unsigned>(date.day()), 2) + 'T' + padded(clock.hours().count(), 2) +
           ':' + padded(clock.minutes().count(), 2) + ':' + padded(clock.seconds().count(), 2) +
           '.' + padded(clock.subseconds().count(), 3) + "000";
}

} // namespace KeloService
