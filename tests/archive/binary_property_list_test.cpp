#include "PropertyListFile.hpp"
#include "PropertyListText.hpp"
#include "support/TemporaryFolder.hpp"
#include "support/Words.hpp"

#include <KeloAPI/archive/internal/BinaryPropertyList.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

namespace KeloAPI {

using testing::bytesOf;
using testing::PropertyListFile;
using testing::PropertyListText;

namespace {

constexpr auto highest = std::numeric_limits<std::int64_t>::max();
constexpr auto lowest = std::numeric_limits<std::int64_t>::min();
constexpr std::uint64_t huge = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t twoTo63 = std::uint64_t{1} << 63U;

/// The bytes of a value that stands alone in a list.
std::string written(PropertyList::Value value) {
    PropertyList list;
    list.values.push_back(std::move(value));
    const std::string bytes = BinaryPropertyList::write(list);
    const std::size_t head = 8;
    const std::size_t tail = 32 + (bytes.size() - 33 > 255 ? 2 : 1);
    return bytes.substr(head, bytes.size() - head - tail);
}

/// What is read where these bytes are the only value; "refused" when the file is refused.
std::string readText(std::string_view hexadecimal) {
    PropertyListFile file;
    file.values = {bytesOf(hexadecimal)};
    const auto list = file.read();
    return list ? PropertyListText::of(*list) : "refused";
}

} // namespace

TEST(BinaryPropertyListTest, WritesAWholeFile) {
    PropertyList list;
    list.values = {std::string("a"), Number::of(true), PropertyList::Dictionary{{{0, 1}}}};
    list.root = 2;
    EXPECT_EQ(BinaryPropertyList::write(list),
              bytesOf("62 70 6C 69 73 74 30 30 " // bplist00
                      "51 61 09 D1 00 01 "       // "a", true, {"a": true}
                      "08 0A 0B "                // where they are
                      "00 00 00 00 00 00 01 01 "
                      "00 00 00 00 00 00 00 03 "
                      "00 00 00 00 00 00 00 02 "
                      "00 00 00 00 00 00 00 0E"));
}

TEST(BinaryPropertyListTest, WritesAndReadsEachKindByteByByte) {
    const std::string fifteen(15, 'x');
    const std::string fifteenBytes = "78 78 78 78 78 78 78 78 78 78 78 78 78 78 78";
    const std::pair<PropertyList::Value, std::string> table[] = {
        {PropertyList::Null{}, "00"},
        {Number::of(false), "08"},
        {Number::of(true), "09"},
        {Number::of(0), "10 00"},
        {Number::of(255), "10 FF"},
        {Number::of(256), "11 01 00"},
        {Number::of(65535), "11 FF FF"},
        {Number::of(65536), "12 00 01 00 00"},
        {Number::of(std::int64_t{4294967295}), "12 FF FF FF FF"},
        {Number::of(std::int64_t{4294967296}), "13 00 00 00 01 00 00 00 00"},
        {Number::of(highest), "13 7F FF FF FF FF FF FF FF"},
        {Number::of(-1), "13 FF FF FF FF FF FF FF FF"},
        {Number::of(lowest), "13 80 00 00 00 00 00 00 00"},
        {Number::of(std::uint64_t{7}), "10 07"},
        {Number::of(twoTo63), "14 00 00 00 00 00 00 00 00 80 00 00 00 00 00 00 00"},
        {Number::of(std::numeric_limits<std::uint64_t>::max()),
         "14 00 00 00 00 00 00 00 00 FF FF FF FF FF FF FF FF"},
        {Number::of(1.5), "23 3F F8 00 00 00 00 00 00"},
        {Number::of(-0.0), "23 80 00 00 00 00 00 00 00"},
        {Number::of(std::numeric_limits<double>::infinity()), "23 7F F0 00 00 00 00 00 00"},
        {PropertyList::Date{0.25}, "33 3F D0 00 00 00 00 00 00"},
        {PropertyList::Data{""}, "40"},
        {PropertyList::Data{std::string("\0\xFF", 2)}, "42 00 FF"},
        {PropertyList::Data{fifteen}, "4F 10 0F " + fifteenBytes},
        {std::string(), "50"},
        {std::string("a\0b", 3), "53 61 00 62"},
        {std::string(14, 'x'), "5E " + fifteenBytes.substr(3)},
        {fifteen, "5F 10 0F " + fifteenBytes},
        {std::string("\u00e9"), "61 00 E9"},
        {std::string("a\0\u4e2d", 5), "63 00 61 00 00 4E 2D"},
        {std::string("\U0001F600"), "62 D8 3D DE 00"},
        {std::string("\U0010FFFF"), "62 DB FF DF FF"},
        {PropertyList::UID{0}, "80 00"},
        {PropertyList::UID{256}, "81 01 00"},
        {PropertyList::UID{65536}, "83 00 01 00 00"},
        {PropertyList::Array{}, "A0"},
        {PropertyList::Set{}, "C0"},
        {PropertyList::Dictionary{}, "D0"},
    };
    for (const auto& [value, bytes] : table) {
        PropertyList list;
        list.values.push_back(value);
        EXPECT_EQ(written(value), bytesOf(bytes)) << bytes;
        EXPECT_EQ(readText(bytes), PropertyListText::of(list)) << bytes;
    }
}

TEST(BinaryPropertyListTest, ReadsWhatOnlyOthersWrite) {
    const std::pair<std::string, std::string> table[] = {
        {"22 3F C0 00 00", "real(1.5)"},
        {"22 FF 80 00 00", "real(-inf)"},
        {"11 00 07", "7"},
        {"13 00 00 00 00 00 00 00 07", "7"},
        {"14 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 07", "7"},
        {"14 FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF F9", "-7"},
        {"51 7F", "'%7F'"},
        {"60", "''"},
        {"62 00 61 00 62", "'ab'"},
        {"5F 13 00 00 00 00 00 00 00 01 61", "'a'"},
        {"82 00 00 05", "UID(5)"},
        {"87 FF FF FF FF FF FF FF FF", "UID(18446744073709551615)"},
        {"AF 10 00", "[]"},
    };
    for (const auto& [bytes, text] : table) {
        EXPECT_EQ(readText(bytes), text) << bytes;
    }
}

TEST(BinaryPropertyListTest, RefusesMalformedValues) {
    const std::string table[] = {
        // Kinds that are none, or none of this version.
        "01", "07", "0A", "0C", "0D", "0E", "0F", "20", "21", "24", "30", "32", "34", "70", "71 61",
        "90", "B0", "E0", "F0",
        // Cut off.
        "11 00", "12 00 00 00", "13 00", "14 00", "22 00", "23 00 00 00 00 00 00 00", "33 00", "41",
        "42 00", "51", "61 00", "62 00 61 00", "81 00", "A1", "D1 00", "5F", "5F 10",
        // Integers beyond 64 bits, and wider ones.
        "14 00 00 00 00 00 00 00 01 00 00 00 00 00 00 00 00",
        "14 FF FF FF FF FF FF FF FF 7F FF FF FF FF FF FF FF",
        "14 FF FF FF FF FF FF FF FE FF FF FF FF FF FF FF FF", "15 00", "1F 00",
        // Wider UIDs.
        "88 00 00 00 00 00 00 00 00 00", "8F 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00",
        // No ASCII; surrogates alone.
        "51 80", "52 C3 A9", "61 D8 00", "61 DC 00", "62 DC 00 D8 00", "62 D8 00 D8 00",
        "62 D8 00 00 61",
        // Lengths that are none, and huge ones.
        "5F 09", "5F 51 61", "5F 14 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 61",
        "4F 13 7F FF FF FF FF FF FF FF", "4F 13 80 00 00 00 00 00 00 00",
        "4F 13 FF FF FF FF FF FF FF FF", "5F 13 FF FF FF FF FF FF FF FF",
        "6F 13 80 00 00 00 00 00 00 00", "6F 13 FF FF FF FF FF FF FF FF",
        "AF 13 FF FF FF FF FF FF FF FF", "CF 13 40 00 00 00 00 00 00 00",
        "DF 13 80 00 00 00 00 00 00 00", "DF 13 FF FF FF FF FF FF FF FF",
        // References to what is not there, and to itself.
        "A1 01", "C1 FF", "D1 00 00", "A1 00", "C1 00"};
    for (const std::string& bytes : table) {
        EXPECT_EQ(readText(bytes), "refused") << bytes;
    }
}

TEST(BinaryPropertyListTest, ReadsContainersAndReferencesAndOffsetsOfEveryWidth) {
    for (unsigned width = 1; width <= 8; ++width) {
        const auto to = [width](std::initializer_list<std::uint64_t> places) {
            std::string references;
            for (const std::uint64_t place : places) {
                references += PropertyListFile::bigEndian(place, width);
            }
            return references;
        };
        PropertyListFile file;
        file.values = {"\xA3" + to({1, 2, 1}), bytesOf("51 61"), "\xD2" + to({1, 3, 3, 4}),
                       bytesOf("51 62"),       "\xC1" + to({5}), bytesOf("09")};
        file.referenceWidth = width;
        for (file.offsetWidth = 1; file.offsetWidth <= 8; ++file.offsetWidth) {
            const auto list = file.read();
            ASSERT_TRUE(list) << width << ' ' << file.offsetWidth;
            EXPECT_EQ(PropertyListText::of(*list), "['a', {'a': 'b', 'b': set[true]}, 'a']");
        }
    }
}

TEST(BinaryPropertyListTest, RefusesMalformedFiles) {
    using Spoil = std::function<void(PropertyListFile&)>;
    const auto at = [](std::vector<std::uint64_t> offsets) -> Spoil {
        return [offsets](auto& file) { file.offsets = offsets; };
    };
    PropertyListFile good;
    good.values = {bytesOf("A2 01 02"), bytesOf("51 61"), bytesOf("09")};
    ASSERT_TRUE(good.read());
    const std::pair<std::string, Spoil> table[] = {
        {"another version", [](auto& file) { file.magic = "bplist01"; }},
        {"no magic", [](auto& file) { file.magic = "xplist00"; }},
        {"offsets of no bytes", [](auto& file) { file.offsetWidth = 0; }},
        {"offsets of nine bytes", [](auto& file) { file.offsetWidth = 9; }},
        {"references of no bytes", [](auto& file) { file.referenceWidth = 0; }},
        {"references of nine bytes", [](auto& file) { file.referenceWidth = 9; }},
        {"references of 255 bytes", [](auto& file) { file.referenceWidth = 255; }},
        {"no values", [](auto& file) { file.count = 0; }},
        {"a value too many", [](auto& file) { file.count = 4; }},
        {"a size that overflows", [](auto& file) { file.count = huge / 4 + 2; }},
        {"as many values as can be told", [](auto& file) { file.count = huge; }},
        {"a root beyond", [](auto& file) { file.root = 3; }},
        {"a root far beyond", [](auto& file) { file.root = huge; }},
        {"a root that a cut would make right", [](auto& file) { file.root = 1ULL << 32U; }},
        {"a table in the magic", [](auto& file) { file.table = 7; }},
        {"a table where the values begin", [](auto& file) { file.table = 8; }},
        {"a table behind its place", [](auto& file) { file.table = 15; }},
        {"a table in the trailer", [](auto& file) { file.table = 30; }},
        {"a table behind the file", [](auto& file) { file.table = 1000; }},
        {"a table far behind the file", [](auto& file) { file.table = huge; }},
        {"an offset into the magic", at({8, 7, 13})},
        {"an offset into the table", at({8, 11, 14})},
        {"an offset far behind the file", at({8, 11, 0xFFFFFFFF})},
        {"values that share bytes", at({8, 8, 8})},
        {"a key that is no text", [](auto& file) { file.values.push_back(bytesOf("D1 02 02")); }},
        {"a key that is a list", [](auto& file) { file.values.push_back(bytesOf("D1 00 02")); }},
    };
    for (const auto& [what, spoil] : table) {
        PropertyListFile file = good;
        spoil(file);
        EXPECT_FALSE(file.read()) << what;
    }
}

TEST(BinaryPropertyListTest, RefusesCirclesAmongContainers) {
    const std::vector<std::string> table[] = {
        {"A1 01", "A1 00"},
        {"A1 01", "C1 02", "D1 03 01", "51 61"},
        {"D1 01 02", "51 61", "A2 01 00"},
        // Out of the root's sight.
        {"09", "A1 02", "A1 01"},
    };
    for (const auto& values : table) {
        PropertyListFile file;
        for (const std::string& value : values) {
            file.values.push_back(bytesOf(value));
        }
        EXPECT_FALSE(file.read()) << values.front();
    }
}

TEST(BinaryPropertyListTest, RefusesAListWithoutItsRootOrValues) {
    PropertyList list;
    EXPECT_DEATH(BinaryPropertyList::write(list), "a property list without its root");
    list.values.emplace_back(PropertyList::Array{{1}});
    EXPECT_DEATH(BinaryPropertyList::write(list), "a property list that refers beyond its values");
}

TEST(BinaryPropertyListTest, WritesReplacementsForWhatIsNoUTF8) {
    EXPECT_EQ(written(std::string("a\xFF")), bytesOf("62 00 61 FF FD"));
    EXPECT_EQ(written(std::string("\xED\xA0\x80")), bytesOf("63 FF FD FF FD FF FD"));
}

namespace {

bool runOracle(const std::string& verb, const testing::TemporaryFolder& folder) {
    return std::system((KELO_PLISTLIB_ORACLE " " + verb + " '" + folder.path() + "'").c_str()) == 0;
}

} // namespace

TEST(PlistlibTest, ReadsWhatWeWriteAndWritesWhatWeRead) {
    const testing::TemporaryFolder folder;
    ASSERT_TRUE(runOracle("write", folder));
    int count = 0;
    for (const std::string& name : folder.names()) {
        if (name.ends_with(".plist")) {
            const std::string stem = name.substr(0, name.size() - 6);
            const auto list = PropertyListFile::read(folder.read(name));
            ASSERT_TRUE(list) << stem;
            EXPECT_EQ(PropertyListText::of(*list), folder.read(stem + ".text"));
            folder.write(stem + ".again", BinaryPropertyList::write(*list));
            ++count;
        }
    }
    EXPECT_EQ(count, 306);
    EXPECT_TRUE(runOracle("read", folder));
}

} // namespace KeloAPI
