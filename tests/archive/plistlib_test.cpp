#include "PropertyListText.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/archive/internal/BinaryPropertyList.hpp>

#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>
#include <random>
#include <span>

namespace KeloAPI {

using testing::PropertyListText;

namespace {

/// Lists of values of every kind that Python's reader knows, the same ones in every run.
class Generator {
public:
    explicit Generator(unsigned seed)
        : _random(seed) {}

    PropertyList list() {
        _list = {};
        _list.root = container(4);
        return std::move(_list);
    }

private:
    using Reference = PropertyList::Reference;

    std::size_t below(std::size_t bound) { return _random() % bound; }

    Reference add(PropertyList::Value value) {
        _list.values.push_back(std::move(value));
        return static_cast<Reference>(_list.values.size() - 1);
    }

    Number number() {
        switch (below(5)) {
        case 0:
            return Number::of(below(2) == 1);
        case 1:
            return Number::of(std::bit_cast<std::int64_t>(_random() >> below(64)));
        case 2:
            return Number::of(-static_cast<std::int64_t>(_random() >> (1 + below(63))));
        case 3:
            return Number::of(std::uint64_t{_random() | (std::uint64_t{1} << 63U)});
        default:
            return Number::of(static_cast<double>(_random()) / static_cast<double>(1 + below(999)));
        }
    }

    std::string text() {
        static const std::vector<std::string> pieces = {
            "a",          "key",    "\"%\\", "\n\t ",  std::string(1, '\0'), "\u00e9", "\u4e2d",
            "\U0001F600", "\uFFFD", "\x7F",  "e\u0301"};
        std::string result;
        for (std::size_t left = below(20); left > 0; --left) {
            result += pieces[below(pieces.size())];
        }
        return result;
    }

    Reference scalar() {
        switch (below(6)) {
        case 0:
            return add(PropertyList::Null{});
        case 1:
            return add(number());
        case 2:
            return add(PropertyList::Date{(static_cast<double>(below(4000000000)) - 2e9) / 2});
        case 3:
            return add(PropertyList::Data{std::string(below(40), static_cast<char>(_random()))});
        case 4:
            return add(PropertyList::UID{_random() >> (32 + below(32))});
        default:
            return add(text());
        }
    }

    Reference container(int levels) {
        const std::size_t size = below(8);
        if (below(2) == 0) {
            PropertyList::Array array;
            for (std::size_t index = 0; index < size; ++index) {
                array.elements.push_back(element(levels));
            }
            return add(std::move(array));
        }
        PropertyList::Dictionary dictionary;
        for (std::size_t index = 0; index < size; ++index) {
            const Reference key = add(std::to_string(index) + text());
            dictionary.entries.emplace_back(key, element(levels));
        }
        return add(std::move(dictionary));
    }

    Reference element(int levels) {
        return levels > 0 && below(3) == 0 ? container(levels - 1) : scalar();
    }

    std::mt19937_64 _random;
    PropertyList _list;
};

std::optional<PropertyList> read(const std::string& bytes) {
    return BinaryPropertyList::read(std::as_bytes(std::span(bytes)));
}

void consultOracle(const testing::TemporaryFolder& folder) {
    const std::string command = KELO_PLISTLIB_ORACLE " '" + folder.path() + "'";
    ASSERT_EQ(std::system(command.c_str()), 0);
}

} // namespace

TEST(PlistlibTest, ReadsWhatWeWriteAndWritesWhatWeRead) {
    constexpr unsigned lists = 300;
    const testing::TemporaryFolder folder;
    std::vector<std::string> texts;
    for (unsigned seed = 0; seed < lists; ++seed) {
        const PropertyList list = Generator(seed).list();
        const std::string bytes = BinaryPropertyList::write(list);
        texts.push_back(PropertyListText::of(list));
        const auto again = read(bytes);
        ASSERT_TRUE(again) << texts.back();
        EXPECT_EQ(PropertyListText::of(*again), texts.back());
        folder.write(std::to_string(seed) + ".plist", bytes);
    }
    consultOracle(folder);
    for (unsigned seed = 0; seed < lists; ++seed) {
        EXPECT_EQ(folder.read(std::to_string(seed) + ".text"), texts[seed]);
        const auto again = read(folder.read(std::to_string(seed) + ".again"));
        ASSERT_TRUE(again) << texts[seed];
        EXPECT_EQ(PropertyListText::of(*again), texts[seed]);
    }
}

TEST(PlistlibTest, AgreesOnListsThatNeedWideReferencesAndOffsets) {
    const testing::TemporaryFolder folder;
    for (const std::size_t size : {255U, 256U, 257U, 65535U, 65536U, 70000U}) {
        PropertyList list;
        PropertyList::Array array;
        for (std::size_t index = 1; index < size; ++index) {
            list.values.emplace_back(Number::of(static_cast<std::int64_t>(index)));
            array.elements.push_back(static_cast<PropertyList::Reference>(index - 1));
        }
        list.values.emplace_back(array);
        list.root = static_cast<PropertyList::Reference>(size - 1);
        folder.write(std::to_string(size) + ".plist", BinaryPropertyList::write(list));
        folder.write(std::to_string(size) + ".expected", PropertyListText::of(list));
    }
    consultOracle(folder);
    for (const std::size_t size : {255U, 256U, 257U, 65535U, 65536U, 70000U}) {
        const std::string expected = folder.read(std::to_string(size) + ".expected");
        EXPECT_EQ(folder.read(std::to_string(size) + ".text"), expected) << size;
        const auto again = read(folder.read(std::to_string(size) + ".again"));
        ASSERT_TRUE(again) << size;
        EXPECT_EQ(PropertyListText::of(*again), expected) << size;
    }
}

} // namespace KeloAPI
