#include <KeloAPI/json/internal/JsonReader.hpp>
#include <KeloAPI/json/internal/JsonSubstitution.hpp>
#include <KeloAPI/json/Json.hpp>
#include <KeloAPI/queues/internal/ExitGuard.hpp>

#include <simdjson.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <mutex>
#include <type_traits>

namespace KeloAPI {

namespace {

/// What a reader's element is made of; a view holds the same two words without naming their types.
struct Position {
    const void* document;
    std::size_t index;
};
static_assert(sizeof(Position) == sizeof(simdjson::dom::element));

simdjson::dom::element elementAt(const void* document, std::size_t index) {
    return std::bit_cast<simdjson::dom::element>(Position{document, index});
}

/// The reader's document, which every view points to, and what it cannot hold.
struct Document : simdjson::dom::document {
    /// The text, where it has numbers too large for the reader; empty otherwise.
    std::string text;
};

const Document& documentAt(const void* document) {
    // The reader's own elements point to the base.
    return static_cast<const Document&>(*static_cast<const simdjson::dom::document*>(document));
}

// The tape: every value is one word with its kind in the upper byte, numbers have a second word;
// the payload of an opening bracket is the index behind its closing one. Steps are taken on it
// directly because that is what makes an iterator two words wide.
std::uint64_t wordAt(const void* document, std::size_t index) {
    return documentAt(document).tape[index];
}

char kindAt(const void* document, std::size_t index) {
    return static_cast<char>(wordAt(document, index) >> 56U);
}

std::uint32_t indexBehind(const void* document, std::size_t index) {
    return static_cast<std::uint32_t>(wordAt(document, index));
}

std::size_t next(const void* document, std::size_t index) {
    switch (kindAt(document, index)) {
    case '{':
    case '[':
        return indexBehind(document, index);
    case 'l':
    case 'u':
    case 'd':
        return index + 2;
    default:
        return index + 1;
    }
}

std::uint64_t payloadAt(const void* document, std::size_t index) {
    return wordAt(document, index) & 0x00FFFFFFFFFFFFFFULL;
}

std::string_view textAt(const void* document, std::size_t index) {
    const std::uint8_t* text = documentAt(document).string_buf.get() + payloadAt(document, index);
    std::uint32_t length = 0;
    std::memcpy(&length, text, sizeof length);
    return {reinterpret_cast<const char*>(text) + sizeof length, length};
}

template <class T>
T numberAt(const void* document, std::size_t index) {
    return std::bit_cast<T>(wordAt(document, index + 1));
}

/// The digits of an integer beyond 64 bits, for which the document has a double. That double's
/// first word, empty otherwise, holds the place in the text behind the digits.
std::string_view digitsAt(const void* document, std::size_t index) {
    const std::size_t end = payloadAt(document, index);
    const std::string_view before = std::string_view(documentAt(document).text).substr(0, end);
    return before.substr(before.find_last_not_of("-0123456789") + 1);
}

/// A set of texts that is quick to ask and errs to one side: it may hold texts that were not added.
/// Most keys of a record are not wanted, and a look at length and last character rules them out
/// without a comparison: looking for keys took 19% of the time from bytes to posts, 13% with this.
class TextFilter {
public:
    void add(std::string_view text) { _bits |= bit(text); }
    bool mayHold(std::string_view text) const { return (_bits & bit(text)) != 0; }

private:
    static std::uint64_t bit(std::string_view text) {
        const std::size_t last = text.empty() ? 0 : static_cast<unsigned char>(text.back());
        return std::uint64_t{1} << ((text.size() * 5 + last) % 64);
    }
    std::uint64_t _bits = 0;
};

} // namespace

/// Makes and opens views.
struct JsonAccess {
    static JsonValue value(const void* document, std::size_t index) {
        JsonValue value;
        value._document = document;
        value._index = index;
        return value;
    }
    static const void* document(const JsonValue& value) { return value._document; }
    static std::size_t index(const JsonValue& value) { return value._index; }
    /// The value as a view of this type, where it is of that kind.
    template <class View>
    static std::optional<View> view(const JsonValue& value, char ofKind) {
        return kind(value) == ofKind ? std::optional(View(value)) : std::nullopt;
    }
    template <class Iterator>
    static Iterator begin(const JsonValue& value) {
        return {value._document, value.exists() ? value._index + 1 : 0};
    }
    template <class Iterator>
    static Iterator end(const JsonValue& value) {
        return {value._document, value.exists() ? last(value) : 0};
    }
    /// What stands at a place in an object or a list.
    template <class Element>
    static Element element(const void* document, std::size_t index) {
        if constexpr (std::is_same_v<Element, JsonObject::Member>) {
            return {textAt(document, index), value(document, index + 1)};
        } else {
            return Element(value(document, index));
        }
    }
    static char kind(const JsonValue& value) {
        return value._document == nullptr ? '\0' : kindAt(value._document, value._index);
    }
    static std::size_t last(const JsonValue& value) {
        return indexBehind(value._document, value._index) - 1;
    }
    /// The number of elements or members. The reader's own count stops at 2^24 - 1.
    template <class View>
    static std::size_t count(const View& view) {
        return static_cast<std::size_t>(std::distance(view.begin(), view.end()));
    }
};

bool JsonValue::isNull() const {
    return JsonAccess::kind(*this) == 'n';
}

std::optional<std::string_view> JsonValue::text() const {
    if (JsonAccess::kind(*this) != '"') {
        return std::nullopt;
    }
    return textAt(_document, _index);
}

std::optional<Number> JsonValue::number() const {
    switch (JsonAccess::kind(*this)) {
    case 't':
        return Number::of(true);
    case 'f':
        return Number::of(false);
    case 'l':
        return Number::of(numberAt<std::int64_t>(_document, _index));
    case 'u':
        return Number::of(numberAt<std::uint64_t>(_document, _index));
    case 'd':
        return Number::of(numberAt<double>(_document, _index));
    default:
        return std::nullopt;
    }
}

std::optional<std::string> JsonValue::numberText() const {
    if (JsonAccess::kind(*this) == 'd' && payloadAt(_document, _index) != 0) {
        return std::string(digitsAt(_document, _index));
    }
    const auto value = number();
    return value ? std::optional(value->stringValue()) : std::nullopt;
}

std::optional<std::int64_t> JsonValue::integer() const {
    const auto value = number();
    return value ? std::optional(value->int64Value()) : std::nullopt;
}

std::optional<bool> JsonValue::boolean() const {
    const auto value = number();
    return value ? std::optional(value->boolValue()) : std::nullopt;
}

std::optional<double> JsonValue::real() const {
    const auto value = number();
    return value ? std::optional(value->doubleValue()) : std::nullopt;
}

std::optional<JsonObject> JsonValue::object() const {
    return JsonAccess::view<JsonObject>(*this, '{');
}

std::optional<JsonArray> JsonValue::array() const {
    return JsonAccess::view<JsonArray>(*this, '[');
}

std::optional<JsonObjectList> JsonValue::objects() const {
    const auto elements = array();
    const auto isObject = [](const JsonValue& element) { return element.object().has_value(); };
    return elements && std::all_of(elements->begin(), elements->end(), isObject)
               ? JsonAccess::view<JsonObjectList>(*this, '[')
               : std::nullopt;
}

std::string JsonValue::description() const {
    switch (JsonAccess::kind(*this)) {
    case '\0':
        return {};
    case 'n':
        return "<null>";
    case '"':
        return std::string(textAt(_document, _index));
    case '{':
    case '[':
        return simdjson::minify(elementAt(_document, _index));
    default:
        return *numberText();
    }
}

std::size_t JsonObject::size() const {
    return JsonAccess::count(*this);
}

JsonValue JsonObject::operator[](std::string_view key) const {
    JsonValue found;
    find(&key, &found, 1);
    return found;
}

void JsonObject::find(const std::string_view* keys, JsonValue* found, std::size_t count) const {
    const void* document = JsonAccess::document(_value);
    const std::size_t last = JsonAccess::last(_value);
    TextFilter filter;
    for (std::size_t wanted = 0; wanted < count; ++wanted) {
        filter.add(keys[wanted]);
    }
    std::size_t missing = count;
    for (std::size_t at = JsonAccess::index(_value) + 1; at < last && missing > 0;
         at = next(document, at + 1)) {
        const std::string_view key = textAt(document, at);
        if (!filter.mayHold(key)) {
            continue;
        }
        for (std::size_t wanted = 0; wanted < count; ++wanted) {
            if (keys[wanted] == key) {
                if (!found[wanted].exists()) {
                    found[wanted] = JsonAccess::value(document, at + 1);
                    --missing;
                }
                break;
            }
        }
    }
}

JsonObject::Iterator JsonObject::begin() const {
    return JsonAccess::begin<Iterator>(_value);
}

JsonObject::Iterator JsonObject::end() const {
    return JsonAccess::end<Iterator>(_value);
}

template <class Element>
std::size_t JsonList<Element>::size() const {
    return JsonAccess::count(*this);
}

template <class Element>
JsonIterator<Element> JsonList<Element>::begin() const {
    return JsonAccess::begin<Iterator>(_value);
}

template <class Element>
JsonIterator<Element> JsonList<Element>::end() const {
    return JsonAccess::end<Iterator>(_value);
}

template <class Element>
Element JsonIterator<Element>::operator*() const {
    return JsonAccess::element<Element>(_document, _index);
}

template <class Element>
JsonIterator<Element>& JsonIterator<Element>::operator++() {
    // A member is its key and the value behind it.
    const bool isMember = std::is_same_v<Element, JsonObject::Member>;
    _index = next(_document, isMember ? _index + 1 : _index);
    return *this;
}

template class JsonList<JsonValue>;
template class JsonList<JsonObject>;
template class JsonIterator<JsonValue>;
template class JsonIterator<JsonObject>;
template class JsonIterator<JsonObject::Member>;

struct JsonDocument::Contents {
    Document document;
};

JsonDocument::JsonDocument(std::unique_ptr<Contents> contents)
    : _contents(std::move(contents)) {}
JsonDocument::JsonDocument(JsonDocument&&) noexcept = default;
JsonDocument& JsonDocument::operator=(JsonDocument&&) noexcept = default;
JsonDocument::~JsonDocument() = default;

namespace {

/// Puts the numbers that stood as 0 into the document as doubles.
void putBack(const std::vector<LargeNumber>& numbers, Document& document) {
    auto number = numbers.begin();
    std::size_t ordinal = 0;
    for (std::size_t at = 1; number != numbers.end();) {
        const char kind = kindAt(static_cast<const simdjson::dom::document*>(&document), at);
        const bool isNumber = kind == 'l' || kind == 'u' || kind == 'd';
        if (isNumber && ordinal++ == number->ordinal) {
            const std::uint64_t end = number->isInteger ? number->end : 0;
            document.tape[at] = (std::uint64_t{'d'} << 56U) | end;
            document.tape[at + 1] = std::bit_cast<std::uint64_t>(number->value);
            ++number;
        }
        at += isNumber ? 2 : 1;
    }
}

/// Reads a text that the reader refused with `error`, with substitutes for what it cannot hold.
simdjson::error_code readWithSubstitutes(std::string_view text, simdjson::error_code error,
                                         simdjson::dom::parser& parser, Document& document) {
    std::string readable;
    readable.reserve(text.size() + simdjson::SIMDJSON_PADDING);
    readable = text;
    const JsonSubstitution substitution = substituteUnreadable(readable);
    if (!substitution.changed) {
        return error;
    }
    error = parser.parse_into_document(document, readable).error();
    if (error == simdjson::SUCCESS && !substitution.numbers.empty()) {
        document.text = text;
        putBack(substitution.numbers, document);
    }
    return error;
}

} // namespace

void initialiseJsonReader() {
    static std::once_flag once;
    std::call_once(once, [] {
        static_cast<void>(simdjson::get_active_implementation()->name());
        ExitGuard::installBehindLibrary();
    });
}

Result<JsonDocument> JsonDocument::parse(const std::string& text) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    std::string_view json = text;
    json.remove_prefix(json.starts_with(byteOrderMark) ? byteOrderMark.size() : 0);
    const bool padded = text.capacity() - text.size() >= simdjson::SIMDJSON_PADDING;
    auto contents = std::make_unique<Contents>();
    initialiseJsonReader();
    // A task that outlasts the exit's patience must not come to a reader that is gone.
    ExitGuard::parkIfExiting();
    simdjson::dom::parser parser;
    Document& document = contents->document;
    auto error = parser.parse_into_document(document, json.data(), json.size(), !padded).error();
    // Which error a number or a lone surrogate gives is the reader's own affair.
    if (error != simdjson::SUCCESS && error != simdjson::MEMALLOC && error != simdjson::CAPACITY) {
        error = readWithSubstitutes(json, error, parser, document);
    }
    if (error != simdjson::SUCCESS) {
        return Error::withMessage(errorDomain, error, simdjson::error_message(error));
    }
    return JsonDocument(std::move(contents));
}

JsonValue JsonDocument::root() const& {
    // The first word of the tape is the root's own; the value stands behind it.
    return JsonAccess::value(static_cast<const simdjson::dom::document*>(&_contents->document), 1);
}

} // namespace KeloAPI
