#include <KeloAPI/base/Number.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace KeloAPI {

namespace {

constexpr auto highest = std::numeric_limits<std::int64_t>::max();
constexpr auto lowest = std::numeric_limits<std::int64_t>::min();
constexpr auto twoTo63 = std::uint64_t{1} << 63U;
constexpr auto highestUnsigned = std::numeric_limits<std::uint64_t>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

template <class T>
concept NumberOf = requires(T value) {
    Number::of(value);
};

} // namespace

// No pointer becomes a boolean.
static_assert(!NumberOf<const char*> && !NumberOf<void*>);
static_assert(NumberOf<bool> && NumberOf<int>);

static_assert(Number::of(true).kind() == Number::Kind::Boolean);
static_assert(Number::of(1).kind() == Number::Kind::Signed);
static_assert(Number::of(std::int64_t{1}).kind() == Number::Kind::Signed);
static_assert(Number::of(-5L).kind() == Number::Kind::Signed);
static_assert(Number::of(5U).kind() == Number::Kind::Unsigned);
static_assert(Number::of(5ULL).kind() == Number::Kind::Unsigned);
static_assert(Number::of(std::uint64_t{1}).kind() == Number::Kind::Unsigned);
static_assert(Number::of(1.0).kind() == Number::Kind::Double);
static_assert(Number::of(1.0F).kind() == Number::Kind::Double);

TEST(NumberTest, TakesIntegersOfEveryType) {
    EXPECT_EQ(Number::of(std::uint8_t{255}).uint64Value(), 255U);
    EXPECT_EQ(Number::of(-5LL).int64Value(), -5);
    EXPECT_EQ(Number::of(short{-5}).int64Value(), -5);
    EXPECT_EQ(Number::of(std::size_t{7}), Number::of(7));
    enum Unscoped { seven = 7 };
    EXPECT_EQ(Number::of(seven), Number::of(7));
}

TEST(NumberTest, ReadsAsIntegersABooleanAndAText) {
    struct Row {
        Number number;
        std::int64_t asSigned;
        std::uint64_t asUnsigned;
        bool asBoolean;
        const char* text;
    };
    const Row table[] = {
        {Number::of(true), 1, 1, true, "1"},
        {Number::of(false), 0, 0, false, "0"},
        {Number::of(0), 0, 0, false, "0"},
        {Number::of(42), 42, 42, true, "42"},
        {Number::of(-1), -1, 0, true, "-1"},
        {Number::of(-42), -42, 0, true, "-42"},
        {Number::of(highest), highest, twoTo63 - 1, true, "9223372036854775807"},
        {Number::of(lowest), lowest, 0, true, "-9223372036854775808"},
        {Number::of(std::uint64_t{0}), 0, 0, false, "0"},
        {Number::of(twoTo63 - 1), highest, twoTo63 - 1, true, "9223372036854775807"},
        {Number::of(twoTo63), highest, twoTo63, true, "9223372036854775808"},
        {Number::of(highestUnsigned), highest, highestUnsigned, true, "18446744073709551615"},
        {Number::of(0.0), 0, 0, false, "0"},
        {Number::of(-0.0), 0, 0, false, "-0"},
        {Number::of(1.0), 1, 1, true, "1"},
        {Number::of(1.5), 1, 1, true, "1.5"},
        {Number::of(-1.5), -1, 0, true, "-1.5"},
        {Number::of(1.9), 1, 1, true, "1.9"},
        {Number::of(2.9), 2, 2, true, "2.9"},
        {Number::of(-2.9), -2, 0, true, "-2.9"},
        {Number::of(1e3), 1000, 1000, true, "1000"},
        {Number::of(1234.5678), 1234, 1234, true, "1234.5678"},
        {Number::of(100.0 / 3), 33, 33, true, "33.333333333333336"},
        {Number::of(0.25), 0, 0, true, "0.25"},
        {Number::of(-0.5), 0, 0, true, "-0.5"},
        {Number::of(0.999999999999), 0, 0, true, "0.999999999999"},
        {Number::of(0.1), 0, 0, true, "0.1"},
        {Number::of(0.1 + 0.2), 0, 0, true, "0.30000000000000004"},
        {Number::of(0.0001), 0, 0, true, "0.0001"},
        {Number::of(0.00012), 0, 0, true, "0.00012"},
        {Number::of(0.00001), 0, 0, true, "1e-05"},
        {Number::of(1.25e-7), 0, 0, true, "1.25e-07"},
        {Number::of(5e-324), 0, 0, true, "5e-324"},
        {Number::of(9007199254740993.0), 9007199254740992, 9007199254740992, true,
         "9007199254740992"},
        {Number::of(1e16), 10000000000000000, 10000000000000000, true, "10000000000000000"},
        {Number::of(12345678901234568.0), 12345678901234568, 12345678901234568, true,
         "12345678901234568"},
        {Number::of(1e17), 100000000000000000, 100000000000000000, true, "1e+17"},
        {Number::of(9223372036854774784.0), highest - 1023, twoTo63 - 1024, true,
         "9.223372036854775e+18"},
        {Number::of(9223372036854775808.0), highest, twoTo63, true, "9.223372036854776e+18"},
        {Number::of(18446744073709549568.0), highest, highestUnsigned - 2047, true,
         "1.844674407370955e+19"},
        {Number::of(18446744073709551616.0), highest, highestUnsigned, true,
         "1.8446744073709552e+19"},
        {Number::of(1.7976931348623157e308), highest, highestUnsigned, true,
         "1.7976931348623157e+308"},
        {Number::of(-9223372036854775808.0), lowest, 0, true, "-9.223372036854776e+18"},
        {Number::of(-9223372036854777856.0), lowest, 0, true, "-9.223372036854778e+18"},
        {Number::of(-2.5e300), lowest, 0, true, "-2.5e+300"},
        {Number::of(infinity), highest, highestUnsigned, true, "inf"},
        {Number::of(-infinity), lowest, 0, true, "-inf"},
        {Number::of(notANumber), 0, 0, true, "nan"},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(row.number.int64Value(), row.asSigned);
        EXPECT_EQ(row.number.uint64Value(), row.asUnsigned);
        EXPECT_EQ(row.number.boolValue(), row.asBoolean);
        EXPECT_EQ(row.number.stringValue(), row.text);
    }
}

