#include "PropertyListFile.hpp"
#include "PropertyListText.hpp"
#include "support/ArchivedModels.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace KeloAPI {

using testing::Everything;
using testing::Node;
using testing::PropertyListFile;
using testing::PropertyListText;
using testing::SpecialNode;

namespace {

using namespace std::chrono_literals;

std::string textOf(const Data& archive) {
    const auto list = PropertyListFile::read(std::string(archive.text()));
    return list ? PropertyListText::of(*list) : "malformed";
}

/// What stands around the objects of every archive.
std::string archiveOf(const std::string& objects, const std::string& root = "UID(1)") {
    return "{'$version': 100000, '$archiver': 'NSKeyedArchiver', '$top': {'root': " + root +
           "}, '$objects': ['$null'" + objects + "]}";
}

/// The entry of a class in the list of objects.
std::string classOf(const std::string& names) {
    const std::string first = names.substr(0, names.find(','));
    return ", {'$classname': " + first + ", '$classes': [" + names + ", 'NSObject']}";
}

class OtherKeys final : public Archivable {
public:
    explicit OtherKeys(std::vector<std::string> names)
        : keys(std::move(names)) {}
    std::vector<std::string> keys;
    std::vector<std::string_view> classes = {"OtherKeys"};

    std::vector<std::string_view> archivedClassNames() const override { return classes; }
    void encodeWithCoder(KeyedArchiver& coder) const override {
        for (const std::string& key : keys) {
            coder.encodeInt64(1, key);
        }
    }
};

} // namespace

TEST(KeyedArchiverTest, WritesEveryKindAsThePlatformDoes) {
    const auto object = std::make_shared<Everything>();
    object->text = "caf\u00e9";
    object->url = URL::parse("https://kelo.example/a?b#c");
    object->date = Date(std::chrono::sys_days(std::chrono::January / 2 / 2001)) + 500ms;
    object->number = Number::of(std::numeric_limits<std::uint64_t>::max());
    object->range = Range{3, 4};
    object->integer = -5;
    object->real = 1.5;
    object->flag = true;
    EXPECT_EQ(textOf(KeyedArchiver::archivedData(object)),
              archiveOf(", {'text': UID(2), 'url': UID(5), 'date': UID(7), 'number': UID(8), "
                        "'range': UID(12), 'integer': -5, 'real': real(1.5), 'flag': true, "
                        "'other': UID(0), '$class': UID(13)}, "
                        "'caf%C3%A9', 'https://kelo.example/a?b#c'" +
                        classOf("'NSURL'") +
                        ", {'NS.base': UID(0), 'NS.relative': UID(3), '$class': UID(4)}" +
                        classOf("'NSDate'") +
                        ", {'NS.time': real(86400.5), '$class': UID(6)}, "
                        "18446744073709551615, 3, 4" +
                        classOf("'NSValue'") +
                        ", {'NS.rangeval.length': UID(10), 'NS.rangeval.location': UID(9), "
                        "'NS.special': 4, '$class': UID(11)}" +
                        classOf("'Everything'")));
}

TEST(KeyedArchiverTest, WritesWhatIsAbsentAsNull) {
    EXPECT_EQ(textOf(KeyedArchiver::archivedData(std::make_shared<Everything>())),
              archiveOf(", {'text': UID(0), 'url': UID(0), 'date': UID(0), 'number': UID(0), "
                        "'range': UID(0), 'integer': 0, 'real': real(0), 'flag': false, "
                        "'other': UID(0), '$class': UID(2)}" +
                        classOf("'Everything'")));
    EXPECT_EQ(textOf(KeyedArchiver::archivedData(nullptr)), archiveOf("", "UID(0)"));
}

TEST(KeyedArchiverTest, WritesAnObjectOnceAndItsClassOnceInACircleToo) {
    const auto shared = std::make_shared<Node>("s");
    const auto root = std::make_shared<SpecialNode>("r");
    root->left = shared;
    root->right = shared;
    shared->left = root;
    EXPECT_EQ(textOf(KeyedArchiver::archivedData(root)),
              archiveOf(", {'name': UID(2), 'left': UID(3), 'right': UID(3), '$class': UID(4)}, 'r'"
                        ", {'name': UID(5), 'left': UID(1), 'right': UID(0), '$class': UID(6)}" +
                        classOf("'SpecialNode', 'Node'") + ", 's'" + classOf("'Node'")));
    shared->left = nullptr;
}

TEST(KeyedArchiverTest, WritesAChainOfAnyLength) {
    std::vector<std::shared_ptr<Node>> chain;
    for (int index = 0; index < 100000; ++index) {
        chain.push_back(std::make_shared<Node>("n"));
    }
    for (std::size_t index = 0; index + 1 < chain.size(); ++index) {
        chain[index]->left = chain[index + 1];
    }
    EXPECT_GT(KeyedArchiver::archivedData(chain.front()).size(), chain.size());
    for (const auto& node : chain) {
        node->left = nullptr;
    }
}

TEST(KeyedArchiverTest, KeepsItsOwnKeysApartFromAModels) {
    const auto object = std::make_shared<OtherKeys>(std::vector<std::string>{"$class", "$$a", ""});
    EXPECT_EQ(
        textOf(KeyedArchiver::archivedData(object)),
        archiveOf(", {'$$class': 1, '$$$a': 1, '': 1, '$class': UID(2)}" + classOf("'OtherKeys'")));
}

TEST(KeyedArchiverTest, EndsTheProcessOverAKeyThatIsUsedTwiceAndAnObjectWithoutClass) {
    const auto object = std::make_shared<OtherKeys>(std::vector<std::string>{"a", "b", "a"});
    EXPECT_DEATH(KeyedArchiver::archivedData(object), "a key is encoded twice in one object");
    object->keys = {};
    object->classes = {};
    EXPECT_DEATH(KeyedArchiver::archivedData(object), "an archivable object without a class name");
}

} // namespace KeloAPI
