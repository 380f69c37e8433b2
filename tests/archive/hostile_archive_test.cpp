#include "PropertyListFile.hpp"
#include "support/ArchivedModels.hpp"
#include "support/ArchiveFile.hpp"

#include <gtest/gtest.h>

#include <functional>

namespace KeloAPI {

using testing::ArchiveFile;
using testing::bytesOf;
using testing::Everything;
using testing::Node;
using testing::PropertyListFile;
using testing::ReadOnly;

namespace {

using Reference = PropertyList::Reference;

/// Needs its child, which the last one of a chain has not.
class Needy final : public ReadOnly {
public:
    static constexpr std::string_view archivedClassName = Node::archivedClassName;
    static std::shared_ptr<Needy> initWithCoder(KeyedUnarchiver& coder) {
        const bool hasAny = coder.decodeObject<Needy>("left") || coder.decodeObject<Needy>("right");
        return hasAny ? std::make_shared<Needy>() : nullptr;
    }
};

/// Asks for one text as many times as it says.
class Greedy final : public ReadOnly {
public:
    std::size_t bytes = 0;
    static std::shared_ptr<Greedy> initWithCoder(KeyedUnarchiver& coder) {
        auto object = std::make_shared<Greedy>();
        for (auto times = coder.decodeInt64("integer"); times > 0; --times) {
            object->bytes += coder.decodeText("text").value_or("").size();
        }
        return object;
    }
};

std::string goodArchive() {
    const auto root = std::make_shared<Everything>();
    root->text = "caf\u00e9";
    root->url = URL::parse("https://kelo.example/");
    root->date = Date();
    root->number = Number::of(1.5);
    root->range = Range{3, 4};
    root->other = std::make_shared<Everything>();
    root->other->text = "a text of more than fifteen characters";
    return std::string(KeyedArchiver::archivedData(root).text());
}

/// A chain of nodes, each with its follower on both sides.
Data doubledChain(std::size_t length) {
    ArchiveFile file;
    Reference next = file.uid(0);
    for (std::size_t left = length; left > 0; --left) {
        next = file.instance(
            "Node", {{"name", file.object(file.text("n"))}, {"left", next}, {"right", next}});
    }
    return file.bytes(next);
}

std::size_t lengthOf(std::shared_ptr<Node> node) {
    std::size_t length = 0;
    for (; node; node = node->left) {
        ++length;
    }
    return length;
}

/// Lists in one another.
PropertyListFile nested(std::size_t levels) {
    PropertyListFile file;
    file.referenceWidth = 2;
    for (std::size_t level = 1; level < levels; ++level) {
        file.values.push_back("\xA1" + PropertyListFile::bigEndian(level, 2));
    }
    file.values.push_back(bytesOf("A0"));
    return file;
}

} // namespace

TEST(HostileArchiveTest, GivesNoObjectWhereAnArchiveIsCutOff) {
    const std::string good = goodArchive();
    ASSERT_TRUE(KeyedUnarchiver::unarchive<Everything>(Data(good)));
    for (std::size_t length = 0; length < good.size(); ++length) {
        EXPECT_FALSE(KeyedUnarchiver::unarchive<Everything>(Data(good.substr(0, length))));
        EXPECT_FALSE(KeyedUnarchiver::unarchive<Everything>(Data(good.substr(length + 1))));
    }
}

TEST(HostileArchiveTest, SurvivesEveryByteThatIsAnother) {
    const std::string good = goodArchive();
    std::size_t tries = 0;
    std::size_t objects = 0;
    for (std::size_t at = 0; at < good.size(); ++at) {
        for (const unsigned change : {1U, 2U, 4U, 8U, 16U, 32U, 64U, 128U, 255U}) {
            std::string bad = good;
            bad[at] = static_cast<char>(static_cast<unsigned char>(bad[at]) ^ change);
            ++tries;
            const auto object = KeyedUnarchiver::unarchive<Everything>(Data(bad));
            if (object) {
                ++objects;
                EXPECT_TRUE(
                    KeyedUnarchiver::unarchive<Everything>(KeyedArchiver::archivedData(object)));
            }
        }
    }
    // Another letter in a text makes another object; a change of what holds it together, none.
    EXPECT_GT(objects, tries / 4);
    EXPECT_LT(objects, tries * 3 / 4);
}

TEST(HostileArchiveTest, GivesNoObjectWherePartsOfAnArchiveAreWrong) {
    using Spoil = std::function<void(ArchiveFile&, ArchiveFile::Entries&)>;
    const auto without = [](std::size_t index) -> Spoil {
        return [index](ArchiveFile&, auto& entries) {
            entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(index));
        };
    };
    const auto with = [](std::size_t index, PropertyList::Value value) -> Spoil {
        return [index, value = std::move(value)](ArchiveFile& file, auto& entries) {
            entries[index].second = file.value(value);
        };
    };
    const auto root = [](PropertyList::Value value) -> Spoil {
        return [value = std::move(value)](ArchiveFile& file, auto& entries) {
            entries[2].second = file.dictionary({{"root", file.value(value)}});
        };
    };
    enum : std::size_t { version, archiver, top, objects };
    const std::pair<std::string, Spoil> table[] = {
        {"no version", without(version)},
        {"no archiver", without(archiver)},
        {"no top", without(top)},
        {"no objects", without(objects)},
        {"another version", with(version, Number::of(100001))},
        {"a version in words", with(version, std::string("100000"))},
        {"another archiver", with(archiver, std::string("NSArchiver"))},
        {"a number for an archiver", with(archiver, Number::of(1))},
        {"a top that is no dictionary", with(top, PropertyList::Array{})},
        {"a top without root", with(top, PropertyList::Dictionary{})},
        {"objects that are no array", with(objects, PropertyList::Dictionary{})},
        {"not even null", with(objects, PropertyList::Array{})},
        {"a root that is null", root(PropertyList::UID{0})},
        {"a root beyond the objects", root(PropertyList::UID{3})},
        {"a root far beyond the objects", root(PropertyList::UID{~0ULL})},
        {"a root that a cut would make right", root(PropertyList::UID{(1ULL << 32U) + 2})},
        {"a root that is no reference", root(Number::of(2))},
        {"a root that is a class", root(PropertyList::UID{1})},
    };
    for (const auto& [what, spoil] : table) {
        ArchiveFile file;
        auto entries = file.outermost(file.instance("Everything", {}));
        ASSERT_TRUE(KeyedUnarchiver::unarchive<Everything>(ArchiveFile(file).bytes(entries)));
        // The list of objects as it is now; what is spoiled refers to it.
        spoil(file, entries);
        const Data bytes = file.bytes(entries);
        EXPECT_FALSE(KeyedUnarchiver::unarchive<Everything>(bytes)) << what;
        EXPECT_EQ(KeyedUnarchiver::rootClassName(bytes), std::nullopt) << what;
    }
}

