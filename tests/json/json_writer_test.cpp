#include <KeloAPI/json/internal/JsonWriter.hpp>

#include <gtest/gtest.h>

#include <limits>

namespace KeloAPI {

TEST(JsonWriterTest, WritesEveryKindOfValueCompactly) {
    const std::pair<ParameterValue, const char*> table[] = {
        {nullptr, "null"},
        {true, "true"},
        {false, "false"},
        {-5, "-5"},
        {std::numeric_limits<std::uint64_t>::max(), "18446744073709551615"},
        {0.5, "0.5"},
        {1e300, "1e+300"},
        {"", R"("")"},
        {"a/b", R"("a/b")"},
        {"caf\u00e9", "\"caf\u00e9\""},
        {ParameterList{}, "[]"},
        {ParameterList{1, "two", ParameterList{nullptr}}, R"([1,"two",[null]])"},
        {Parameters{}, "{}"},
        {Parameters{{"b", Parameters{{"c", true}}}, {"a", 1}}, R"({"a":1,"b":{"c":true}})"},
    };
    for (const auto& [value, text] : table) {
        EXPECT_EQ(jsonText(value), text);
    }
    EXPECT_EQ(jsonText(Parameters{{"a", 1}, {"b", 2}}), R"({"a":1,"b":2})");
}

TEST(JsonWriterTest, EscapesWhatWouldEndATextAndControlCharacters) {
    EXPECT_EQ(jsonText(ParameterValue("a\"b\\c")), R"("a\"b\\c")");
    EXPECT_EQ(jsonText(ParameterValue(std::string("\0\n\x1f \x7f", 5))),
              "\"\\u0000\\u000a\\u001f \x7f\"");
    EXPECT_EQ(jsonText(Parameters{{"\"", 1}}), R"({"\"":1})");
}

TEST(JsonWriterTest, HasNoTextForWhatHasNoForm) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    for (const ParameterValue& none :
         {ParameterValue(infinity), ParameterValue(-infinity), ParameterValue(notANumber),
          ParameterValue("\xFF"), ParameterValue("\xED\xA0\x80")}) {
        EXPECT_EQ(jsonText(none), std::nullopt);
        EXPECT_EQ(jsonText(ParameterValue(ParameterList{1, none, 2})), std::nullopt);
        EXPECT_EQ(jsonText(Parameters{{"a", 1}, {"b", none}, {"c", 2}}), std::nullopt);
    }
    EXPECT_EQ(jsonText(Parameters{{"\xFF", 1}}), std::nullopt);
}

} // namespace KeloAPI
