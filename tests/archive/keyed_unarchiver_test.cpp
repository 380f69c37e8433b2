#include "support/ArchivedModels.hpp"
#include "support/ArchiveFile.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <tuple>

namespace KeloAPI {

using testing::ArchiveFile;
using testing::Everything;
using testing::Node;
using testing::ReadOnly;
using testing::referenceDate;
using testing::SpecialNode;

namespace {

using namespace std::chrono_literals;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr auto int64Max = std::numeric_limits<std::int64_t>::max();

/// What is read where an `Everything` has this one entry.
std::shared_ptr<Everything>
everythingWith(const std::string& key,
               const std::function<PropertyList::Reference(ArchiveFile&)>& entry) {
    ArchiveFile file;
    const auto root = file.instance("Everything", {{key, entry(file)}});
    return KeyedUnarchiver::unarchive<Everything>(file.bytes(root));
}

std::shared_ptr<Everything> everything(const std::string& key, const PropertyList::Value& value) {
    return everythingWith(key, [&](ArchiveFile& file) { return file.value(value); });
}

std::shared_ptr<Everything> everythingReferring(const std::string& key,
                                                const PropertyList::Value& value) {
    return everythingWith(key, [&](ArchiveFile& file) { return file.object(file.value(value)); });
}

/// What is read where the entry is an object of this class, whether its values stand in it or are
/// referred to.
std::shared_ptr<Everything>
everythingHolding(const std::string& key, const std::string& className,
                  const std::vector<std::pair<std::string, PropertyList::Value>>& values,
                  const std::string& superclass = "NSObject") {
    const auto read = [&](bool refers) {
        return everythingWith(key, [&](ArchiveFile& file) {
            ArchiveFile::Entries entries;
            for (const auto& [name, value] : values) {
                const auto place = file.value(value);
                entries.emplace_back(name, refers ? file.object(place) : place);
            }
            return file.instance(className, entries, superclass);
        });
    };
    EXPECT_EQ(read(false)->contents(), read(true)->contents());
    return read(false);
}

template <class T>
std::shared_ptr<T> copyOf(const std::shared_ptr<T>& object) {
    return KeyedUnarchiver::unarchive<T>(KeyedArchiver::archivedData(object));
}

template <class T>
concept Unarchived = requires(const Data& archive) {
    KeyedUnarchiver::unarchive<T>(archive);
};
static_assert(!Unarchived<ReadOnly>, "it has no initialiser");
static_assert(Unarchived<Everything>);

/// Reads an inner object before a text of its own.
struct InnerFirst final : ReadOnly {
    std::string text;
    static std::shared_ptr<InnerFirst> initWithCoder(KeyedUnarchiver& coder) {
        auto object = std::make_shared<InnerFirst>();
        const auto inner = coder.decodeObject<Everything>("other");
        object->text = (inner ? inner->text.value_or("-") : "none") + "," +
                       coder.decodeText("text").value_or("-");
        EXPECT_TRUE(coder.containsValue("text"));
        EXPECT_TRUE(coder.containsValue("flag"));
        EXPECT_TRUE(coder.containsValue("url")) << "null is a value";
        EXPECT_FALSE(coder.containsValue("missing"));
        EXPECT_FALSE(coder.containsValue("$class")) << "the archive's own key, not a model's";
        return object;
    }
};

struct Special final : ReadOnly {
    static constexpr std::string_view archivedClassName = "SpecialNode";
    static std::shared_ptr<Special> initWithCoder(KeyedUnarchiver& /*coder*/) {
        return std::make_shared<Special>();
    }
};

} // namespace

TEST(KeyedUnarchiverTest, RestoresEveryKind) {
    std::mt19937_64 random(1);
    for (int round = 0; round < 500; ++round) {
        const auto object = std::make_shared<Everything>();
        object->text = std::string(random() % 30, 'x') + "\U0001F600\n";
        object->url = URL::parse("https://kelo.example/" + std::to_string(random()));
        // Four hundred years around now, to the microsecond.
        object->date = Date(std::chrono::microseconds(
            static_cast<std::int64_t>(random() % 6'000'000'000'000'000) - 1'000'000'000'000'000));
        object->number = round % 3 == 0   ? Number::of(random())
                         : round % 3 == 1 ? Number::of(-static_cast<std::int64_t>(random() >> 1U))
                                          : Number::of(std::ldexp(1.0 + round, round - 250));
        object->range = Range{static_cast<std::int64_t>(random() >> 2U),
                              static_cast<std::int64_t>(random() >> 2U)};
        object->integer = static_cast<std::int64_t>(random());
        object->real = std::ldexp(static_cast<double>(random()), round - 300);
        object->flag = random() % 2 == 1;
        object->other = round % 2 == 0 ? std::make_shared<Everything>() : nullptr;
        const auto again = copyOf(object);
        ASSERT_TRUE(again);
        EXPECT_EQ(again->contents(), object->contents());
        ASSERT_EQ(again->other != nullptr, object->other != nullptr);
        if (again->other) {
            EXPECT_EQ(again->other->contents(), Everything().contents());
            EXPECT_FALSE(again->other->other);
        }
    }
}

TEST(KeyedUnarchiverTest, RestoresTheKindsOfNumbers) {
    const std::pair<Number, Number::Kind> table[] = {
        {Number::of(true), Number::Kind::Boolean},
        {Number::of(1), Number::Kind::Signed},
        {Number::of(std::uint64_t{1}), Number::Kind::Signed},
        {Number::of(std::uint64_t{1} << 63U), Number::Kind::Unsigned},
        {Number::of(1.0), Number::Kind::Double},
    };
    for (const auto& [number, kind] : table) {
        const auto object = std::make_shared<Everything>();
        object->number = number;
        const auto again = copyOf(object);
        ASSERT_TRUE(again && again->number);
        EXPECT_EQ(again->number->kind(), kind);
        EXPECT_EQ(*again->number, number);
    }
}

TEST(KeyedUnarchiverTest, HasDefaultsForWhatIsMissingOrOfAnotherKind) {
    const std::string keys[] = {"text", "url",     "date", "number", "range",
                                "real", "integer", "flag", "other"};
    const PropertyList::Value values[] = {
        PropertyList::Null{},       Number::of(7),           PropertyList::Date{1},
        PropertyList::Data{"abc"},  std::string("a"),        PropertyList::UID{0},
        PropertyList::UID{9999},    PropertyList::Array{},   PropertyList::Set{},
        PropertyList::Dictionary{}, PropertyList::UID{~0ULL}};
    for (const std::string& key : keys) {
        for (const auto& value : values) {
            for (const auto& object : {everything(key, value), everythingReferring(key, value)}) {
                ASSERT_TRUE(object) << key;
                Everything expected;
                if (const auto* text = std::get_if<std::string>(&value); text && key == "text") {
                    expected.text = *text;
                }
                if (std::holds_alternative<PropertyList::Date>(value) && key == "date") {
                    expected.date = referenceDate + 1s;
                }
                if (const auto* number = std::get_if<Number>(&value)) {
                    expected.number = key == "number" ? std::optional(*number) : std::nullopt;
                    expected.integer = key == "integer" ? 7 : 0;
                    expected.real = key == "real" ? 7 : 0;
                    expected.flag = key == "flag";
                }
                EXPECT_EQ(object->contents(), expected.contents()) << key;
                EXPECT_FALSE(object->other) << key;
            }
        }
    }
}

TEST(KeyedUnarchiverTest, ReadsScalarsFromAnyNumber) {
    const std::tuple<Number, std::int64_t, double, bool> table[] = {
        {Number::of(5), 5, 5.0, true},
        {Number::of(-2.9), -2, -2.9, true},
        {Number::of(1e300), int64Max, 1e300, true},
        {Number::of(true), 1, 1.0, true},
        {Number::of(0.0), 0, 0.0, false},
    };
    for (const auto& [number, integer, real, flag] : table) {
        for (const auto& read : {everything, everythingReferring}) {
            EXPECT_EQ(read("integer", number)->integer, integer);
            EXPECT_EQ(read("real", number)->real, real);
            EXPECT_EQ(read("flag", number)->flag, flag);
        }
    }
}

TEST(KeyedUnarchiverTest, ReadsDatesOfEveryForm) {
    const auto at = [](Number seconds) {
        const auto plain = everythingReferring("date", PropertyList::Date{seconds.doubleValue()});
        EXPECT_EQ(plain->date, everythingHolding("date", "NSDate", {{"NS.time", seconds}})->date);
        return plain->date;
    };
    EXPECT_EQ(at(Number::of(0)), referenceDate);
    EXPECT_EQ(at(Number::of(60)), referenceDate + 1min);
    EXPECT_EQ(at(Number::of(-0.5)), referenceDate - 500ms);
    EXPECT_EQ(at(Number::of(0.0000005)), referenceDate + 1us);
    EXPECT_EQ(at(Number::of(0.9999999)), referenceDate + 1s);
    EXPECT_EQ(at(Number::of(521692800.123456)), referenceDate + 521692800s + 123456us);
    EXPECT_EQ(at(Number::of(63113904000.0)),
              Date(std::chrono::sys_days(std::chrono::January / 1 / 4001)));
    EXPECT_TRUE(at(Number::of(-9.2e12)));
    EXPECT_TRUE(at(Number::of(9.2e12)));
    for (const double beyond : {9.3e12, -9.3e12, 1e300, -1e300, infinity, -infinity, notANumber}) {
        EXPECT_FALSE(at(Number::of(beyond))) << beyond;
    }
}

TEST(KeyedUnarchiverTest, ReadsTextsOfEveryForm) {
    struct Row {
        const char* className;
        const char* key;
        PropertyList::Value value;
        std::optional<std::string> expected;
    };
    const Row table[] = {
        {"NSString", "NS.string", std::string("a"), "a"},
        {"NSMutableString", "NS.string", std::string("a"), "a"},
        {"NSString", "NS.bytes", PropertyList::Data{"\xC3\xA9"}, "\u00e9"},
        {"NSString", "NS.bytes", PropertyList::Data{"\xC3"}, {}},
        {"NSString", "NS.bytes", std::string("a"), {}},
        {"NSString", "NS.string", Number::of(1), {}},
        {"NSString", "other", std::string("a"), {}},
        {"NSDate", "NS.string", std::string("a"), {}},
    };
    for (const Row& row : table) {
        const bool isMutable = row.className == std::string("NSMutableString");
        const auto object = everythingHolding("text", row.className, {{row.key, row.value}},
                                              isMutable ? "NSString" : "NSObject");
        EXPECT_EQ(object->text, row.expected) << row.className << ' ' << row.key;
    }
}

TEST(KeyedUnarchiverTest, ReadsURLsWithAndWithoutBase) {
    using Parts = std::vector<std::string>;
    const std::pair<Parts, std::optional<std::string>> table[] = {
        {{"https://a.example/b#c"}, "https://a.example/b#c"},
        {{"relative"}, "relative"},
        {{""}, ""},
        {{"no url"}, {}},
        {{"https://a.example/b/", "c?d#e"}, "https://a.example/b/c?d#e"},
        {{"https://a.example/b/c", "../d"}, "https://a.example/d"},
        {{"https://a.example/b", "https://c.example/"}, "https://c.example/"},
        {{"no url", "c"}, {}},
        {{"https://a.example/", "b/", "c/", "d/", "e"}, "https://a.example/b/c/d/e"},
        {{"https://a.example/", "b/", "c/", "d/", "e/", "f"}, {}},
    };
    for (const auto& [parts, expected] : table) {
        const auto object = everythingWith("url", [&parts = parts](ArchiveFile& file) {
            auto base = file.uid(0);
            for (const std::string& part : parts) {
                base = file.instance(
                    "NSURL", {{"NS.base", base}, {"NS.relative", file.object(file.text(part))}});
            }
            return base;
        });
        EXPECT_EQ(object->url.has_value(), expected.has_value()) << parts.back();
        EXPECT_EQ(object->url.value_or(URL::empty()).absoluteString(), expected.value_or(""));
    }
    const auto circle = everythingWith("url", [](ArchiveFile& file) {
        return file.instance("NSURL", {{"NS.base", file.uid(file.objects.size() + 1)},
                                       {"NS.relative", file.text("a")}});
    });
    EXPECT_FALSE(circle->url);
}

TEST(KeyedUnarchiverTest, ReadsRangesThatCanBe) {
    struct Row {
        Number special;
        Number location;
        Number length;
        std::optional<Range> expected;
    };
    const Number four = Number::of(4);
    const Number most = Number::of(int64Max);
    const Row table[] = {
        {four, Number::of(1), Number::of(2), Range{1, 2}},
        {four, most, Number::of(0), Range{int64Max, 0}},
        {four, most, Number::of(1), {}},
        {four, most, most, {}},
        {four, Number::of(std::uint64_t{1} << 63U), Number::of(0), {}},
        {four, Number::of(-1), Number::of(2), {}},
        {four, Number::of(1), Number::of(-2), {}},
        {four, Number::of(1.5), Number::of(2), {}},
        {Number::of(1), Number::of(1), Number::of(2), {}},
    };
    for (const Row& row : table) {
        const auto object = everythingHolding("range", "NSValue",
                                              {{"NS.special", row.special},
                                               {"NS.rangeval.location", row.location},
                                               {"NS.rangeval.length", row.length}});
        EXPECT_EQ(object->range, row.expected) << row.location.stringValue();
    }
}

TEST(KeyedUnarchiverTest, GivesTheSameObjectEachTimeAndNullWhereACircleCloses) {
    const auto root = std::make_shared<Node>("r");
    root->left = root->right = std::make_shared<Node>("s");
    root->left->left = root;
    root->left->right = root->left;
    const auto again = copyOf(root);
    root->left->left = root->left->right = nullptr;
    ASSERT_TRUE(again && again->left);
    EXPECT_EQ(again->left, again->right);
    EXPECT_EQ(again->left->name, "s");
    EXPECT_FALSE(again->left->left || again->left->right);
}

TEST(KeyedUnarchiverTest, TellsTheClassOfTheRootAndTakesASubclassForItsClass) {
    const Data special = KeyedArchiver::archivedData(std::make_shared<SpecialNode>("s"));
    EXPECT_EQ(KeyedUnarchiver::rootClassName(special), "SpecialNode");
    EXPECT_TRUE(KeyedUnarchiver::unarchive<Node>(special));
    EXPECT_FALSE(KeyedUnarchiver::unarchive<Everything>(special));
    const Data node = KeyedArchiver::archivedData(std::make_shared<Node>("n"));
    EXPECT_FALSE(KeyedUnarchiver::unarchive<Special>(node)) << "not the other way round";
    for (const Data& none : {KeyedArchiver::archivedData(nullptr), Data(), Data("no archive")}) {
        EXPECT_EQ(KeyedUnarchiver::rootClassName(none), std::nullopt);
    }
}

TEST(KeyedUnarchiverTest, TellsAnObjectsOwnKeysFromThoseOfAnInnerOne) {
    const auto root = std::make_shared<Everything>();
    root->other = std::make_shared<Everything>();
    root->other->text = "inner";
    root->text = "outer";
    const auto again = KeyedUnarchiver::unarchive<InnerFirst>(KeyedArchiver::archivedData(root));
    ASSERT_TRUE(again);
    EXPECT_EQ(again->text, "inner,outer");
}

TEST(KeyedUnarchiverTest, PassesOverTheModuleOfAClass) {
    for (const char* name : {"Everything", "KeloAPI.Everything", "a.b.Everything"}) {
        ArchiveFile file;
        const Data archive = file.bytes(file.instance(name, {{"integer", file.number(7)}}));
        EXPECT_EQ(KeyedUnarchiver::rootClassName(archive), "Everything");
        const auto object = KeyedUnarchiver::unarchive<Everything>(archive);
        ASSERT_TRUE(object) << name;
        EXPECT_EQ(object->integer, 7);
        EXPECT_FALSE(KeyedUnarchiver::unarchive<Node>(archive));
    }
    for (const char* name : {"KeloAPI.", "Everything.KeloAPI", "KeloAPIEverything", "."}) {
        ArchiveFile file;
        EXPECT_FALSE(KeyedUnarchiver::unarchive<Everything>(file.bytes(file.instance(name, {}))))
            << name;
    }
}

} // namespace KeloAPI
