#include <KeloAPI/json/internal/JsonSubstitution.hpp>
#include <KeloAPI/json/Json.hpp>
#include <KeloAPI/queues/internal/ExitGuard.hpp>

#include <simdjson.h>

#include <bit>
#include <mutex>

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

std::string compactJson(const void* document, std::size_t index) {
    return simdjson::minify(elementAt(document, index));
}

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
    static JsonObject object(JsonValue value) { return JsonObject(value); }
    static JsonArray array(JsonValue value) { return JsonArray(value); }
    static JsonObjectList objects(JsonValue value) { return JsonObjectList(value); }
    static char kind(const JsonValue& value) {
        return value._document == nullptr ? '\0' : kindAt(value._document, value._index);
    }
    static std::size_t last(const JsonValue& value) {
        return indexBehind(value._document, value._index) - 1;
    }
    /// The number of elements or members, counted where the reader's own count is saturated.
    static std::size_t count(const JsonValue& value) {
        constexpr std::uint64_t saturated = 0xFFFFFF;
        const std::uint64_t kept = (wordAt(value._document, value._index) >> 32U) & saturated;
        if (kept < saturated) {
            return kept;
        }
        const bool isObject = kind(value) == '{';
        std::size_t count = 0;
        for (std::size_t at = value._index + 1; at < last(value); ++count) {
            at = next(value._document, isObject ? at + 1 : at);
        }
        return count;
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
    if (JsonAccess::kind(*this) != '{') {
        return std::nullopt;
    }
    return JsonAccess::object(*this);
}

std::optional<JsonArray> JsonValue::array() const {
    if (JsonAccess::kind(*this) != '[') {
        return std::nullopt;
    }
    return JsonAccess::array(*this);
}

std::optional<JsonObjectList> JsonValue::objects() const {
    if (JsonAccess::kind(*this) != '[') {
        return std::nullopt;
    }
    const std::size_t last = JsonAccess::last(*this);
    for (std::size_t at = _index + 1; at < last; at = next(_document, at)) {
        if (kindAt(_document, at) != '{') {
            return std::nullopt;
        }
    }
    return JsonAccess::objects(*this);
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
        return compactJson(_document, _index);
    default:
        return *numberText();
    }
}

std::size_t JsonObject::size() const {
    return JsonAccess::count(_value);
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
    return {JsonAccess::document(_value), JsonAccess::index(_value) + 1};
}

JsonObject::Iterator JsonObject::end() const {
    return {JsonAccess::document(_value), JsonAccess::last(_value)};
}

JsonObject::Member JsonObject::Iterator::operator*() const {
    return {textAt(_document, _index), JsonAccess::value(_document, _index + 1)};
}

JsonObject::Iterator& JsonObject::Iterator::operator++() {
    _index = next(_document, _index + 1);
    return *this;
}

std::size_t JsonArray::size() const {
    return JsonAccess::count(_value);
}

JsonArray::Iterator JsonArray::begin() const {
    return {JsonAccess::document(_value), JsonAccess::index(_value) + 1};
}

JsonArray::Iterator JsonArray::end() const {
    return {JsonAccess::document(_value), JsonAccess::last(_value)};
}

JsonValue JsonArray::Iterator::operator*() const {
    return JsonAccess::value(_document, _index);
}

JsonArray::Iterator& JsonArray::Iterator::operator++() {
    _index = next(_document, _index);
    return *this;
}

std::size_t JsonObjectList::size() const {
    return _value.exists() ? JsonAccess::count(_value) : 0;
}

JsonObjectList::Iterator JsonObjectList::begin() const {
    return Iterator(_value.exists() ? JsonAccess::array(_value).begin()
                                    : JsonArray::Iterator(nullptr, 0));
}

JsonObjectList::Iterator JsonObjectList::end() const {
    return Iterator(_value.exists() ? JsonAccess::array(_value).end()
                                    : JsonArray::Iterator(nullptr, 0));
}

JsonObject JsonObjectList::Iterator::operator*() const {
    return JsonAccess::object(*_at);
}

struct JsonDocument::Contents {
    Document document;
};

JsonDocument::JsonDocument(std::unique_ptr<Contents> contents)
    : _contents(std::move(contents)) {}
JsonDocument::JsonDocument(JsonDocument&&) noexcept = default;
JsonDocument& JsonDocument::operator=(JsonDocument&&) noexcept = default;
JsonDocument::~JsonDocument() = default;

namespace {

/// Makes the reader choose its implementation for this processor, whose objects register exit
/// handlers.
void initialiseReader() {
    static std::once_flag once;
    std::call_once(once, [] {
        static_cast<void>(simdjson::get_active_implementation()->name());
        ExitGuard::installBehindLibrary();
    });
}

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
    error = parser.parse_into_document(document, readable.data(), readable.size(), false).error();
    if (error == simdjson::SUCCESS && !substitution.numbers.empty()) {
        document.text = text;
        putBack(substitution.numbers, document);
    }
    return error;
}

} // namespace

Result<JsonDocument> JsonDocument::parse(const std::string& text) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    std::string_view json = text;
    json.remove_prefix(json.starts_with(byteOrderMark) ? byteOrderMark.size() : 0);
    const bool padded = text.capacity() - text.size() >= simdjson::SIMDJSON_PADDING;
    auto contents = std::make_unique<Contents>();
    initialiseReader();
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
