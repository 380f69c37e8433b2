#include <KeloAPI/json/internal/JsonSubstitution.hpp>

#include <simdjson.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace KeloAPI {

namespace {

/// The parts of a number, signs left out.
struct NumberParts {
    std::string_view whole;
    std::string_view fraction;
    std::string_view exponent;
    bool negativeExponent = false;

    bool isInteger() const { return fraction.empty() && exponent.empty(); }
};

bool skipOneOf(std::string_view characters, std::string_view& text) {
    if (text.empty() || characters.find(text.front()) == std::string_view::npos) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

std::string_view takeDigits(std::string_view& text) {
    const std::size_t size = std::min(text.find_first_not_of("0123456789"), text.size());
    const std::string_view digits = text.substr(0, size);
    text.remove_prefix(size);
    return digits;
}

/// Takes a text apart that is a number and nothing else; absent for any other.
std::optional<NumberParts> partsOf(std::string_view text) {
    NumberParts parts;
    skipOneOf("-", text);
    parts.whole = takeDigits(text);
    bool wellFormed =
        !parts.whole.empty() && (parts.whole.size() == 1 || parts.whole.front() != '0');
    if (skipOneOf(".", text)) {
        parts.fraction = takeDigits(text);
        wellFormed = wellFormed && !parts.fraction.empty();
    }
    if (skipOneOf("eE", text)) {
        parts.negativeExponent = text.starts_with('-');
        skipOneOf("+-", text);
        parts.exponent = takeDigits(text);
        wellFormed = wellFormed && !parts.exponent.empty();
    }
    return wellFormed && text.empty() ? std::optional(parts) : std::nullopt;
}

/// Absent when it is out of range.
template <class Integer>
std::optional<Integer> inRange(std::string_view text) {
    Integer value = 0;
    const auto outcome = std::from_chars(text.data(), text.data() + text.size(), value);
    return outcome.ec == std::errc::result_out_of_range ? std::nullopt : std::optional(value);
}

bool isInteger64(std::string_view text) {
    return text.front() == '-' ? inRange<std::int64_t>(text).has_value()
                               : inRange<std::uint64_t>(text).has_value();
}

/// Whether a number, if it is beyond doubles, is too large for them and not too small.
bool isAboveOne(const NumberParts& parts) {
    constexpr std::int64_t endless = std::int64_t{1} << 60U;
    const auto exponent =
        std::min(inRange<std::int64_t>(parts.exponent).value_or(endless), endless);
    // Where the first digit stands that is not 0, counted from the point.
    const std::size_t zeros =
        std::min(parts.fraction.find_first_not_of('0'), parts.fraction.size());
    const auto leading = parts.whole == "0" ? -static_cast<std::int64_t>(zeros)
                                            : static_cast<std::int64_t>(parts.whole.size());
    return leading + (parts.negativeExponent ? -exponent : exponent) > 0;
}

/// Goes through a text once, from its start to its end.
class Substituter {
public:
    explicit Substituter(std::string& text)
        : _text(text) {}

    JsonSubstitution run() {
        while (_at < _text.size()) {
            const char c = _text[_at];
            if (c == '"') {
                passString();
            } else if (c == '-' || (c >= '0' && c <= '9')) {
                passNumber();
            } else {
                ++_at;
            }
        }
        return std::move(_substitution);
    }

private:
    void passNumber() {
        const std::size_t end =
            std::min(_text.find_first_not_of("+-.0123456789Ee", _at), _text.size());
        const std::string_view number = std::string_view(_text).substr(_at, end - _at);
        if (const auto parts = partsOf(number)) {
            if (const auto value = largeValue(number, *parts)) {
                _substitution.numbers.push_back({_ordinal, end, parts->isInteger(), *value});
                _substitution.changed = true;
                std::fill(_text.begin() + static_cast<std::ptrdiff_t>(_at),
                          _text.begin() + static_cast<std::ptrdiff_t>(end), ' ');
                _text[_at] = '0';
            }
        }
        ++_ordinal;
        _at = end;
    }

    /// The value of a number that neither a 64-bit integer nor a double holds, else absent.
    std::optional<double> largeValue(std::string_view text, const NumberParts& parts) {
        const bool negative = text.front() == '-';
        if (parts.isInteger() ? isInteger64(text) : !isAboveOne(parts)) {
            return std::nullopt;
        }
        const auto nearest = nearestDouble(std::string(text) + (parts.isInteger() ? ".0" : ""));
        if (nearest && !parts.isInteger()) {
            return std::nullopt;
        }
        constexpr double largest = std::numeric_limits<double>::max();
        return nearest.value_or(negative ? -largest : largest);
    }

    /// What the JSON reader makes of a number that is not an integer; absent beyond doubles. Not
    /// every standard library's `from_chars` knows doubles.
    std::optional<double> nearestDouble(const std::string& text) {
        double value = 0;
        const auto error = _reader.parse(text).get(value);
        if (error == simdjson::MEMALLOC) {
            throw std::bad_alloc();
        }
        return error == simdjson::SUCCESS ? std::optional(value) : std::nullopt;
    }

    void passString() {
        ++_at;
        while (_at < _text.size() && _text[_at] != '"') {
            if (_text[_at] == '\\') {
                passEscape();
            } else {
                ++_at;
            }
        }
        ++_at;
    }

    void passEscape() {
        const auto first = surrogateAt(_at);
        if (!first) {
            _at += 2;
            return;
        }
        const auto second = surrogateAt(_at + 6);
        if (*first < 0xDC00 && second && *second >= 0xDC00) {
            _at += 12;
            return;
        }
        _text.replace(_at, 6, "\\uFFFD");
        _substitution.changed = true;
        _at += 6;
    }

    /// The surrogate that is escaped at a place of the text; absent when there is none.
    std::optional<unsigned> surrogateAt(std::size_t at) const {
        if (_text.size() - std::min(at, _text.size()) < 6 || _text.compare(at, 2, "\\u") != 0) {
            return std::nullopt;
        }
        const char* const digits = _text.data() + at + 2;
        unsigned unit = 0;
        if (std::from_chars(digits, digits + 4, unit, 16).ptr != digits + 4) {
            return std::nullopt;
        }
        return unit >= 0xD800 && unit <= 0xDFFF ? std::optional(unit) : std::nullopt;
    }

    std::string& _text;
    simdjson::dom::parser _reader; // of single numbers
    std::size_t _at = 0;
    std::size_t _ordinal = 0;
    JsonSubstitution _substitution;
};

} // namespace

JsonSubstitution substituteUnreadable(std::string& text) {
    return Substituter(text).run();
}

} // namespace KeloAPI
