#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/base/internal/Ascii.hpp>
#include <KeloAPI/base/internal/ManualNow.hpp>

#include <atomic>
#include <limits>

namespace KeloAPI {

namespace {

/// Takes fields off the front of a text. A failed step makes every later one fail too, so a whole
/// pattern reads as one list and is judged at its end.
class Scanner {
public:
    explicit Scanner(std::string_view text)
        : _rest(text) {}

    int number(std::size_t fewestDigits, std::size_t maxDigits) {
        int value = 0;
        std::size_t digits = 0;
        while (digits < maxDigits && digits < _rest.size() && Ascii::isDigit(_rest[digits])) {
            value = value * 10 + (_rest[digits++] - '0');
        }
        _ok = _ok && digits >= fewestDigits;
        _rest.remove_prefix(digits);
        return value;
    }

    void literal(char c) {
        _ok = _ok && !_rest.empty() && _rest.front() == c;
        if (_ok) {
            _rest.remove_prefix(1);
        }
    }

    /// One digit or more after the point, as milliseconds.
    std::chrono::milliseconds fraction() {
        const std::size_t before = _rest.size();
        int value = 0;
        int weight = 100;
        while (!_rest.empty() && Ascii::isDigit(_rest.front())) {
            value += (_rest.front() - '0') * weight;
            weight /= 10;
            _rest.remove_prefix(1);
        }
        _ok = _ok && _rest.size() < before;
        return std::chrono::milliseconds(value);
    }

    bool finished() const { return _ok && _rest.empty(); }

private:
    std::string_view _rest;
    bool _ok = true;
};

constexpr Date::rep systemClock = std::numeric_limits<Date::rep>::min();

/// The instant that is now, in microseconds since 1970, where it does not come from the clock.
std::atomic<Date::rep> setInstant = systemClock;

} // namespace

void setNow(std::optional<Date> instant) {
    setInstant = instant ? instant->time_since_epoch().count() : systemClock;
}

Date Date::now() {
    const Date::rep instant = setInstant.load(std::memory_order_relaxed);
    if (instant != systemClock) {
        return Date(Date::duration(instant));
    }
    return std::chrono::floor<std::chrono::microseconds>(std::chrono::system_clock::now());
}

double timeIntervalSince1970(Date date) {
    return std::chrono::duration<double>(date.time_since_epoch()).count();
}

Date dateSinceNow(double seconds) {
    using Duration = Date::duration;
    // In doubles, which tell every microsecond until the year 2255: an integer that overflows is
    // not an instant at all.
    const double instant =
        static_cast<double>(Date::now().time_since_epoch().count()) + seconds * 1e6;
    if (!(instant > static_cast<double>(Duration::min().count()))) {
        return Date(Duration::min());
    }
    if (instant >= static_cast<double>(Duration::max().count())) {
        return Date(Duration::max());
    }
    return Date(Duration(static_cast<Duration::rep>(instant)));
}

std::optional<Date> DateFormatter::date(std::string_view text) const {
    using namespace std::chrono;
    Scanner scan(text);
    const year y(scan.number(4, 4));
    scan.literal('-');
    const month m(static_cast<unsigned>(scan.number(2, 2)));
    scan.literal('-');
    const day d(static_cast<unsigned>(scan.number(2, 2)));
    scan.literal('T');
    const hours hour(scan.number(2, 2));
    scan.literal(':');
    const minutes minute(scan.number(2, 2));
    scan.literal(':');
    const seconds second(scan.number(1, 2));
    scan.literal('.');
    const milliseconds fraction = scan.fraction();

    const year_month_day date(y, m, d);
    if (!scan.finished() || !date.ok() || hour >= hours(24) || minute >= minutes(60) ||
        second >= seconds(60)) {
        return std::nullopt;
    }
    return sys_days(date) + hour + minute + second + fraction;
}

} // namespace KeloAPI
