#include <KeloAPI/base/Number.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace KeloAPI {

namespace {

constexpr auto highest = std::numeric_limits<std::int64_t>::max();
constexpr auto lowest = std::numeric_limits<std::int64_t>::min();
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

TEST(NumberTest, KnowsItsKind) {
    EXPECT_EQ(Number::of(true).kind(), Number::Kind::Boolean);
    EXPECT_EQ(Number::of(1).kind(), Number::Kind::Signed);
    EXPECT_EQ(Number::of(std::int64_t{1}).kind(), Number::Kind::Signed);
    EXPECT_EQ(Number::of(std::uint64_t{1}).kind(), Number::Kind::Unsigned);
    EXPECT_EQ(Number::of(1.0).kind(), Number::Kind::Double);
    EXPECT_EQ(Number::of(1.0F).kind(), Number::Kind::Double);
}

TEST(NumberTest, TakesIntegersOfEveryType) {
    EXPECT_EQ(Number::of(5U).kind(), Number::Kind::Unsigned);
    EXPECT_EQ(Number::of(5ULL).kind(), Number::Kind::Unsigned);
    EXPECT_EQ(Number::of(std::uint8_t{255}).uint64Value(), 255U);
    EXPECT_EQ(Number::of(-5L).kind(), Number::Kind::Signed);
    EXPECT_EQ(Number::of(-5LL).int64Value(), -5);
    EXPECT_EQ(Number::of(short{-5}).int64Value(), -5);
    EXPECT_EQ(Number::of(std::size_t{7}), Number::of(7));
    enum Unscoped { seven = 7 };
    EXPECT_EQ(Number::of(seven), Number::of(7));
}

TEST(NumberTest, ReadsAsASignedInteger) {
    const std::pair<Number, std::int64_t> table[] = {
        {Number::of(true), 1},
        {Number::of(false), 0},
        {Number::of(-7), -7},
        {Number::of(highest), highest},
        {Number::of(lowest), lowest},
        {Number::of(std::uint64_t{9223372036854775807ULL}), highest},
        {Number::of(std::uint64_t{9223372036854775808ULL}), highest},
        {Number::of(highestUnsigned), highest},
        {Number::of(2.9), 2},
        {Number::of(-2.9), -2},
        {Number::of(0.999999999999), 0},
        {Number::of(-0.0), 0},
        {Number::of(1e3), 1000},
        {Number::of(9007199254740993.0), 9007199254740992},
        {Number::of(9223372036854774784.0), 9223372036854774784},
        {Number::of(9223372036854775808.0), highest},
        {Number::of(1e300), highest},
        {Number::of(-9223372036854775808.0), lowest},
        {Number::of(-9223372036854777856.0), lowest},
        {Number::of(-1e300), lowest},
        {Number::of(infinity), highest},
        {Number::of(-infinity), lowest},
        {Number::of(notANumber), 0},
        {Number::of(5e-324), 0},
    };
    for (const auto& [number, expected] : table) {
        EXPECT_EQ(number.int64Value(), expected) << number.stringValue();
    }
}

TEST(NumberTest, ReadsAsAnUnsignedInteger) {
    const std::pair<Number, std::uint64_t> table[] = {
        {Number::of(true), 1},
        {Number::of(-1), 0},
        {Number::of(lowest), 0},
        {Number::of(highest), 9223372036854775807ULL},
        {Number::of(highestUnsigned), highestUnsigned},
        {Number::of(-0.5), 0},
        {Number::of(-1.5), 0},
        {Number::of(-infinity), 0},
        {Number::of(notANumber), 0},
        {Number::of(1.9), 1},
        {Number::of(9223372036854775808.0), 9223372036854775808ULL},
        {Number::of(18446744073709549568.0), 18446744073709549568ULL},
        {Number::of(18446744073709551616.0), highestUnsigned},
        {Number::of(infinity), highestUnsigned},
    };
    for (const auto& [number, expected] : table) {
        EXPECT_EQ(number.uint64Value(), expected) << number.stringValue();
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

TEST(NumberTest, ReadsAsABoolean) {
    EXPECT_TRUE(Number::of(true).boolValue());
    EXPECT_FALSE(Number::of(false).boolValue());
    EXPECT_TRUE(Number::of(-1).boolValue());
    EXPECT_FALSE(Number::of(0).boolValue());
    EXPECT_TRUE(Number::of(lowest).boolValue());
    EXPECT_FALSE(Number::of(std::uint64_t{0}).boolValue());
    EXPECT_TRUE(Number::of(0.25).boolValue()) << "not truncated first";
    EXPECT_FALSE(Number::of(0.0).boolValue());
    EXPECT_FALSE(Number::of(-0.0).boolValue());
    EXPECT_TRUE(Number::of(5e-324).boolValue());
    EXPECT_TRUE(Number::of(notANumber).boolValue()) << "it is not zero";
}

TEST(NumberTest, HasACanonicalText) {
    const std::pair<Number, const char*> table[] = {
        {Number::of(42), "42"},
        {Number::of(-42), "-42"},
        {Number::of(0), "0"},
        {Number::of(true), "1"},
        {Number::of(false), "0"},
        {Number::of(highest), "9223372036854775807"},
        {Number::of(lowest), "-9223372036854775808"},
        {Number::of(highestUnsigned), "18446744073709551615"},
        {Number::of(1.5), "1.5"},
        {Number::of(-1.5), "-1.5"},
        {Number::of(1.0), "1"},
        {Number::of(1e3), "1000"},
        {Number::of(1234.5678), "1234.5678"},
        {Number::of(0.0), "0"},
        {Number::of(-0.0), "-0"},
        {Number::of(0.1), "0.1"},
        {Number::of(0.1 + 0.2), "0.30000000000000004"},
        {Number::of(100.0 / 3), "33.333333333333336"},
        {Number::of(0.0001), "0.0001"},
        {Number::of(0.00012), "0.00012"},
        {Number::of(0.00001), "1e-05"},
        {Number::of(1.25e-7), "1.25e-07"},
        {Number::of(1e16), "10000000000000000"},
        {Number::of(12345678901234568.0), "12345678901234568"},
        {Number::of(1e17), "1e+17"},
        {Number::of(-2.5e300), "-2.5e+300"},
        {Number::of(5e-324), "5e-324"},
        {Number::of(1.7976931348623157e308), "1.7976931348623157e+308"},
        {Number::of(infinity), "inf"},
        {Number::of(-infinity), "-inf"},
        {Number::of(notANumber), "nan"},
    };
    for (const auto& [number, expected] : table) {
        EXPECT_EQ(number.stringValue(), expected);
    }
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

TEST(NumberTest, IsEqualByValueAcrossKinds) {
    EXPECT_EQ(Number::of(1), Number::of(1.0));
    EXPECT_EQ(Number::of(1), Number::of(true));
    EXPECT_EQ(Number::of(1.0), Number::of(true));
    EXPECT_EQ(Number::of(1), Number::of(std::uint64_t{1}));
    EXPECT_EQ(Number::of(0.0), Number::of(-0.0));
    EXPECT_EQ(Number::of(-0.0), Number::of(false));
    EXPECT_EQ(Number::of(lowest), Number::of(-9223372036854775808.0));
    EXPECT_EQ(Number::of(std::uint64_t{1} << 63U), Number::of(9223372036854775808.0));
    EXPECT_EQ(Number::of(infinity), Number::of(infinity));
}

TEST(NumberTest, IsNotEqualByRoundingOrByBits) {
    EXPECT_NE(Number::of(-1), Number::of(highestUnsigned));
    EXPECT_NE(Number::of(lowest), Number::of(std::uint64_t{1} << 63U));
    EXPECT_NE(Number::of(highest), Number::of(9223372036854775808.0));
    EXPECT_NE(Number::of(highestUnsigned), Number::of(18446744073709551616.0));
    EXPECT_NE(Number::of(std::int64_t{9007199254740993}), Number::of(9007199254740992.0));
    EXPECT_NE(Number::of(1), Number::of(1.5));
    EXPECT_NE(Number::of(2), Number::of(true));
    EXPECT_NE(Number::of(notANumber), Number::of(notANumber));
    EXPECT_NE(Number::of(notANumber), Number::of(0));
    EXPECT_NE(Number::of(infinity), Number::of(highest));
    EXPECT_NE(Number::of(-1.0), Number::of(std::uint64_t{1}));
}

} // namespace KeloAPI
