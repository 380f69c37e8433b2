#pragma once

#include "support/JsonText.hpp"
#include "support/Words.hpp"

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/base/Number.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/parsing/JsonParseError.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace KeloAPI::testing {

/// What a value of JSON shows as, by its text; the empty text stands for a missing key.
using Reads = std::map<std::string, std::string>;

inline constexpr const char* absent = "(absent)";

inline constexpr auto incorrect = JsonParseError::IncorrectType;
inline constexpr auto insufficient = JsonParseError::InsufficientData;
inline constexpr auto invalid = JsonParseError::InvalidData;

/// Shown where a parser fails with an error of this case, and names this key; in a rule of a key,
/// an empty one stands for the rule's own.
inline std::string fails(JsonParseError::Case which, const std::string& key = "") {
    return "(fails with " + std::to_string(which) + (key.empty() ? ")" : " at " + key + ")");
}
/// Shown where a parser makes nothing.
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
    static const std::vector<std::string> values = [] {
        auto tried = wordsOf(R"x(null true false 0 7 -3 2.5 1e300 18446744073709551615
            "" "text" "7" "true" "https://media.example/x?y=%20"
            "2015-03-01T12:30:05.250" "2015-02-30T12:30:05.250"
            [] ["text"] [1,2] [{}] {} {"text":"text"})x");
        tried.insert(tried.end(), {"", R"("a b")"});
        return tried;
    }();
    return values;
}

// What the tried values show where a key is read as this kind. A value that is not listed is of
// another kind.
inline Reads texts() {
    Reads reads;
    for (const std::string& value : triedValues()) {
        if (value.starts_with('"')) {
            reads[value] = value.substr(1, value.size() - 2);
        }
    }
    return reads;
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
    Reads reads = numberTexts();
    for (auto& [value, shown] : reads) {
        shown = shown == "0" ? "false" : "true";
    }
    return reads;
}
inline Reads integers() {
    Reads reads = numberTexts();
    reads["2.5"] = "2";
    reads["1e300"] = reads["18446744073709551615"] = "9223372036854775807";
    return reads;
}
inline Reads reals() {
    Reads reads = numberTexts();
    reads["18446744073709551615"] = shown(18446744073709551615.0);
    return reads;
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

/// What a property of a model shows.
template <class Model>
class Property {
public:
    /// A public field, an accessor, or a function.
    template <class Member>
    Property(Member member)
        : _show([member](const Model& model) { return shown(std::invoke(member, model)); }) {}

    std::string operator()(const Model& model) const { return _show(model); }

private:
    std::function<std::string(const Model&)> _show;
};

/// One key of a record: a value that is read well and what its property then shows, the property,
/// what other values show, and what all the rest do. Values of `reads` that are not among the tried
/// ones are tried, too.
template <class Model>
struct KeyRule {
    std::string key;
    std::string value;
    std::string shows;
    Property<Model> property;
    Reads reads;
    std::string otherwise;

    std::string expected(const std::string& tried) const {
        if (tried == value) {
            return shows;
        }
        const auto found = reads.find(tried);
        std::string outcome = found == reads.end() ? otherwise : found->second;
        if (outcome.starts_with("(fails") && outcome.find(" at ") == std::string::npos) {
            outcome.insert(outcome.size() - 1, " at " + key);
        }
        return outcome;
    }
    static bool isFailure(const std::string& outcome) {
        return outcome == nothing || outcome.starts_with("(fails");
    }
    bool required() const { return isFailure(expected("")); }

    std::set<std::string> values() const {
        std::set<std::string> values(triedValues().begin(), triedValues().end());
        for (const auto& [text, shown] : reads) {
            values.insert(text);
        }
        return values;
    }
};
template <class Model>
using KeyRules = std::vector<KeyRule<Model>>;

template <class Model>
using Parse = std::function<std::shared_ptr<Model>(const JsonObject&)>;

/// The `parse` of a parser that is made without arguments.
template <class P>
Parse<typename P::T> parseWith() {
    return [](const JsonObject& json) { return P().parse(json); };
}

/// What becomes of a JSON text, which goes before the model is looked at: the model, or how making
/// it failed.
template <class Model>
std::pair<std::shared_ptr<Model>, std::string> parsed(const Parse<Model>& parse,
                                                      const std::string& json) {
    const JsonText text(json);
    try {
        auto model = parse(text.object());
        return {model, model ? "" : nothing};
    } catch (const JsonParseError& error) {
        const Error value = error.error();
        const auto key = value.userInfo().find("key");
        const auto named = key == value.userInfo().end() ? "" : std::get<std::string>(key->second);
        return {nullptr, fails(static_cast<JsonParseError::Case>(error.code()), named)};
    }
}

/// How a parser fails; empty where it does not.
template <class P>
std::string failureOf(const std::string& json) {
    return parsed(parseWith<P>(), json).second;
}

/// Makes a model of the keys' values and looks at its properties, or at how that fails. A record is
/// its members between `before` and `after`. One key is tried with a value; the others stand as
/// they should, all of them or only those that are required.
template <class Model>
void checkRecord(const Parse<Model>& parse, const KeyRules<Model>& rules, const std::string& before,
                 const std::string& after, bool all, const KeyRule<Model>* tried,
                 const std::string& value) {
    std::map<std::string, std::string> values;
    std::string json = before;
    for (const auto& rule : rules) {
        const std::string own = all || rule.required() ? rule.value : "";
        const std::string& text = values[rule.key] = &rule == tried ? value : own;
        if (!text.empty()) {
            json += (json.ends_with('{') ? "\"" : ",\"") + rule.key + "\":" + text;
        }
    }
    json += after;
    const auto [model, failure] = parsed(parse, json);
    const std::string expected = tried == nullptr ? "" : tried->expected(value);
    if (KeyRule<Model>::isFailure(expected)) {
        EXPECT_EQ(failure, expected) << json;
        return;
    }
    ASSERT_EQ(failure, "") << json;
    for (const auto& rule : rules) {
        EXPECT_EQ(rule.property(*model), rule.expected(values[rule.key]))
            << rule.key << " of " << json;
    }
}

/// Tries each key with every value.
template <class Model>
void checkKeys(const Parse<Model>& parse, const KeyRules<Model>& rules,
               const std::string& before = "{", const std::string& after = "}") {
    for (const bool all : {true, false}) {
        checkRecord<Model>(parse, rules, before, after, all, nullptr, "");
        for (const auto& rule : rules) {
            for (const auto& value : rule.values()) {
                checkRecord(parse, rules, before, after, all, &rule, value);
            }
        }
    }
}
template <class P>
void checkParser(const KeyRules<typename P::T>& rules, const std::string& before = "{",
                 const std::string& after = "}") {
    checkKeys(parseWith<P>(), rules, before, after);
}

} // namespace KeloAPI::testing
