#pragma once

#include "support/JsonText.hpp"

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/base/Number.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/parsing/JsonParseError.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace KeloAPI::testing {

/// What a value of JSON shows as, by its text; the empty text stands for a missing key.
using Reads = std::map<std::string, std::string>;

inline constexpr const char* absent = "(absent)";

inline constexpr auto insufficient = JsonParseError::InsufficientData;

/// Shown where a parser fails with an error of this case, or makes nothing.
inline std::string fails(JsonParseError::Case which) {
    return "(fails with " + std::to_string(which) + ")";
}
inline constexpr const char* nothing = "(nothing)";

// What a property shows.
inline std::string shown(const std::string& text) {
    return text;
}
inline std::string shown(const URL& url) {
    return url.absoluteString();
}
inline std::string shown(bool flag) {
    return flag ? "true" : "false";
}
inline std::string shown(std::int64_t number) {
    return std::to_string(number);
}
inline std::string shown(double number) {
    return Number::of(number).stringValue();
}
inline std::string shown(const Number& number) {
    return number.stringValue();
}
inline std::string shown(Date date) {
    return std::to_string(date.time_since_epoch().count());
}
template <class T>
std::string shown(const std::shared_ptr<T>& object) {
    return object ? "(present)" : absent;
}
template <class T>
std::string shown(const std::optional<T>& value) {
    return value ? shown(*value) : absent;
}

/// Every value that a key is tried with: the key missing, null, and some of each other kind.
inline const std::vector<std::string>& triedValues() {
    static const std::vector<std::string> values = {"",
                                                    "null",
                                                    "true",
                                                    "false",
                                                    "0",
                                                    "7",
                                                    "-3",
                                                    "2.5",
                                                    "1e300",
                                                    "18446744073709551615",
                                                    R"("")",
                                                    R"("text")",
                                                    R"("7")",
                                                    R"("true")",
                                                    R"("a b")",
                                                    R"("https://media.example/x?y=%20")",
                                                    R"("2015-03-01T12:30:05.250")",
                                                    R"("2015-02-30T12:30:05.250")",
                                                    "[]",
                                                    R"(["text"])",
                                                    "[1,2]",
                                                    "[{}]",
                                                    "{}",
                                                    R"({"text":"text"})"};
    return values;
}

// What the tried values show where a key is read as this kind. A value that is not listed is of
// another kind.
inline Reads texts() {
    return {{R"("")", ""},
            {R"("text")", "text"},
            {R"("7")", "7"},
            {R"("true")", "true"},
            {R"("a b")", "a b"},
            {R"("https://media.example/x?y=%20")", "https://media.example/x?y=%20"},
            {R"("2015-03-01T12:30:05.250")", "2015-03-01T12:30:05.250"},
            {R"("2015-02-30T12:30:05.250")", "2015-02-30T12:30:05.250"}};
}
inline Reads numberTexts() {
    return {{"true", "1"},       {"false", "0"},
            {"0", "0"},          {"7", "7"},
            {"-3", "-3"},        {"2.5", "2.5"},
            {"1e300", "1e+300"}, {"18446744073709551615", "18446744073709551615"}};
}
inline Reads identifiers() {
    Reads both = texts();
    both.merge(numberTexts());
    return both;
}
inline Reads flags() {
    return {
        {"true", "true"}, {"false", "false"}, {"0", "false"},    {"7", "true"},
        {"-3", "true"},   {"2.5", "true"},    {"1e300", "true"}, {"18446744073709551615", "true"}};
}
inline Reads integers() {
    return {{"true", "1"},
            {"false", "0"},
            {"0", "0"},
            {"7", "7"},
            {"-3", "-3"},
            {"2.5", "2"},
            {"1e300", "9223372036854775807"},
            {"18446744073709551615", "9223372036854775807"}};
}
inline Reads reals() {
    return {{"true", "1"},       {"false", "0"},
            {"0", "0"},          {"7", "7"},
            {"-3", "-3"},        {"2.5", "2.5"},
            {"1e300", "1e+300"}, {"18446744073709551615", shown(18446744073709551615.0)}};
}
inline Reads urls() {
    return {{R"("text")", "text"},
            {R"("7")", "7"},
            {R"("true")", "true"},
            {R"("https://media.example/x?y=%20")", "https://media.example/x?y=%20"}};
}
inline Reads dates() {
    return {{R"("2015-03-01T12:30:05.250")", "1425213005250000"}};
}

/// One key of a record: a value that is read well and what its property then shows, the property,
/// what other values show, and what all the rest do.
template <class Model>
struct KeyRule {
    std::string key;
    std::string value;
    std::string shows;
    std::function<std::string(const Model&)> property;
    Reads reads;
    std::string otherwise;

    std::string expected(const std::string& tried) const {
        if (tried == value) {
            return shows;
        }
        const auto found = reads.find(tried);
        return found == reads.end() ? otherwise : found->second;
    }
    static bool isFailure(const std::string& outcome) {
        return outcome == nothing || outcome.starts_with("(fails");
    }
    bool required() const { return isFailure(expected("")); }
};

/// A parser's keys, each of which is tried with every value while the others stand as they should,
/// once all of them and once only those that are required.
template <class Model>
class KeyTable {
public:
    using Parse = std::function<std::shared_ptr<Model>(const JsonObject&)>;
    using Rules = std::vector<KeyRule<Model>>;

    /// `wrap` makes a record of the text of its members.
    KeyTable(Parse parse, Rules rules, std::function<std::string(const std::string&)> wrap = braced)
        : _parse(std::move(parse))
        , _rules(std::move(rules))
        , _wrap(std::move(wrap)) {}

    void check() const {
        for (const bool all : {true, false}) {
            check(all, nullptr, "");
            for (const auto& rule : _rules) {
                for (const auto& value : triedValues()) {
                    check(all, &rule, value);
                }
            }
        }
    }

private:
    static std::string braced(const std::string& members) { return "{" + members + "}"; }

    void check(bool all, const KeyRule<Model>* tried, const std::string& value) const {
        std::map<std::string, std::string> values;
        std::string members;
        for (const auto& rule : _rules) {
            const std::string own = all || rule.required() ? rule.value : "";
            const std::string& text = values[rule.key] = &rule == tried ? value : own;
            if (!text.empty()) {
                members += (members.empty() ? "\"" : ",\"") + rule.key + "\":" + text;
            }
        }
        const std::string json = _wrap(members);
        const auto [model, failure] = parsed(json);
        const std::string expected = tried == nullptr ? "" : tried->expected(value);
        if (KeyRule<Model>::isFailure(expected)) {
            EXPECT_EQ(failure, expected) << json;
            return;
        }
        ASSERT_EQ(failure, "") << json;
        for (const auto& rule : _rules) {
            EXPECT_EQ(rule.property(*model), rule.expected(values[rule.key]))
                << rule.key << " of " << json;
        }
    }

    std::pair<std::shared_ptr<Model>, std::string> parsed(const std::string& json) const {
        const JsonText text(json);
        try {
            auto model = _parse(text.object());
            return {model, model ? "" : nothing};
        } catch (const JsonParseError& error) {
            return {nullptr, fails(static_cast<JsonParseError::Case>(error.code()))};
        }
    }

    Parse _parse;
    Rules _rules;
    std::function<std::string(const std::string&)> _wrap;
};

/// The `parse` of a parser that is made without arguments.
template <class P>
std::function<std::shared_ptr<typename P::T>(const JsonObject&)> parseWith() {
    return [](const JsonObject& json) { return P().parse(json); };
}

/// What a public field or an accessor of a model shows.
template <class Model, class Member>
std::function<std::string(const Model&)> showing(Member member) {
    return [member](const Model& model) { return shown(std::invoke(member, model)); };
}

} // namespace KeloAPI::testing
