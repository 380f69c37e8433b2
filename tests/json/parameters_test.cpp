#include <KeloAPI/json/Parameters.hpp>

#include <gtest/gtest.h>

#include <type_traits>

namespace KeloAPI {

namespace {

template <class T>
T held(const ParameterValue& value) {
    return std::get<T>(value.held());
}

template <class T>
concept ListedInParameters = requires(T value) {
    Parameters{{"a", value}};
};

} // namespace

// No pointer becomes a boolean.
static_assert(!std::is_constructible_v<ParameterValue, int*>);
static_assert(!std::is_constructible_v<ParameterValue, unsigned char*>);
static_assert(!std::is_constructible_v<ParameterValue, const void*>);
static_assert(!std::is_convertible_v<std::string*, ParameterValue>);
static_assert(std::is_convertible_v<const char*, ParameterValue>);
static_assert(!ListedInParameters<const int*>);
static_assert(ListedInParameters<int> && ListedInParameters<const char*>);

TEST(ParametersTest, AValueKeepsTheKindItWasGiven) {
    EXPECT_EQ(held<std::nullptr_t>(ParameterValue()), nullptr);
    EXPECT_EQ(held<std::nullptr_t>(nullptr), nullptr);
    EXPECT_EQ(held<bool>(true), true);
    EXPECT_EQ(held<std::int64_t>(5), 5);
    EXPECT_EQ(held<std::int64_t>(short{-5}), -5);
    EXPECT_EQ(held<std::int64_t>(-5LL), -5);
    EXPECT_EQ(held<std::int64_t>(INT64_MIN), INT64_MIN);
    EXPECT_EQ(held<std::uint64_t>(5U), 5U);
    EXPECT_EQ(held<std::uint64_t>(UINT64_MAX), UINT64_MAX);
    EXPECT_EQ(held<double>(0.5), 0.5);
    EXPECT_EQ(held<double>(0.5F), 0.5);
    EXPECT_EQ(held<std::string>("text"), "text");
    EXPECT_EQ(held<std::string>(std::string_view("text").substr(1)), "ext");
    EXPECT_EQ(held<std::string>(std::string("t\0t", 3)), std::string("t\0t", 3));
    EXPECT_EQ(held<ParameterList>(ParameterList{1, "a"}).size(), 2U);
    EXPECT_EQ(held<Parameters>(Parameters{{"a", 1}}).size(), 1U);
}

TEST(ParametersTest, CanBeWrittenAsABracedList) {
    const Parameters parameters = {{"size", 5},
                                   {"overflow", "trunc"},
                                   {"ratio", 0.5},
                                   {"flag", false},
                                   {"nothing", nullptr},
                                   {"list", ParameterList{1, "two", ParameterList{3}}},
                                   {"map", Parameters{{"inner", Parameters{{"deep", true}}}}}};
    EXPECT_EQ(parameters.size(), 7U);
    EXPECT_EQ(held<std::string>(parameters.at("overflow")), "trunc");
    EXPECT_EQ(parameters.find(std::string_view("size"))->second, ParameterValue(5));
    EXPECT_EQ(held<ParameterList>(parameters.at("list"))[2], ParameterValue(ParameterList{3}));
}

TEST(ParametersTest, ValuesAreEqualWithinAKindOnly) {
    EXPECT_EQ(ParameterValue(1), ParameterValue(1L));
    EXPECT_NE(ParameterValue(1), ParameterValue(1U));
    EXPECT_NE(ParameterValue(1), ParameterValue(true));
    EXPECT_NE(ParameterValue(1), ParameterValue("1"));
    EXPECT_NE(ParameterValue(), ParameterValue(false));
    EXPECT_EQ((Parameters{{"a", 1}}), (Parameters{{"a", 1}}));
    EXPECT_NE((Parameters{{"a", 1}}), (Parameters{{"a", 2}}));
}

TEST(ParametersTest, OwnsWhatItHolds) {
    char secret[] = "se5ame";
    char* const pointer = secret;
    const Parameters parameters = {{"pointer", pointer},
                                   {"array", secret},
                                   {"view", std::string_view(secret)},
                                   {"text", std::string(secret)}};
    secret[0] = 'x';
    for (const auto& [key, value] : parameters) {
        EXPECT_EQ(held<std::string>(value), "se5ame") << key;
    }
}

} // namespace KeloAPI
