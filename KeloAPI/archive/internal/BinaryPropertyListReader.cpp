#include <KeloAPI/archive/internal/BinaryPropertyList.hpp>
#include <KeloAPI/archive/internal/BinaryPropertyListFormat.hpp>
#include <KeloAPI/archive/internal/PropertyListNesting.hpp>
#include <KeloAPI/archive/internal/UTF16.hpp>

#include <algorithm>
#include <bit>
#include <limits>

namespace KeloAPI {

namespace {

namespace Format = BinaryPropertyListFormat;
using Bytes = std::span<const std::byte>;
using Reference = PropertyList::Reference;

/// The unsigned integer that eight bytes at most spell.
std::uint64_t bigEndian(Bytes bytes) {
    std::uint64_t value = 0;
    for (const std::byte byte : bytes) {
        value = (value << 8U) | std::to_integer<std::uint64_t>(byte);
    }
    return value;
}

/// Takes bytes off the front of a run of them.
class Cursor {
public:
    explicit Cursor(Bytes bytes)
        : _rest(bytes) {}

    std::size_t left() const { return _rest.size(); }

    std::optional<Bytes> take(std::uint64_t count) {
        if (count > _rest.size()) {
            return std::nullopt;
        }
        const Bytes taken = _rest.first(static_cast<std::size_t>(count));
        _rest = _rest.subspan(taken.size());
        return taken;
    }

