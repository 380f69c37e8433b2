#include "PropertyListFile.hpp"
#include "PropertyListText.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/archive/internal/BinaryPropertyList.hpp>

#include <gtest/gtest.h>

#include <bit>
#include <cstdlib>
#include <random>

namespace KeloAPI {

using testing::PropertyListFile;
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

    Number number() {
        const std::uint64_t bits = _random();
        const Number kinds[] = {
            Number::of(below(2) == 1), Number::of(std::bit_cast<std::int64_t>(bits >> below(64))),
            Number::of(-static_cast<std::int64_t>(bits >> (1 + below(63)))),
            Number::of(bits | std::uint64_t{1} << 63U),
            Number::of(static_cast<double>(bits) / static_cast<double>(1 + below(999)))};
        return kinds[below(std::size(kinds))];
    }

    std::string text() {
        static const std::vector<std::string> pieces = {
            "a",          "key",    "'\"%\\", "\n\t ",  std::string(1, '\0'), "\u00e9", "\u4e2d",
            "\U0001F600", "\uFFFD", "\x7F",   "e\u0301"};
        std::string result;
        for (std::size_t left = below(20); left > 0; --left) {
            result += pieces[below(pieces.size())];
        }
        return result;
    }

    Reference scalar() {
        PropertyList::Value kinds[] = {
            PropertyList::Null{},
            number(),
            PropertyList::Date{(static_cast<double>(below(4000000000)) - 2e9) / 2},
            PropertyList::Data{std::string(below(40), static_cast<char>(_random()))},
            PropertyList::UID{_random() >> (32 + below(32))},
            text()};
        _list.values.push_back(std::move(kinds[below(std::size(kinds))]));
        return static_cast<Reference>(_list.values.size() - 1);
    }

    Reference container(int levels) {
        PropertyList::Array array;
        PropertyList::Dictionary dictionary;
        const bool isArray = below(2) == 0;
        const std::size_t size = below(8);
        for (std::size_t index = 0; index < size; ++index) {
            if (isArray) {
                array.elements.push_back(element(levels));
            } else {
                const Reference key = _list.add(std::to_string(index) + text());
                dictionary.entries.emplace_back(key, element(levels));
            }
        }
        return isArray ? _list.add(std::move(array)) : _list.add(std::move(dictionary));
    }

    Reference element(int levels) {
        return levels > 0 && below(3) == 0 ? container(levels - 1) : scalar();
    }

    std::mt19937_64 _random;
    PropertyList _list;
};

/// Lists under a name each, as we write them; Python's reader tells what is in them and its writer
/// writes the same again.
class Exchange {
public:
    void add(const std::string& name, const PropertyList& list) {
        const std::string bytes = BinaryPropertyList::write(list);
        _texts[name] = PropertyListText::of(list);
        _folder.write(name + ".plist", bytes);
        expectRead(bytes, _texts[name]);
    }

    void compare() const {
        const std::string command = KELO_PLISTLIB_ORACLE " '" + _folder.path() + "'";
        EXPECT_EQ(std::system(command.c_str()), 0);
        for (const auto& [name, text] : _texts) {
            EXPECT_EQ(_folder.read(name + ".text"), text);
            expectRead(_folder.read(name + ".again"), text);
        }
    }

private:
    static void expectRead(const std::string& bytes, const std::string& text) {
        const auto list = PropertyListFile::read(bytes);
        ASSERT_TRUE(list) << text;
        EXPECT_EQ(PropertyListText::of(*list), text);
    }

    const testing::TemporaryFolder _folder;
    std::map<std::string, std::string> _texts;
};

} // namespace

TEST(PlistlibTest, ReadsWhatWeWriteAndWritesWhatWeRead) {
    Exchange exchange;
    for (unsigned seed = 0; seed < 300; ++seed) {
        exchange.add(std::to_string(seed), Generator(seed).list());
    }
    exchange.compare();
}

TEST(PlistlibTest, AgreesOnListsThatNeedWideReferencesAndOffsets) {
    Exchange exchange;
    for (const std::int64_t size : {255, 256, 257, 65535, 65536, 70000}) {
        PropertyList list;
        PropertyList::Array array;
        for (std::int64_t number = 1; number < size; ++number) {
            array.elements.push_back(list.add(Number::of(number)));
        }
        list.root = list.add(std::move(array));
        exchange.add(std::to_string(size), list);
    }
    exchange.compare();
}

} // namespace KeloAPI