TEST(HostileArchiveTest, GivesNoObjectOfAClassThatIsNone) {
    using Entries = ArchiveFile::Entries;
    const auto entryOf = [](ArchiveFile& file, const Entries& entries) {
        return file.object(file.dictionary(entries));
    };
    const std::pair<std::string, std::function<Reference(ArchiveFile&)>> table[] = {
        {"a name", [](auto& file) { return file.text("Everything"); }},
        {"null", [](auto& file) { return file.uid(0); }},
        {"beyond", [](auto& file) { return file.uid(99); }},
        {"itself", [](auto& file) { return file.uid(file.objects.size()); }},
        {"a text", [](auto& file) { return file.object(file.text("Everything")); }},
        {"another", [](auto& file) { return file.classNamed("Everythin"); }},
        {"no names", [&](auto& file) { return entryOf(file, {}); }},
        {"a number",
         [&](auto& file) {
             return entryOf(file, {{"$classname", file.number(1)}});
         }},
        {"a name's reference",
         [&](auto& file) {
             return entryOf(file, {{"$classname", file.object(file.text("Everything"))}});
         }},
        {"a chain that is none",
         [&](auto& file) {
             return entryOf(file, {{"$classes", file.text("Everything")}});
         }},
        {"a chain without end",
         [&](auto& file) {
             const std::vector<Reference> names(1000, file.text("Everything"));
             return entryOf(file, {{"$classes", file.array(names)}});
         }},
    };
    for (const auto& [what, entry] : table) {
        ArchiveFile file;
        const auto root = entryOf(file, {{"$class", entry(file)}});
        EXPECT_FALSE(KeyedUnarchiver::unarchive<Everything>(file.bytes(root))) << what;
    }
    ArchiveFile file;
    EXPECT_FALSE(KeyedUnarchiver::unarchive<Everything>(file.bytes(entryOf(file, {}))));
}