    /// `count` elements of `width` bytes.
    std::optional<Bytes> take(std::uint64_t count, std::size_t width) {
        // No product that could overflow.
        return count > _rest.size() / width ? std::nullopt : take(count * width);
    }

private:
    Bytes _rest;
};

struct Head {
    std::uint8_t kind;
    std::uint8_t detail;
};

std::optional<Head> takeHead(Cursor& cursor) {
    const auto byte = cursor.take(1);
    if (!byte) {
        return std::nullopt;
    }
    const auto value = std::to_integer<std::uint8_t>(byte->front());
    return Head{static_cast<std::uint8_t>(value >> 4U), static_cast<std::uint8_t>(value & 0xFU)};
}

/// The length that a head tells, or that follows it.
std::optional<std::uint64_t> takeLength(Cursor& cursor, Head head) {
    if (head.detail != Format::lengthFollows) {
        return head.detail;
    }
    const auto length = takeHead(cursor);
    if (!length || length->kind != Format::Integer || length->detail > 3) {
        return std::nullopt;
    }
    const auto bytes = cursor.take(std::uint64_t{1} << length->detail);
    return bytes ? std::optional(bigEndian(*bytes)) : std::nullopt;
}

std::optional<Number> simpleNumber(std::uint8_t detail) {
    switch (detail) {
    case Format::isFalse:
        return Number::of(false);
    case Format::isTrue:
        return Number::of(true);
    default:
        return std::nullopt;
    }
}

/// Integers of less than eight bytes are unsigned, those of eight signed; sixteen are for what
/// eight cannot tell.
std::optional<Number> takeInteger(Cursor& cursor, std::uint8_t detail) {
    const auto bytes = detail <= 4 ? cursor.take(std::uint64_t{1} << detail) : std::nullopt;
    if (!bytes) {
        return std::nullopt;
    }
    if (bytes->size() <= 8) {
        return Number::of(std::bit_cast<std::int64_t>(bigEndian(*bytes)));
    }
    constexpr std::uint64_t signBit = std::uint64_t{1} << 63U;
    constexpr std::uint64_t allOnes = std::numeric_limits<std::uint64_t>::max();
    const std::uint64_t upper = bigEndian(bytes->first(8));
    const std::uint64_t lower = bigEndian(bytes->subspan(8));
    if (upper == 0) {
        return lower < signBit ? Number::of(static_cast<std::int64_t>(lower)) : Number::of(lower);
    }
    if (upper == allOnes && lower >= signBit) {
        return Number::of(std::bit_cast<std::int64_t>(lower));
    }
    return std::nullopt;
}

std::optional<double> takeReal(Cursor& cursor, std::uint8_t detail) {
    if (detail == 2) {
        const auto bytes = cursor.take(sizeof(float));
        return bytes ? std::optional<double>(
                           std::bit_cast<float>(static_cast<std::uint32_t>(bigEndian(*bytes))))
                     : std::nullopt;
    }
    const auto bytes = detail == 3 ? cursor.take(sizeof(double)) : std::nullopt;
    return bytes ? std::optional(std::bit_cast<double>(bigEndian(*bytes))) : std::nullopt;
}

std::string_view characters(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::optional<std::string> asciiText(Bytes bytes) {
    const bool isASCII = std::all_of(bytes.begin(), bytes.end(),
                                     [](std::byte byte) { return byte < std::byte{0x80}; });
    return isASCII ? std::optional(std::string(characters(bytes))) : std::nullopt;
}

std::optional<std::string> utf16Text(Bytes bytes) {
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (std::size_t at = 0; at < bytes.size(); at += 2) {
        units += static_cast<char16_t>(bigEndian(bytes.subspan(at, 2)));
    }
    return utf8(units);
}

class Reader {
public:
    explicit Reader(Bytes bytes)
        : _bytes(bytes) {}

    std::optional<PropertyList> read() {
        if (!readTrailer() || !readValues() || !keysAreTexts()) {
            return std::nullopt;
        }
        return std::move(_list);
    }

private:
    bool readTrailer();
    bool readValues();
    std::optional<PropertyList::Value> readValue(Cursor& cursor) const;
    std::optional<PropertyList::Value> readContainer(Cursor& cursor, Head head) const;
    std::optional<std::vector<Reference>> takeReferences(Cursor& cursor, std::uint64_t count) const;
    bool keysAreTexts() const;

    Bytes _bytes;
    Bytes _valueBytes;
    Bytes _table;
    std::size_t _offsetWidth = 0;
    std::size_t _referenceWidth = 0;
    std::size_t _count = 0;
    PropertyList _list;
};

bool Reader::readTrailer() {
    if (_bytes.size() > BinaryPropertyList::maximumBytes ||
        _bytes.size() < Format::magic.size() + Format::trailerSize ||
        !characters(_bytes).starts_with(Format::magic)) {
        return false;
    }
    const std::size_t end = _bytes.size() - Format::trailerSize;
    const Bytes trailer = _bytes.subspan(end);
    _offsetWidth = std::to_integer<std::size_t>(trailer[Format::offsetWidthAt]);
    _referenceWidth = std::to_integer<std::size_t>(trailer[Format::referenceWidthAt]);
    const std::uint64_t count = bigEndian(trailer.subspan(Format::countAt, 8));
    const std::uint64_t root = bigEndian(trailer.subspan(Format::rootAt, 8));
    const std::uint64_t table = bigEndian(trailer.subspan(Format::tableAt, 8));
    const auto isWidth = [](std::size_t width) { return width >= 1 && width <= 8; };
    if (!isWidth(_offsetWidth) || !isWidth(_referenceWidth) || root >= count ||
        count > BinaryPropertyList::maximumValues || table < Format::magic.size() || table > end ||
        count > (end - table) / _offsetWidth) {
        return false;
    }
    _count = static_cast<std::size_t>(count);
    _list.root = static_cast<Reference>(root);
    _valueBytes = _bytes.first(static_cast<std::size_t>(table));
    _table = _bytes.subspan(_valueBytes.size(), _count * _offsetWidth);
    // A value is a byte at least.
    return _count <= _valueBytes.size() - Format::magic.size();
}

bool Reader::readValues() {
    _list.values.reserve(_count);
    // Values that share bytes would let a small file stand for a huge list. When all of them
    // together are longer than the room there is for them, some do.
    std::size_t room = _valueBytes.size() - Format::magic.size();
    for (std::size_t at = 0; at < _count; ++at) {
        const std::uint64_t offset = bigEndian(_table.subspan(at * _offsetWidth, _offsetWidth));
        if (offset < Format::magic.size() || offset >= _valueBytes.size()) {
            return false;
        }
        const Bytes rest = _valueBytes.subspan(static_cast<std::size_t>(offset));
        Cursor cursor(rest.first(std::min(rest.size(), room)));
        const std::size_t before = cursor.left();
        auto value = readValue(cursor);
        if (!value) {
            return false;
        }
        room -= before - cursor.left();
        _list.values.push_back(std::move(*value));
    }
    return true;
}

std::optional<PropertyList::Value> Reader::readValue(Cursor& cursor) const {
    const auto head = takeHead(cursor);
    if (!head) {
        return std::nullopt;
    }
    switch (head->kind) {
    case Format::Simple:
        if (head->detail == Format::null) {
            return PropertyList::Null{};
        }
        return simpleNumber(head->detail);
    case Format::Integer:
        return takeInteger(cursor, head->detail);
    case Format::Real: {
        const auto real = takeReal(cursor, head->detail);
        return real ? std::optional<PropertyList::Value>(Number::of(*real)) : std::nullopt;
    }
    case Format::Date: {
        const auto seconds = head->detail == 3 ? takeReal(cursor, 3) : std::nullopt;
        return seconds ? std::optional<PropertyList::Value>(PropertyList::Date{*seconds})
                       : std::nullopt;
    }
    case Format::UID: {
        const auto bytes = head->detail < 8 ? cursor.take(head->detail + 1U) : std::nullopt;
        return bytes ? std::optional<PropertyList::Value>(PropertyList::UID{bigEndian(*bytes)})
                     : std::nullopt;
    }
    default:
        return readContainer(cursor, *head);
    }
}

/// A value with a length: bytes, texts, lists.
std::optional<PropertyList::Value> Reader::readContainer(Cursor& cursor, Head head) const {
    const auto length = takeLength(cursor, head);
    if (!length) {
        return std::nullopt;
    }
    switch (head.kind) {
    case Format::Data: {
        const auto bytes = cursor.take(*length);
        return bytes ? std::optional<PropertyList::Value>(
                           PropertyList::Data{std::string(characters(*bytes))})
                     : std::nullopt;
    }
    case Format::ASCII: {
        const auto bytes = cursor.take(*length);
        return bytes ? std::optional<PropertyList::Value>(asciiText(*bytes)) : std::nullopt;
    }
    case Format::UTF16: {
        const auto bytes = cursor.take(*length, 2);
        return bytes ? std::optional<PropertyList::Value>(utf16Text(*bytes)) : std::nullopt;
    }
    case Format::Array: {
        auto elements = takeReferences(cursor, *length);
        return elements
                   ? std::optional<PropertyList::Value>(PropertyList::Array{std::move(*elements)})
                   : std::nullopt;
    }
    case Format::Set: {
        auto elements = takeReferences(cursor, *length);
        return elements
                   ? std::optional<PropertyList::Value>(PropertyList::Set{std::move(*elements)})
                   : std::nullopt;
    }
    case Format::Dictionary: {
        const auto keys = takeReferences(cursor, *length);
        const auto values = takeReferences(cursor, *length);
        if (!keys || !values) {
            return std::nullopt;
        }
        PropertyList::Dictionary dictionary;
        dictionary.entries.reserve(keys->size());
        for (std::size_t at = 0; at < keys->size(); ++at) {
            dictionary.entries.emplace_back((*keys)[at], (*values)[at]);
        }
        return dictionary;
    }
    default:
        return std::nullopt;
    }
}

std::optional<std::vector<Reference>> Reader::takeReferences(Cursor& cursor,
                                                             std::uint64_t count) const {
    const auto bytes = cursor.take(count, _referenceWidth);
    if (!bytes) {
        return std::nullopt;
    }
    std::vector<Reference> references;
    references.reserve(bytes->size() / _referenceWidth);
    for (std::size_t at = 0; at < bytes->size(); at += _referenceWidth) {
        const std::uint64_t reference = bigEndian(bytes->subspan(at, _referenceWidth));
        if (reference >= _count) {
            return std::nullopt;
        }
        references.push_back(static_cast<Reference>(reference));
    }
    return references;
}

bool Reader::keysAreTexts() const {
    return std::all_of(_list.values.begin(), _list.values.end(), [this](const auto& value) {
        const auto* dictionary = std::get_if<PropertyList::Dictionary>(&value);
        return dictionary == nullptr ||
               std::all_of(dictionary->entries.begin(), dictionary->entries.end(),
                           [this](const auto& entry) {
                               return _list.get<std::string>(entry.first) != nullptr;
                           });
    });
}

} // namespace

std::optional<PropertyList> BinaryPropertyList::read(std::span<const std::byte> bytes) {
    auto list = Reader(bytes).read();
    return list && nestsWithin(*list, maximumDepth) ? std::move(list) : std::nullopt;
}

} // namespace KeloAPI
