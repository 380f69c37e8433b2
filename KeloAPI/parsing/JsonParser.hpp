#pragma once

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/json/Json.hpp>
#include <KeloAPI/parsing/JsonParseError.hpp>

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace KeloAPI {

/// What every parser can do, whatever it makes. Usable on any thread.
class KELO_API JsonParserBase {
public:
    /// The one formatter that reads the service's dates: the same object on every call.
    const DateFormatter& dateFormatter() const;

    /// An identifier that may come as text or as a number: the text itself, or the number's
    /// `numberText`. Absent for a value that does not exist and for any other kind.
    std::optional<std::string> parseId(const JsonValue& value) const;

protected:
    JsonParserBase() = default;
    JsonParserBase(const JsonParserBase&) = default;
    JsonParserBase& operator=(const JsonParserBase&) = default;
    ~JsonParserBase() = default;
};

/// Makes an object of type `Item` from a JSON object. Parsers have no state that changes: one may
/// be used any number of times and on any thread.
///
/// The common shape: required keys that are missing or of another kind make `parse` throw
/// `JsonParseError::InsufficientData`; optional ones leave their property absent.
template <class Item>
class JsonParser : public JsonParserBase {
public:
    /// What this parser makes.
    using T = Item;

    virtual ~JsonParser() = default;

    /// The object that `json` describes, never null; throws where it describes none.
    virtual std::shared_ptr<T> parse(const JsonObject& json) const = 0;

    /// The objects of a list, in order. With `ignoreError` those that fail are left out; without,
    /// the first failure is thrown and nothing is returned.
    std::vector<std::shared_ptr<T>> parseArray(const JsonObjectList& array,
                                               bool ignoreError = false) const;

protected:
    JsonParser() = default;
    JsonParser(const JsonParser&) = default;
    JsonParser& operator=(const JsonParser&) = default;
};

namespace detail {

/// The `Reading` of the library's own parsers: they are quick and call nobody, so a short response
/// is read on the network thread on which it arrives. Not for hosts' parsers.
struct OnArrival {};

/// Whether all objects of the parser type `P` are of that kind.
template <class P>
constexpr bool readsOnArrival = [] {
    if constexpr (requires { typename P::Reading; }) {
        return std::is_final_v<P> && std::is_same_v<typename P::Reading, OnArrival>;
    }
    return false;
}();

/// What a parser made; a parser that made nothing without saying why has failed.
template <class T>
std::shared_ptr<T> notNull(std::shared_ptr<T> object) {
    if (!object) {
        throw JsonParseError(JsonParseError::InsufficientData);
    }
    return object;
}

} // namespace detail

template <class Item>
std::vector<std::shared_ptr<Item>> JsonParser<Item>::parseArray(const JsonObjectList& array,
                                                                bool ignoreError) const {
    std::vector<std::shared_ptr<Item>> items;
    items.reserve(array.size());
    for (const JsonObject json : array) {
        try {
            items.push_back(detail::notNull(parse(json)));
        } catch (...) {
            if (!ignoreError) {
                throw;
            }
        }
    }
    return items;
}

} // namespace KeloAPI
