#include "support/ArchivedModels.hpp"
#include "support/ModelArchives.hpp"
#include "support/TemporaryFolder.hpp"

#include <KeloAPI/base/Data.hpp>

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace KeloAPI::testing {

using namespace std::chrono_literals;

/// A real Foundation's archives. The languages of objects and classes stand at the head of
/// foundation-archive.m. What it refuses is thrown with its own words.
class FoundationArchive {
public:
    /// The archive that it writes of `objects`.
    static Data write(const std::string& objects) {
        const TemporaryFolder folder;
        run(folder, "write", objects);
        return Data(folder.read("archive"));
    }

    /// What it reads in an archive that has objects of these classes.
    static std::string read(const Data& archive, const std::string& classes) {
        const TemporaryFolder folder;
        folder.write("archive", std::string(archive.text()));
        run(folder, "read", classes);
        return folder.read("output");
    }

private:
    static void run(const TemporaryFolder& folder, const std::string& verb,
                    const std::string& input) {
        folder.write("input", input);
        const std::string command = "'" KELO_FOUNDATION_ARCHIVE "' " + verb + " '" +
                                    folder.path("archive") + "' <'" + folder.path("input") +
                                    "' >'" + folder.path("output") + "' 2>'" +
                                    folder.path("errors") + "'";
        if (std::system(command.c_str()) != 0) {
            throw std::runtime_error(folder.read("errors"));
        }
    }
};

/// An object as its class's name and the values of its entries.
using ObjectLines = std::pair<std::string, std::vector<std::string>>;

/// Objects in that language, the first one with the number 1. What entries they have, and of which
/// kinds, is said in `classes`.
inline std::string objectsOf(const std::string& classes, const std::vector<ObjectLines>& objects) {
    std::string lines;
    int number = 0;
    for (const auto& [name, values] : objects) {
        lines += "object " + std::to_string(++number) + " " + name + "\n";
        std::istringstream description(classes);
        std::string line;
        while (std::getline(description, line) && line != "class " + name) {
        }
        for (const std::string& value : values) {
            std::getline(description, line);
            lines += line + " " + value + "\n";
        }
    }
    return lines;
}

/// As a range is archived.
inline const std::string rangeClass = "class NSValue\n"
                                      "int64 NS.special\n"
                                      "number NS.rangeval.length\n"
                                      "number NS.rangeval.location\n";

namespace {

const std::string everythingClass = "class Everything\n"
                                    "text text\nurl url\ndate date\nnumber number\n"
                                    "object range\nint64 integer\ndouble real\nbool flag\n"
                                    "object other\n" +
                                    rangeClass;

const std::string nodeClass = "class Node\ntext name\nobject left\nobject right\n";

std::shared_ptr<Everything> something() {
    auto object = std::make_shared<Everything>();
    object->text = std::string("caf\u00e9 \U0001F600\n") + '\0' + "%";
    object->url = URL::parse("https://kelo.example/a%20b?c=d#e");
    object->date = referenceDate + 521692800s + 123456us;
    object->number = Number::of(std::numeric_limits<std::int64_t>::max());
    object->range = Range{3, 4};
    object->integer = std::numeric_limits<std::int64_t>::min();
    object->real = -1.5;
    object->flag = true;
    return object;
}

const std::string somethingLines = objectsOf(
    everythingClass, {{"Everything",
                       {"=caf%C3%A9%20%F0%9F%98%80%0A%00%25",
                        "=https://kelo.example/a%2520b%3Fc%3Dd%23e", "521692800.123456",
                        "i9223372036854775807", "2", "-9223372036854775808", "-1.5", "1", "null"}},
                      {"NSValue", {"4", "i4", "i3"}}});

struct Dollar final : Archivable {
    static constexpr std::string_view archivedClassName = "Dollar";
    std::optional<std::string> text;
    std::vector<std::string_view> archivedClassNames() const override {
        return {archivedClassName};
    }
    void encodeWithCoder(KeyedArchiver& coder) const override { coder.encodeText("a", "$class"); }
    static std::shared_ptr<Dollar> initWithCoder(KeyedUnarchiver& coder) {
        auto object = std::make_shared<Dollar>();
        object->text = coder.decodeText("$class");
        return object;
    }
};

} // namespace

TEST(FoundationTest, ReadsEveryKindThatWeWrite) {
    EXPECT_EQ(FoundationArchive::read(KeyedArchiver::archivedData(something()), everythingClass),
              somethingLines);
}

TEST(FoundationTest, WritesEveryKindThatWeRead) {
    const auto expected = something();
    const auto object =
        KeyedUnarchiver::unarchive<Everything>(FoundationArchive::write(somethingLines));
    ASSERT_TRUE(object);
    EXPECT_EQ(object->contents(), expected->contents());
    EXPECT_FALSE(object->other);
}

TEST(FoundationTest, AgreesOnWhatIsAbsent) {
    const auto bare = std::make_shared<Everything>();
    EXPECT_EQ(FoundationArchive::read(KeyedArchiver::archivedData(bare), everythingClass),
              objectsOf(everythingClass,
                        {{"Everything",
                          {"null", "null", "null", "null", "null", "0", "0", "0", "null"}}}));
    const auto object = KeyedUnarchiver::unarchive<Everything>(FoundationArchive::write(
        objectsOf(everythingClass, {{"Everything", {"null", "null", "null"}}})));
    ASSERT_TRUE(object);
    EXPECT_EQ(object->contents(), bare->contents());
}

TEST(FoundationTest, ReadsNoKeyThatWeDoNotWrite) {
    EXPECT_EQ(FoundationArchive::read(KeyedArchiver::archivedData(std::make_shared<Node>("a")),
                                      "class Node\ntext name\ntext missing\n"),
              "object 1 Node\ntext name =a\ntext missing missing\n");
}

TEST(FoundationTest, AgreesOnNumbers) {
    const std::pair<std::string, Number> table[] = {
        {"b1", Number::of(true)},
        {"b0", Number::of(false)},
        {"i0", Number::of(0)},
        {"i-1", Number::of(-1)},
        {"i255", Number::of(255)},
        {"i256", Number::of(256)},
        {"i65536", Number::of(65536)},
        {"i4294967295", Number::of(std::int64_t{4294967295})},
        {"i4294967296", Number::of(std::int64_t{4294967296})},
        {"i9007199254740993", Number::of(std::int64_t{9007199254740993})},
        {"d0.5", Number::of(0.5)},
        {"d-1.0000000000000001e+300", Number::of(-1e300)},
    };
    for (const auto& [text, number] : table) {
        const auto object = std::make_shared<Everything>();
        object->number = number;
        EXPECT_EQ(FoundationArchive::read(KeyedArchiver::archivedData(object),
                                          "class Everything\nnumber number\n"),
                  "object 1 Everything\nnumber number " + text + "\n");
        const auto again = KeyedUnarchiver::unarchive<Everything>(
            FoundationArchive::write("object 1 Everything\nnumber number " + text + "\n"));
        ASSERT_TRUE(again && again->number) << text;
        EXPECT_EQ(*again->number, number) << text;
        EXPECT_EQ(again->number->kind(), number.kind()) << text;
    }
}

TEST(FoundationTest, WritesMutableTextsAndURLsWithBasesThatWeRead) {
    const auto object = KeyedUnarchiver::unarchive<Everything>(
        FoundationArchive::write("object 1 Everything\n"
                                 "mutable-text text =caf%C3%A9\n"
                                 "url url =c/d%3Fe =https://kelo.example/a/b\n"));
    ASSERT_TRUE(object);
    EXPECT_EQ(object->text, "caf\u00e9");
    EXPECT_EQ(object->url, URL::parse("https://kelo.example/a/c/d?e"));
}

TEST(FoundationTest, AgreesOnKeysThatBeginWithADollar) {
    EXPECT_EQ(FoundationArchive::read(KeyedArchiver::archivedData(std::make_shared<Dollar>()),
                                      "class Dollar\ntext %24class\n"),
              "object 1 Dollar\ntext $class =a\n");
    const auto object = KeyedUnarchiver::unarchive<Dollar>(
        FoundationArchive::write("object 1 Dollar\ntext %24class =a\n"));
    ASSERT_TRUE(object);
    EXPECT_EQ(object->text, "a");
}

TEST(FoundationTest, AgreesOnGraphsOfObjects) {
    const auto root = std::make_shared<SpecialNode>("root");
    root->left = std::make_shared<Node>("shared");
    root->right = root->left;
    root->left->left = root;
    const std::string classes = nodeClass + "class SpecialNode:Node\n";
    std::string lines =
        objectsOf(nodeClass, {{"Node", {"=root", "2", "2"}}, {"Node", {"=shared", "1", "null"}}});
    lines.replace(lines.find("Node"), 4, "SpecialNode");
    EXPECT_EQ(FoundationArchive::read(KeyedArchiver::archivedData(root), classes), lines);
    root->left->left = nullptr;

    lines.replace(lines.find("SpecialNode"), 11, "SpecialNode:Node");
    const Data archive = FoundationArchive::write(lines);
    EXPECT_EQ(KeyedUnarchiver::rootClassName(archive), "SpecialNode");
    const auto again = KeyedUnarchiver::unarchive<Node>(archive);
    ASSERT_TRUE(again && again->left);
    EXPECT_EQ(again->name, "root");
    EXPECT_EQ(again->left, again->right);
    EXPECT_EQ(again->left->name, "shared");
    EXPECT_FALSE(again->left->left || again->left->right);
}

TEST(FoundationTest, AgreesOnAChainOfManyObjects) {
    const auto root = std::make_shared<Node>("0");
    std::vector<ObjectLines> objects = {{"Node", {"=0", "null", "2"}}};
    auto last = root;
    // Nearly as deep as we read.
    for (int number = 2; number <= 80; ++number) {
        const std::string name = std::to_string(number) + std::string(500, 'x');
        const std::string next = number == 80 ? "null" : std::to_string(number + 1);
        last->right = std::make_shared<Node>(name);
        last = last->right;
        objects.push_back({"Node", {"=" + name, "null", next}});
    }
    const std::string expected = objectsOf(nodeClass, objects);
    const Data archive = KeyedArchiver::archivedData(root);
    EXPECT_EQ(FoundationArchive::read(archive, nodeClass), expected);
    const auto again = KeyedUnarchiver::unarchive<Node>(FoundationArchive::write(expected));
    ASSERT_TRUE(again);
    EXPECT_EQ(FoundationArchive::read(KeyedArchiver::archivedData(again), nodeClass), expected);
}

TEST(FoundationTest, AgreesOnLists) {
    const auto first = std::make_shared<Node>("a");
    const auto second = std::make_shared<Node>("b");
    second->left = first;
    const std::string objects =
        objectsOf(nodeClass, {{"Node", {"=a", "null", "null"}}, {"Node", {"=b", "1", "null"}}});
    const Data ours = KeyedArchiver::archivedData(std::vector{first, second, first});
    EXPECT_EQ(FoundationArchive::read(ours, nodeClass), "list 1 2 1\n" + objects);
    for (const std::string list : {"list", "mutable-list"}) {
        const Data theirs = FoundationArchive::write(list + " 1 2 1\n" + objects);
        const auto again = KeyedUnarchiver::unarchiveList<Node>(theirs);
        ASSERT_TRUE(again && again->size() == 3) << list;
        EXPECT_EQ((*again)[0]->name, "a");
        EXPECT_EQ((*again)[1]->name, "b");
        EXPECT_EQ((*again)[1]->left, (*again)[0]);
        EXPECT_EQ((*again)[2], (*again)[0]);
    }
    EXPECT_EQ(FoundationArchive::read(
                  KeyedArchiver::archivedData(std::vector<std::shared_ptr<Node>>()), nodeClass),
              "list\n");
    const auto none = KeyedUnarchiver::unarchiveList<Node>(FoundationArchive::write("list\n"));
    EXPECT_TRUE(none && none->empty());
}

TEST(FoundationTest, RefusesWhatIsNoArchive) {
    EXPECT_THROW(FoundationArchive::read(Data("no archive"), nodeClass), std::runtime_error);
}

namespace {

/// The word for a kind in the Foundation's language, and what stands before its values.
struct KindWords {
    const char* word;
    const char* before;
};

KindWords wordsOf(Kind kind) {
    return std::map<Kind, KindWords>{
        {Kind::Text, {"text", "="}},     {Kind::Address, {"url", "="}},
        {Kind::Instant, {"date", ""}},   {Kind::NumberObject, {"number", "i"}},
        {Kind::Integer, {"int64", ""}},  {Kind::Real, {"double", ""}},
        {Kind::Flag, {"bool", ""}},      {Kind::Stretch, {"object", ""}},
        {Kind::Category, {"object", ""}}}
        .at(kind);
}

/// What a key holds where this is shown of it, in the same language.
std::string valueOf(Kind kind, const std::string& shown) {
    if (shown == absent) {
        return "null";
    }
    if (kind == Kind::Flag) {
        return shown == "true" ? "1" : "0";
    }
    const bool isObject = kind == Kind::Stretch || kind == Kind::Category;
    return wordsOf(kind).before + (isObject ? "2" : shown);
}

/// All models' classes. A range crosses to the Foundation as an object of the tests' own: it cannot
/// archive ranges.
std::string modelClasses() {
    std::string classes = rangeClass;
    for (const ArchivedModel& model : archivedModels()) {
        classes += "class " + model.className + "\n";
        for (const ArchivedKey& key : model.keys) {
            classes += wordsOf(key.kind).word + (" " + key.name + "\n");
        }
    }
    return classes;
}

/// A Foundation reads in our archive of an object what is shown of it, and writes an archive of
/// the same that we read as the same.
void expectAgreement(const ArchivedModel& model,
                     const std::function<bool(const ArchivedKey&)>& isThere) {
    const Lines shown = model.expected(isThere);
    std::vector<ObjectLines> objects = {{model.className, {}}};
    for (std::size_t at = 0; at < shown.size(); ++at) {
        const ArchivedKey& key = model.keys[at];
        objects[0].second.push_back(valueOf(key.kind, shown[at]));
        if (key.kind == Kind::Stretch) {
            const bool isEmpty = shown[at] == "0+0";
            objects.push_back({"NSValue", {"4", isEmpty ? "i0" : "i4", isEmpty ? "i0" : "i3"}});
        } else if (key.kind == Kind::Category && isThere(key)) {
            objects.push_back({"KLVenueCategory", {"=c", "=Cafe", "null"}});
        }
    }
    const std::string lines = objectsOf(modelClasses(), objects);
    const Data given = model.archive([&](ArchiveFile& file, const ArchivedKey& key) {
        return isThere(key) ? std::optional(entry(file, key)) : std::nullopt;
    });
    EXPECT_EQ(FoundationArchive::read(model.rewrite(given), modelClasses()), lines);
    const Data theirs = FoundationArchive::write(lines);
    EXPECT_EQ(model.read(theirs), shown);
    EXPECT_EQ(model.rewrite(theirs).text(), model.rewrite(given).text());
}

} // namespace

TEST(ModelFoundationTest, AgreesOnEveryModelWithAllItsKeys) {
    for (const ArchivedModel& model : archivedModels()) {
        SCOPED_TRACE(model.className);
        expectAgreement(model, [](const ArchivedKey&) { return true; });
    }
}

TEST(ModelFoundationTest, AgreesOnEveryModelWithNoMoreThanItNeeds) {
    for (const ArchivedModel& model : archivedModels()) {
        SCOPED_TRACE(model.className);
        // An instant that is the present one is another each time.
        expectAgreement(model, [](const ArchivedKey& key) {
            return key.missing == refused || key.missing == "now";
        });
    }
}

} // namespace KeloAPI::testing