TEST(NumberTest, ReadsAsADouble) {
    EXPECT_EQ(Number::of(true).doubleValue(), 1.0);
    EXPECT_EQ(Number::of(-3).doubleValue(), -3.0);
    EXPECT_EQ(Number::of(highestUnsigned).doubleValue(), 18446744073709551616.0);
    EXPECT_EQ(Number::of(0.1).doubleValue(), 0.1);
    EXPECT_TRUE(std::signbit(Number::of(-0.0).doubleValue()));
    EXPECT_TRUE(std::isnan(Number::of(notANumber).doubleValue()));
}

TEST(NumberTest, TextsOfDoublesReadBackAsTheSameValue) {
    double value = 1.0 / 3;
    for (int i = 0; i < 300; ++i) {
        for (const double sample : {value, -value, 1 / value}) {
            EXPECT_EQ(std::stod(Number::of(sample).stringValue()), sample);
        }
        value *= 7.3;
    }
}

TEST(NumberTest, IsEqualByValueAcrossKindsAndNotByRoundingOrByBits) {
    const std::vector<std::vector<Number>> equals = {
        {Number::of(1), Number::of(1.0), Number::of(true), Number::of(std::uint64_t{1})},
        {Number::of(0), Number::of(0.0), Number::of(-0.0), Number::of(false)},
        {Number::of(-1), Number::of(-1.0)},
        {Number::of(lowest), Number::of(-9223372036854775808.0)},
        {Number::of(twoTo63), Number::of(9223372036854775808.0)},
        {Number::of(highest)},
        {Number::of(highestUnsigned)},
        {Number::of(18446744073709551616.0)},
        {Number::of(std::int64_t{9007199254740993})},
        {Number::of(9007199254740992.0)},
        {Number::of(1.5)},
        {Number::of(2)},
        {Number::of(infinity)},
    };
    for (const auto& group : equals) {
        for (const auto& other : equals) {
            for (const Number& a : group) {
                EXPECT_NE(a, Number::of(notANumber));
                for (const Number& b : other) {
                    EXPECT_EQ(a == b, &group == &other)
                        << a.stringValue() << ' ' << b.stringValue();
                }
            }
        }
    }
    EXPECT_NE(Number::of(notANumber), Number::of(notANumber));
}

} // namespace KeloAPI
