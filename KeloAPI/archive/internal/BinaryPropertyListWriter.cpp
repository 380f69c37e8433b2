#include <KeloAPI/archive/internal/BinaryPropertyList.hpp>
#include <KeloAPI/archive/internal/BinaryPropertyListFormat.hpp>
#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/base/internal/UTF16.hpp>

#include <algorithm>
#include <bit>
#include <limits>

namespace KeloAPI {

namespace {

namespace Format = BinaryPropertyListFormat;
using Reference = PropertyList::Reference;

/// The fewest bytes, of a power of two, that hold an unsigned integer.
std::size_t widthOf(std::uint64_t value) {
    if (value <= 0xFF) {
        return 1;
    }
    if (value <= 0xFFFF) {
        return 2;
    }
    return value <= 0xFFFFFFFF ? 4 : 8;
}

class Writer {
public:
    explicit Writer(const PropertyList& list)
        : _list(list)
        , _referenceWidth(widthOf(list.values.empty() ? 0 : list.values.size() - 1)) {}

    std::string write() {
        require(_list.root < _list.values.size(), "a property list without its root");
        _bytes = Format::magic;
        std::vector<std::uint64_t> offsets;
        offsets.reserve(_list.values.size());
        for (const auto& value : _list.values) {
            offsets.push_back(_bytes.size());
            std::visit([this](const auto& kind) { append(kind); }, value);
        }
        appendTableAndTrailer(offsets);
        return std::move(_bytes);
    }

private:
    void appendTableAndTrailer(const std::vector<std::uint64_t>& offsets) {
        const std::uint64_t table = _bytes.size();
        const std::size_t offsetWidth = widthOf(table);
        for (const std::uint64_t offset : offsets) {
            appendBigEndian(offset, offsetWidth);
        }
        _bytes.append(Format::offsetWidthAt, '\0');
        _bytes += static_cast<char>(offsetWidth);
        _bytes += static_cast<char>(_referenceWidth);
        appendBigEndian(offsets.size(), 8);
        appendBigEndian(_list.root, 8);
        appendBigEndian(table, 8);
    }

    void appendBigEndian(std::uint64_t value, std::size_t width) {
        while (width > 0) {
            --width;
            _bytes += static_cast<char>((value >> (8 * width)) & 0xFFU);
        }
    }

    void appendHead(Format::Kind kind, std::size_t detail) {
        _bytes += static_cast<char>((static_cast<unsigned>(kind) << 4U) | detail);
    }

    void appendLength(Format::Kind kind, std::size_t length) {
        if (length < Format::lengthFollows) {
            appendHead(kind, length);
            return;
        }
        appendHead(kind, Format::lengthFollows);
        appendUnsigned(length);
    }

    void appendUnsigned(std::uint64_t value) {
        const std::size_t width = widthOf(value);
        appendHead(Format::Integer, static_cast<std::size_t>(std::countr_zero(width)));
        appendBigEndian(value, width);
    }

    void appendReference(Reference reference) {
        require(reference < _list.values.size(), "a property list that refers beyond its values");
        appendBigEndian(reference, _referenceWidth);
    }

    void appendReferences(Format::Kind kind, const std::vector<Reference>& references) {
        appendLength(kind, references.size());
        for (const Reference reference : references) {
            appendReference(reference);
        }
    }

    void append(PropertyList::Null) { appendHead(Format::Simple, Format::null); }

    void append(const Number& number) {
        switch (number.kind()) {
        case Number::Kind::Boolean:
            appendHead(Format::Simple, number.boolValue() ? Format::isTrue : Format::isFalse);
            return;
        case Number::Kind::Double:
            appendHead(Format::Real, 3);
            appendBigEndian(std::bit_cast<std::uint64_t>(number.doubleValue()), 8);
            return;
        case Number::Kind::Signed:
        case Number::Kind::Unsigned:
            appendInteger(number);
            return;
        }
    }

    void appendInteger(const Number& number) {
        constexpr auto highest =
            static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
        if (number.int64Value() < 0) {
            appendHead(Format::Integer, 3);
            appendBigEndian(std::bit_cast<std::uint64_t>(number.int64Value()), 8);
        } else if (number.uint64Value() <= highest) {
            appendUnsigned(number.uint64Value());
        } else {
            // Eight bytes would read as a negative integer.
            appendHead(Format::Integer, 4);
            appendBigEndian(0, 8);
            appendBigEndian(number.uint64Value(), 8);
        }
    }

    void append(PropertyList::Date date) {
        appendHead(Format::Date, 3);
        appendBigEndian(std::bit_cast<std::uint64_t>(date.secondsSince2001), 8);
    }

    void append(const PropertyList::Data& data) {
        appendLength(Format::Data, data.bytes.size());
        _bytes += data.bytes;
    }

    void append(const std::string& text) {
        const bool isASCII = std::all_of(
            text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
        if (isASCII) {
            appendLength(Format::ASCII, text.size());
            _bytes += text;
            return;
        }
        const std::u16string units = utf16(text);
        appendLength(Format::UTF16, units.size());
        for (const char16_t unit : units) {
            appendBigEndian(unit, 2);
        }
    }

    void append(PropertyList::UID uid) {
        const std::size_t width = widthOf(uid.value);
        appendHead(Format::UID, width - 1);
        appendBigEndian(uid.value, width);
    }

    void append(const PropertyList::Array& array) {
        appendReferences(Format::Array, array.elements);
    }

    void append(const PropertyList::Set& set) { appendReferences(Format::Set, set.elements); }

    void append(const PropertyList::Dictionary& dictionary) {
        appendLength(Format::Dictionary, dictionary.entries.size());
        for (const auto& [key, value] : dictionary.entries) {
            appendReference(key);
        }
        for (const auto& [key, value] : dictionary.entries) {
            appendReference(value);
        }
    }

    const PropertyList& _list;
    std::size_t _referenceWidth;
    std::string _bytes;
};

} // namespace

std::string BinaryPropertyList::write(const PropertyList& list) {
    return Writer(list).write();
}

} // namespace KeloAPI
