#pragma once

#include <KeloAPI/base/Export.hpp>

#include <concepts>
#include <cstdint>
#include <string>

namespace KeloAPI {

/// A number as the wire carries it: a boolean, a signed or unsigned 64-bit integer, or a double.
/// A JSON boolean is a number. Integers of 64 bits never pass through a double. Comparison is by
/// value across the kinds: 1, 1.0 and true are equal.
class KELO_API Number {
public:
    /// What the number was when it was made.
    enum class Kind : std::uint8_t {
        Boolean,  ///< true or false.
        Signed,   ///< A signed integer of 64 bits.
        Unsigned, ///< An unsigned integer of 64 bits.
        Double    ///< A double.
    };

    /// A boolean.
    static constexpr Number of(bool value) { return {Kind::Boolean, Bits{.u = value ? 1U : 0U}}; }
    /// Takes unscoped enumerations, too.
    static constexpr Number of(int value) { return {Kind::Signed, Bits{.i = value}}; }
    /// A signed integer.
    template <std::signed_integral Integer>
    static constexpr Number of(Integer value) {
        return {Kind::Signed, Bits{.i = value}};
    }
    /// An unsigned integer.
    template <std::unsigned_integral Integer>
    static constexpr Number of(Integer value) {
        return {Kind::Unsigned, Bits{.u = value}};
    }
    /// A double; it may be infinite or not a number.
    static constexpr Number of(double value) { return {Kind::Double, Bits{.d = value}}; }
    /// A pointer would quietly become a boolean.
    template <class T>
    static Number of(T*) = delete;

    constexpr Kind kind() const { return _kind; } ///< What the number was made of.

    /// Truncated toward zero; a value out of range gives the nearest bound, not-a-number gives 0.
    std::int64_t int64Value() const;
    /// As `int64Value`; a negative value gives 0.
    std::uint64_t uint64Value() const;
    double doubleValue() const; ///< The nearest double.
    /// True exactly when the value is not zero.
    bool boolValue() const;

    /// The canonical decimal text: 42, 1.5, 1 for 1.0 and for true, 1000 for 1e3. Doubles have the
    /// fewest digits that read back as the same value, with an exponent below 1e-4 and from 1e17
    /// on.
    std::string stringValue() const;

    /// By value, whatever the kinds.
    KELO_API friend bool operator==(const Number& a, const Number& b);

private:
    union Bits {
        std::int64_t i;
        std::uint64_t u;
        double d;
    };
    constexpr Number(Kind kind, Bits bits)
        : _bits(bits)
        , _kind(kind) {}

    Bits _bits;
    Kind _kind;
};

} // namespace KeloAPI
