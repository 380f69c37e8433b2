#pragma once

#include <KeloAPI/base/Number.hpp>
#include <KeloAPI/base/Result.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace KeloAPI {

class JsonObject;
class JsonValue;
template <class Element>
class JsonIterator;
template <class Element>
class JsonList;

/// A view of a JSON list.
using JsonArray = JsonList<JsonValue>;
/// A view of a JSON list whose elements are all objects.
using JsonObjectList = JsonList<JsonObject>;

/// A view of one value of a `JsonDocument`, as cheap to copy as a `std::string_view` and valid as
/// long as the document lives. The value under a key that is missing does not exist, which
/// differs from null.
///
/// The views inside an optional go with it: bind `objects()`, `array()` and `object()` to a name
/// before looping over them. `for (x : *value.objects())` loops over what is gone already.
class KELO_API JsonValue {
public:
    /// A value that does not exist.
    constexpr JsonValue() = default;

    /// False for the value under a key that is not there.
    bool exists() const { return _document != nullptr; }
    bool isNull() const; ///< True for null; false for a value that does not exist.

    /// The value when it is text (UTF-8); absent otherwise.
    std::optional<std::string_view> text() const;
    /// The value when it is a number or a boolean; absent otherwise. An integer beyond 64 bits is
    /// the nearest double, and a number beyond doubles the largest double of its sign.
    std::optional<Number> number() const;
    /// The decimal text of `number`; that of an integer beyond 64 bits is its digits as written.
    std::optional<std::string> numberText() const;
    /// `number` as a 64-bit integer, a boolean and a double.
    std::optional<std::int64_t> integer() const;
    std::optional<bool> boolean() const; ///< `number` as a boolean: whether it is not zero.
    std::optional<double> real() const;  ///< `number` as a double.
    /// The value when it is an object; absent otherwise.
    std::optional<JsonObject> object() const;
    /// The value when it is a list; absent otherwise.
    std::optional<JsonArray> array() const;
    /// The value when it is a list whose elements are all objects; absent otherwise.
    std::optional<JsonObjectList> objects() const;

    /// The value as text, whatever its kind: a text itself, a number's `numberText`, "<null>" for
    /// null, compact JSON for a list or an object (integers beyond 64 bits are doubles there).
    /// Empty for a value that does not exist.
    std::string description() const;

private:
    friend struct JsonAccess;
    const void* _document = nullptr;
    std::size_t _index = 0;
};

/// A view of a JSON object. Where a key stands twice, the first one counts. Its iterators, like
/// those of the lists below, are valid as long as the document lives, even where the view itself
/// has gone.
class KELO_API JsonObject {
public:
    /// A key and the value under it.
    struct Member {
        std::string_view key; ///< Without its escapes; valid as long as the document lives.
        JsonValue value;      ///< It always exists.
    };
    using Iterator = JsonIterator<Member>; ///< In the order of the text.

    /// The number of members.
    std::size_t size() const;
    bool empty() const { return size() == 0; } ///< Whether it has no members.

    /// The value under `key`.
    JsonValue operator[](std::string_view key) const;

    /// The values under several keys, found in one pass over the object: faster than a look-up for
    /// each, and they can be bound by name.
    template <class... Keys>
    std::array<JsonValue, sizeof...(Keys)> values(const Keys&... keys) const {
        const std::array<std::string_view, sizeof...(Keys)> wanted = {std::string_view(keys)...};
        std::array<JsonValue, sizeof...(Keys)> found;
        find(wanted.data(), found.data(), wanted.size());
        return found;
    }

    Iterator begin() const; ///< The first member.
    Iterator end() const;   ///< Behind the last member.

private:
    friend struct JsonAccess;
    explicit JsonObject(JsonValue value)
        : _value(value) {}
    void find(const std::string_view* keys, JsonValue* found, std::size_t count) const;

    JsonValue _value;
};

/// A view of a JSON list, as `JsonArray` and `JsonObjectList`.
template <class Element>
class KELO_API JsonList {
public:
    using Iterator = JsonIterator<Element>; ///< In the order of the text.

    /// An empty list.
    JsonList() = default;

    std::size_t size() const;                  ///< The number of elements.
    bool empty() const { return size() == 0; } ///< Whether it has no elements.
    Iterator begin() const;                    ///< The first element.
    Iterator end() const;                      ///< Behind the last element.

private:
    friend struct JsonAccess;
    explicit JsonList(JsonValue value)
        : _value(value) {}

    JsonValue _value;
};

/// Goes over the members of an object or the elements of a list.
template <class Element>
class KELO_API JsonIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Element;
    using difference_type = std::ptrdiff_t;
    using pointer = const Element*;
    using reference = Element;

    Element operator*() const;  ///< The element here, made anew at every call.
    JsonIterator& operator++(); ///< Goes on to the next element.
    /// At the same place; of one list only.
    friend bool operator==(const JsonIterator&, const JsonIterator&) = default;

private:
    friend struct JsonAccess;
    JsonIterator(const void* document, std::size_t index)
        : _document(document)
        , _index(index) {}

    const void* _document;
    std::size_t _index;
};

extern template class JsonList<JsonValue>;
extern template class JsonList<JsonObject>;
extern template class JsonIterator<JsonValue>;
extern template class JsonIterator<JsonObject>;
extern template class JsonIterator<JsonObject::Member>;

/// The parse of one JSON text, which every view of it points into. Owning and movable: moving it
/// leaves the views valid.
class KELO_API JsonDocument {
public:
    /// The domain of the errors of `parse`; their codes are the reader's own.
    static constexpr std::string_view errorDomain = "KeloAPI.JsonSyntax";

    /// Reads a whole JSON text in UTF-8, with or without a byte-order mark. Malformed text and more
    /// than 1024 levels of objects and lists in one another are errors; a number of any size
    /// is not. An escaped surrogate that stands alone reads as U+FFFD. The text may go afterwards.
    /// Spare capacity of 64 bytes and more behind the text saves a copy of it.
    static Result<JsonDocument> parse(const std::string& text);

    JsonDocument(JsonDocument&&) noexcept;            ///< Leaves the other one without a text.
    JsonDocument& operator=(JsonDocument&&) noexcept; ///< Views of the text that was here end.
    ~JsonDocument();

    JsonValue root() const&; ///< The whole text as a value; valid as long as the document.
    /// The view would outlive its document.
    JsonValue root() const&& = delete;

private:
    struct Contents;
    explicit JsonDocument(std::unique_ptr<Contents> contents);
    std::unique_ptr<Contents> _contents;
};

} // namespace KeloAPI
