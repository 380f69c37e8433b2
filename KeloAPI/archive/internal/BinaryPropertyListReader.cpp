#include <KeloAPI/archive/internal/BinaryPropertyList.hpp>
#include <KeloAPI/archive/internal/BinaryPropertyListFormat.hpp>
#include <KeloAPI/base/internal/UTF16.hpp>

#include <algorithm>
#include <bit>
#include <limits>

namespace KeloAPI {

namespace {

namespace Format = BinaryPropertyListFormat;
using Bytes = std::span<const std::byte>;
using Reference = PropertyList::Reference;

/// Thrown inside this file where anything of a list is malformed.
struct Malformed {};

void check(bool holds) {
    if (!holds) {
        throw Malformed();
    }
}

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

    /// `count` elements of `width` bytes.
    Bytes take(std::uint64_t count, std::size_t width = 1) {
        check(count <= _rest.size() / width); // the product could overflow
        const Bytes taken = _rest.first(static_cast<std::size_t>(count) * width);
        _rest = _rest.subspan(taken.size());
        return taken;
    }

private:
    Bytes _rest;
};

struct Head {
    unsigned kind;
    unsigned detail;
};

Head takeHead(Cursor& cursor) {
    const auto value = std::to_integer<unsigned>(cursor.take(1).front());
    return {value >> 4U, value & 0xFU};
}

/// The length that a head tells, or that follows it.
std::uint64_t takeLength(Cursor& cursor, Head head) {
    if (head.detail != Format::lengthFollows) {
        return head.detail;
    }
    const Head length = takeHead(cursor);
    check(length.kind == Format::Integer && length.detail <= 3);
    return bigEndian(cursor.take(std::uint64_t{1} << length.detail));
}

PropertyList::Value simpleValue(unsigned detail) {
    if (detail == Format::null) {
        return PropertyList::Null{};
    }
    check(detail == Format::isFalse || detail == Format::isTrue);
    return Number::of(detail == Format::isTrue);
}

/// Integers of less than eight bytes are unsigned, those of eight signed; sixteen are for what
/// eight cannot tell.
Number takeInteger(Cursor& cursor, unsigned detail) {
    check(detail <= 4);
    const Bytes bytes = cursor.take(std::uint64_t{1} << detail);
    const std::uint64_t lower = bigEndian(bytes.last(std::min<std::size_t>(bytes.size(), 8)));
    const auto number = std::bit_cast<std::int64_t>(lower);
    if (bytes.size() <= 8) {
        return Number::of(number);
    }
    const std::uint64_t upper = bigEndian(bytes.first(8));
    if (upper == 0 && number < 0) {
        return Number::of(lower);
    }
    check(upper == (number < 0 ? std::numeric_limits<std::uint64_t>::max() : 0));
    return Number::of(number);
}

double takeReal(Cursor& cursor, unsigned detail) {
    check(detail == 2 || detail == 3);
    const std::uint64_t bits = bigEndian(cursor.take(std::uint64_t{1} << detail));
    return detail == 2 ? std::bit_cast<float>(static_cast<std::uint32_t>(bits))
                       : std::bit_cast<double>(bits);
}

std::string_view characters(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::string asciiText(Bytes bytes) {
    check(std::all_of(bytes.begin(), bytes.end(),
                      [](std::byte byte) { return byte < std::byte{0x80}; }));
    return std::string(characters(bytes));
}

std::string utf16Text(Bytes bytes) {
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (std::size_t at = 0; at < bytes.size(); at += 2) {
        units += static_cast<char16_t>(bigEndian(bytes.subspan(at, 2)));
    }
    auto text = utf8(units);
    check(text.has_value());
    return *std::move(text);
}

class Reader {
public:
    explicit Reader(Bytes bytes)
        : _bytes(bytes) {}

    PropertyList read() {
        readTrailer();
        readValues();
        checkKeys();
        return std::move(_list);
    }

private:
    void readTrailer() {
        check(_bytes.size() <= BinaryPropertyList::maxBytes &&
              _bytes.size() >= Format::magic.size() + Format::trailerSize &&
              characters(_bytes).starts_with(Format::magic));
        const std::size_t end = _bytes.size() - Format::trailerSize;
        const Bytes trailer = _bytes.subspan(end);
        _offsetWidth = std::to_integer<std::size_t>(trailer[Format::offsetWidthAt]);
        _referenceWidth = std::to_integer<std::size_t>(trailer[Format::referenceWidthAt]);
        const std::uint64_t count = bigEndian(trailer.subspan(Format::countAt, 8));
        const std::uint64_t root = bigEndian(trailer.subspan(Format::rootAt, 8));
        const std::uint64_t table = bigEndian(trailer.subspan(Format::tableAt, 8));
        const auto isWidth = [](std::size_t width) { return width >= 1 && width <= 8; };
        check(isWidth(_offsetWidth) && isWidth(_referenceWidth) && root < count &&
              count <= BinaryPropertyList::maxValues && table >= Format::magic.size() &&
              table <= end && count <= (end - table) / _offsetWidth);
        _count = static_cast<std::size_t>(count);
        _list.root = static_cast<Reference>(root);
        _valueBytes = _bytes.first(static_cast<std::size_t>(table));
        _table = _bytes.subspan(_valueBytes.size(), _count * _offsetWidth);
        // A value is a byte at least.
        check(_count <= _valueBytes.size() - Format::magic.size());
    }

    void readValues() {
        _list.values.reserve(_count);
        // Values that share bytes would let a small file stand for a huge list. When all of them
        // together are longer than the room there is for them, some do.
        std::size_t room = _valueBytes.size() - Format::magic.size();
        for (std::size_t at = 0; at < _count; ++at) {
            const std::uint64_t offset = bigEndian(_table.subspan(at * _offsetWidth, _offsetWidth));
            check(offset >= Format::magic.size() && offset < _valueBytes.size());
            const Bytes rest = _valueBytes.subspan(static_cast<std::size_t>(offset));
            Cursor cursor(rest.first(std::min(rest.size(), room)));
            const std::size_t before = cursor.left();
            _list.values.push_back(readValue(cursor));
            room -= before - cursor.left();
        }
    }

    PropertyList::Value readValue(Cursor& cursor) const {
        const Head head = takeHead(cursor);
        switch (head.kind) {
        case Format::Simple:
            return simpleValue(head.detail);
        case Format::Integer:
            return takeInteger(cursor, head.detail);
        case Format::Real:
            return Number::of(takeReal(cursor, head.detail));
        case Format::Date:
            check(head.detail == 3);
            return PropertyList::Date{takeReal(cursor, head.detail)};
        case Format::UID:
            check(head.detail < 8);
            return PropertyList::UID{bigEndian(cursor.take(head.detail + 1))};
        default:
            return readContainer(cursor, head);
        }
    }

    /// A value with a length: bytes, texts, lists.
    PropertyList::Value readContainer(Cursor& cursor, Head head) const {
        const std::uint64_t length = takeLength(cursor, head);
        switch (head.kind) {
        case Format::Data:
            return PropertyList::Data{std::string(characters(cursor.take(length)))};
        case Format::ASCII:
            return asciiText(cursor.take(length));
        case Format::UTF16:
            return utf16Text(cursor.take(length, 2));
        case Format::Array:
            return PropertyList::Array{takeReferences(cursor, length)};
        case Format::Set:
            return PropertyList::Set{takeReferences(cursor, length)};
        case Format::Dictionary: {
            const auto keys = takeReferences(cursor, length);
            const auto values = takeReferences(cursor, length);
            PropertyList::Dictionary dictionary;
            dictionary.entries.reserve(keys.size());
            for (std::size_t at = 0; at < keys.size(); ++at) {
                dictionary.entries.emplace_back(keys[at], values[at]);
            }
            return dictionary;
        }
        default:
            throw Malformed();
        }
    }

    std::vector<Reference> takeReferences(Cursor& cursor, std::uint64_t count) const {
        const Bytes bytes = cursor.take(count, _referenceWidth);
        std::vector<Reference> references;
        references.reserve(bytes.size() / _referenceWidth);
        for (std::size_t at = 0; at < bytes.size(); at += _referenceWidth) {
            const std::uint64_t reference = bigEndian(bytes.subspan(at, _referenceWidth));
            check(reference < _count);
            references.push_back(static_cast<Reference>(reference));
        }
        return references;
    }

    void checkKeys() const {
        for (const auto& value : _list.values) {
            if (const auto* dictionary = std::get_if<PropertyList::Dictionary>(&value)) {
                for (const auto& [key, element] : dictionary->entries) {
                    check(_list.get<std::string>(key) != nullptr);
                }
            }
        }
    }

    Bytes _bytes;
    Bytes _valueBytes;
    Bytes _table;
    std::size_t _offsetWidth = 0;
    std::size_t _referenceWidth = 0;
    std::size_t _count = 0;
    PropertyList _list;
};

/// Refuses a container that holds itself, or that has too many levels of values below it. Each
/// value is looked at once.
class NestingCheck {
public:
    explicit NestingCheck(const PropertyList& list)
        : _list(list)
        , _heights(list.values.size(), unseen) {}

    void run() {
        for (Reference at = 0; at < _heights.size(); ++at) {
            heightOf(at, 0);
        }
    }

private:
    static constexpr unsigned unseen = 0xFF;
    static constexpr unsigned open = 0xFE;

    /// How many levels there are below a value that stands `depth` levels below another. The depth
    /// bounds the calls within one another.
    unsigned heightOf(Reference at, unsigned depth) {
        check(_heights[at] != open && depth <= BinaryPropertyList::maxDepth);
        if (_heights[at] == unseen) {
            _heights[at] = open;
            unsigned height = 0;
            for (const Reference element : elementsOf(at)) {
                height = std::max(height, heightOf(element, depth + 1) + 1);
            }
            check(height <= BinaryPropertyList::maxDepth);
            _heights[at] = static_cast<std::uint8_t>(height);
        }
        return _heights[at];
    }

    std::vector<Reference> elementsOf(Reference at) const {
        if (const auto* array = _list.get<PropertyList::Array>(at)) {
            return array->elements;
        }
        if (const auto* set = _list.get<PropertyList::Set>(at)) {
            return set->elements;
        }
        std::vector<Reference> elements;
        if (const auto* dictionary = _list.get<PropertyList::Dictionary>(at)) {
            for (const auto& [key, element] : dictionary->entries) {
                elements.push_back(element);
            }
        }
        return elements;
    }

    const PropertyList& _list;
    std::vector<std::uint8_t> _heights;
};

} // namespace

std::optional<PropertyList> BinaryPropertyList::read(std::span<const std::byte> bytes) {
    try {
        PropertyList list = Reader(bytes).read();
        NestingCheck(list).run();
        return list;
    } catch (const Malformed&) {
        return std::nullopt;
    }
}

} // namespace KeloAPI
