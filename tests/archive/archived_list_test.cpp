#include "PropertyListFile.hpp"
#include "PropertyListText.hpp"
#include "support/ArchivedModels.hpp"
#include "support/ArchiveFile.hpp"

#include <gtest/gtest.h>

#include <functional>

namespace KeloAPI {

using testing::ArchiveFile;
using testing::Node;
using testing::PropertyListFile;
using testing::PropertyListText;
using testing::SpecialNode;

namespace {

using Nodes = std::vector<std::shared_ptr<Node>>;
using Reference = PropertyList::Reference;

std::optional<Nodes> nodesIn(const Data& archive) {
    return KeyedUnarchiver::unarchiveList<Node>(archive);
}

Reference nodeIn(ArchiveFile& file) {
    return file.instance("Node", {{"name", file.object(file.text("n"))}});
}

/// A list of these elements, of the platform's class or of another.
Data listOf(ArchiveFile& file, const std::vector<Reference>& elements,
            const std::string& className = "NSArray", const std::string& superclass = "NSObject") {
    return file.bytes(file.instance(className, {{"NS.objects", file.array(elements)}}, superclass));
}

} // namespace

TEST(ArchivedListTest, IsWrittenAsThePlatformDoes) {
    const auto first = std::make_shared<Node>("a");
    const auto second = std::make_shared<Node>("b");
    second->left = first;
    const auto list = PropertyListFile::read(
        std::string(KeyedArchiver::archivedData(Nodes{first, second, first}).text()));
    ASSERT_TRUE(list);
    EXPECT_EQ(PropertyListText::of(*list),
              "{'$version': 100000, '$archiver': 'NSKeyedArchiver', '$top': {'root': UID(1)}, "
              "'$objects': ['$null', "
              "{'NS.objects': [UID(2), UID(3), UID(2)], '$class': UID(4)}, "
              "{'name': UID(5), 'left': UID(0), 'right': UID(0), '$class': UID(6)}, "
              "{'name': UID(7), 'left': UID(2), 'right': UID(0), '$class': UID(6)}, "
              "{'$classname': 'NSArray', '$classes': ['NSArray', 'NSObject']}, "
              "'a', {'$classname': 'Node', '$classes': ['Node', 'NSObject']}, 'b']}");
}

TEST(ArchivedListTest, IsRestoredWithWhatItsObjectsShare) {
    const auto first = std::make_shared<Node>("a");
    const std::vector<std::shared_ptr<SpecialNode>> special = {std::make_shared<SpecialNode>("b"),
                                                               std::make_shared<SpecialNode>("c")};
    special[0]->left = first;
    special[1]->left = first;
    const auto again =
        nodesIn(KeyedArchiver::archivedData(Nodes{first, special[0], special[1], special[0]}));
    ASSERT_TRUE(again && again->size() == 4);
    EXPECT_EQ((*again)[0]->name, "a");
    EXPECT_EQ((*again)[1]->name, "b");
    EXPECT_EQ((*again)[2]->name, "c");
    EXPECT_EQ((*again)[3], (*again)[1]);
    EXPECT_EQ((*again)[1]->left, (*again)[0]);
    EXPECT_EQ((*again)[2]->left, (*again)[0]);
    // A list of another class of pointers is archived as well, and read as one of the base class.
    const auto ofSpecial = nodesIn(KeyedArchiver::archivedData(special));
    ASSERT_TRUE(ofSpecial && ofSpecial->size() == 2);
    EXPECT_EQ(ofSpecial->back()->name, "c");
    const std::vector<std::shared_ptr<const Archivable>> ofAny = {first};
    EXPECT_EQ(nodesIn(KeyedArchiver::archivedData(ofAny)).value_or(Nodes()).size(), 1U);
}

TEST(ArchivedListTest, MayBeEmpty) {
    const Data archive = KeyedArchiver::archivedData(Nodes());
    EXPECT_EQ(nodesIn(archive), Nodes());
    EXPECT_EQ(KeyedUnarchiver::rootClassName(archive), "NSArray");
}

TEST(ArchivedListTest, MayBeMutable) {
    ArchiveFile file;
    const Data archive = listOf(file, {nodeIn(file)}, "NSMutableArray", "NSArray");
    EXPECT_EQ(nodesIn(archive).value_or(Nodes()).size(), 1U);
    EXPECT_EQ(KeyedUnarchiver::rootClassName(archive), "NSMutableArray");
}

TEST(ArchivedListTest, IsNoObjectAndAnObjectIsNoList) {
    const auto node = std::make_shared<Node>("a");
    EXPECT_FALSE(KeyedUnarchiver::unarchive<Node>(KeyedArchiver::archivedData(Nodes{node})));
    for (const Data& none :
         {KeyedArchiver::archivedData(node), KeyedArchiver::archivedData(std::shared_ptr<Node>()),
          Data(), Data("no archive")}) {
        EXPECT_FALSE(nodesIn(none));
    }
}

TEST(ArchivedListTest, IsRefusedOverOneElementThatIsNotOfTheClass) {
    const std::pair<std::string, std::function<Reference(ArchiveFile&)>> table[] = {
        {"another class", [](auto& file) { return file.instance("Everything", {}); }},
        {"one that the class refuses", [](auto& file) { return file.instance("Node", {}); }},
        {"null", [](auto& file) { return file.uid(0); }},
        {"beyond the objects", [](auto& file) { return file.uid(99); }},
        {"a class", [](auto& file) { return file.classNamed("Node"); }},
        {"a text", [](auto& file) { return file.object(file.text("n")); }},
        {"what is no reference", [](auto& file) { return file.text("n"); }},
        {"the list itself", [](auto& file) { return file.uid(file.objects.size() + 1); }},
    };
    for (const auto& [what, element] : table) {
        ArchiveFile file;
        const auto good = nodeIn(file);
        const auto bad = element(file);
        EXPECT_FALSE(nodesIn(listOf(file, {good, bad}))) << what;
    }
    ArchiveFile file;
    EXPECT_TRUE(nodesIn(listOf(file, {nodeIn(file)})));
}

TEST(ArchivedListTest, IsRefusedWhereItIsNoList) {
    const std::pair<std::string, std::function<Reference(ArchiveFile&)>> table[] = {
        {"no objects", [](auto& file) { return file.instance("NSArray", {}); }},
        {"objects that are no array",
         [](auto& file) {
             return file.instance("NSArray", {{"NS.objects", file.text("n")}});
         }},
        {"another class",
         [](auto& file) {
             return file.instance("NSSet", {{"NS.objects", file.array({})}});
         }},
        {"no class",
         [](auto& file) {
             return file.object(file.dictionary({{"NS.objects", file.array({})}}));
         }},
        {"a plain array", [](auto& file) { return file.object(file.array({})); }},
    };
    for (const auto& [what, root] : table) {
        ArchiveFile file;
        EXPECT_FALSE(nodesIn(file.bytes(root(file)))) << what;
    }
}

TEST(ArchivedListTest, HasNoMoreElementsThanAFileMayHaveValues) {
    const auto ofLength = [](std::size_t length) {
        ArchiveFile file;
        const auto node = nodeIn(file);
        return listOf(file, std::vector<Reference>(length, node));
    };
    EXPECT_EQ(nodesIn(ofLength(BinaryPropertyList::maxValues)).value_or(Nodes()).size(),
              BinaryPropertyList::maxValues);
    EXPECT_FALSE(nodesIn(ofLength(BinaryPropertyList::maxValues + 1)));
}

TEST(ArchivedListTest, EndsTheProcessOverANullPointer) {
    EXPECT_DEATH(KeyedArchiver::archivedData(Nodes{nullptr}),
                 "a list to be archived holds a null pointer");
}

} // namespace KeloAPI