TEST(HostileArchiveTest, DecodesWhatIsSharedOnceAndNothingThatNestsTooDeep) {
    EXPECT_EQ(lengthOf(KeyedUnarchiver::unarchive<Node>(doubledChain(100))), 100U);
    // A failure is no more tried again than a success: here are 2 to the hundredth ways to it.
    EXPECT_FALSE(KeyedUnarchiver::unarchive<Needy>(doubledChain(100)));
    for (const std::size_t tooLong : {std::size_t{101}, std::size_t{10000}}) {
        EXPECT_FALSE(KeyedUnarchiver::unarchive<Node>(doubledChain(tooLong)));
        EXPECT_FALSE(KeyedUnarchiver::unarchive<Needy>(doubledChain(tooLong)));
    }
}

TEST(HostileArchiveTest, RefusesListsThatNestTooDeep) {
    EXPECT_TRUE(nested(BinaryPropertyList::maxDepth + 1).read());
    EXPECT_FALSE(nested(BinaryPropertyList::maxDepth + 2).read());
    EXPECT_FALSE(nested(60000).read());
    // From wherever the walk begins.
    PropertyListFile backwards;
    backwards.referenceWidth = 2;
    backwards.values.push_back(bytesOf("A0"));
    for (std::size_t level = 0; level <= BinaryPropertyList::maxDepth; ++level) {
        backwards.values.push_back("\xA1" + PropertyListFile::bigEndian(level, 2));
    }
    EXPECT_FALSE(backwards.read());
}

TEST(HostileArchiveTest, RefusesAMillionObjects) {
    const auto manyTrue = [](std::size_t count) {
        PropertyListFile file;
        file.values = {std::string(count, '\x09')};
        for (std::size_t at = 0; at < count; ++at) {
            file.offsets.push_back(8 + at);
        }
        return file;
    };
    EXPECT_TRUE(manyTrue(BinaryPropertyList::maxValues).read());
    EXPECT_FALSE(manyTrue(BinaryPropertyList::maxValues + 1).read());
    EXPECT_FALSE(manyTrue(1'000'000).read());
}

TEST(HostileArchiveTest, RefusesAFileThatStandsForMoreThanItHolds) {
    // Each of 1000 values is the one list of 1000 references.
    PropertyListFile file;
    file.referenceWidth = 2;
    file.values = {bytesOf("AF 11 03 E8") + std::string(2000, '\0')};
    file.offsets.assign(1000, 8);
    EXPECT_FALSE(file.read());
    // Each text begins within the one before it.
    PropertyListFile texts;
    std::string bytes;
    for (int left = 1000; left > 0; --left) {
        bytes += "\x5F" + bytesOf("11") + PropertyListFile::bigEndian(4U * (left - 1U), 2);
        texts.offsets.push_back(8 + 4 * texts.offsets.size());
    }
    texts.values = {bytes};
    EXPECT_FALSE(texts.read());
}

TEST(HostileArchiveTest, RefusesAFileThatIsTooLong) {
    PropertyListFile file;
    const std::size_t rest = file.bytes().size() + 10;
    file.values = {bytesOf("4F 12") +
                   PropertyListFile::bigEndian(BinaryPropertyList::maxBytes - rest, 4) +
                   std::string(BinaryPropertyList::maxBytes - rest, 'x')};
    const std::string atLimit = file.bytes();
    ASSERT_EQ(atLimit.size(), BinaryPropertyList::maxBytes);
    EXPECT_TRUE(PropertyListFile::read(atLimit));
    file.values.emplace_back("\x09");
    EXPECT_FALSE(file.read());
}

TEST(HostileArchiveTest, HandsOutNoMoreTextThanAFileCanHold) {
    constexpr std::int64_t times = 64;
    const auto object = std::make_shared<Everything>();
    object->text = std::string(BinaryPropertyList::maxBytes / times, 'x');
    object->integer = times;
    const auto some = KeyedUnarchiver::unarchive<Greedy>(KeyedArchiver::archivedData(object));
    ASSERT_TRUE(some);
    EXPECT_EQ(some->bytes, BinaryPropertyList::maxBytes);
    object->integer = times + 1;
    EXPECT_FALSE(KeyedUnarchiver::unarchive<Greedy>(KeyedArchiver::archivedData(object)));
}

} // namespace KeloAPI
