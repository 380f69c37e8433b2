#include <KeloAPI/base/Number.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace KeloAPI {

namespace {

// 2^63 and 2^64 are doubles; the largest integers below them are not.
constexpr double twoTo63 = 9223372036854775808.0;
constexpr double twoTo64 = 18446744073709551616.0;

template <class Integer>
Integer truncated(double value, double lowest, double beyondHighest) {
    if (std::isnan(value)) {
        return 0;
    }
    if (value < lowest) {
        return std::numeric_limits<Integer>::min();
    }
    if (value >= beyondHighest) {
        return std::numeric_limits<Integer>::max();
    }
    return static_cast<Integer>(value);
}

template <class Integer>
std::string decimal(Integer value) {
    char text[24];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return {text, end};
}

/// Lays the digits of a shortest representation ("d.ddde±xx") out as plain decimal text.
std::string plain(std::string_view digits, int exponent) {
    std::string text;
    if (exponent < 0) {
        const auto zeros = static_cast<std::size_t>(-exponent) - 1;
        return text.append("0.").append(zeros, '0').append(digits);
    }
    const auto whole = static_cast<std::size_t>(exponent) + 1;
    if (digits.size() <= whole) {
        return text.append(digits).append(whole - digits.size(), '0');
    }
    return text.append(digits.substr(0, whole)).append(".").append(digits.substr(whole));
}

std::string decimal(double value) {
    if (std::isnan(value)) {
        return "nan";
    }
    if (std::isinf(value)) {
        return value > 0 ? "inf" : "-inf";
    }
    char buffer[40];
    const auto end =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific).ptr;
    const std::string_view shortest(buffer, static_cast<std::size_t>(end - buffer));
    const auto e = shortest.find('e');
    int exponent = 0;
    const bool negativeExponent = shortest[e + 1] == '-';
    std::from_chars(buffer + e + 2, end, exponent);
    exponent = negativeExponent ? -exponent : exponent;
    if (exponent < -4 || exponent >= 17) {
        return std::string(shortest);
    }
    const bool negative = shortest.front() == '-';
    std::string digits;
    for (const char c : shortest.substr(0, e)) {
        if (c >= '0' && c <= '9') {
            digits.push_back(c);
        }
    }
    return (negative ? "-" : "") + plain(digits, exponent);
}

} // namespace

std::int64_t Number::int64Value() const {
    if (_kind == Kind::Double) {
        return truncated<std::int64_t>(_bits.d, -twoTo63, twoTo63);
    }
    constexpr std::uint64_t highest = std::numeric_limits<std::int64_t>::max();
    return _kind == Kind::Signed ? _bits.i : static_cast<std::int64_t>(std::min(_bits.u, highest));
}

std::uint64_t Number::uint64Value() const {
    if (_kind == Kind::Double) {
        return truncated<std::uint64_t>(_bits.d, 0.0, twoTo64);
    }
    return _kind == Kind::Signed && _bits.i < 0 ? 0 : _bits.u;
}

double Number::doubleValue() const {
    if (_kind == Kind::Double) {
        return _bits.d;
    }
    return _kind == Kind::Signed ? static_cast<double>(_bits.i) : static_cast<double>(_bits.u);
}

bool Number::boolValue() const {
    return _kind == Kind::Double ? _bits.d != 0.0 : _bits.u != 0;
}

std::string Number::stringValue() const {
    if (_kind == Kind::Double) {
        return decimal(_bits.d);
    }
    return _kind == Kind::Signed ? decimal(_bits.i) : decimal(_bits.u);
}

bool operator==(const Number& a, const Number& b) {
    const bool aDouble = a._kind == Number::Kind::Double;
    const bool bDouble = b._kind == Number::Kind::Double;
    if (aDouble && bDouble) {
        return a._bits.d == b._bits.d;
    }
    if (aDouble || bDouble) {
        // A double equals an integer when it is one, not when the integer rounds to it.
        const double real = aDouble ? a._bits.d : b._bits.d;
        const Number& other = aDouble ? b : a;
        if (real != std::trunc(real) || real < -twoTo63 || real >= twoTo64) {
            return false;
        }
        return real < 0 ? Number::of(static_cast<std::int64_t>(real)) == other
                        : Number::of(static_cast<std::uint64_t>(real)) == other;
    }
    const bool aNegative = a._kind == Number::Kind::Signed && a._bits.i < 0;
    const bool bNegative = b._kind == Number::Kind::Signed && b._bits.i < 0;
    return aNegative == bNegative && a._bits.u == b._bits.u;
}

} // namespace KeloAPI
