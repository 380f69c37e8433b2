#include "support/ArchivedModels.hpp"
#include "support/ArchiveFile.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>

namespace KeloAPI {

using testing::ArchiveFile;
using testing::Everything;
using testing::Node;
using testing::SpecialNode;

namespace {

using namespace std::chrono_literals;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr auto int64Max = std::numeric_limits<std::int64_t>::max();

/// What is read where an `Everything` has this one entry.
std::shared_ptr<Everything>
everything(const std::string& key,
           const std::function<PropertyList::Reference(ArchiveFile&)>& entry) {
    ArchiveFile file;
    const auto root = file.instance("Everything", {{key, entry(file)}});
    return KeyedUnarchiver::unarchive<Everything>(file.bytes(root));
}

std::shared_ptr<Everything> everything(const std::string& key, const PropertyList::Value& value) {
    return everything(key, [&](ArchiveFile& file) { return file.value(value); });
}

std::shared_ptr<Everything> everythingReferring(const std::string& key,
                                                const PropertyList::Value& value) {
    return everything(key, [&](ArchiveFile& file) { return file.object(file.value(value)); });
}

std::shared_ptr<Everything> copyOf(const std::shared_ptr<Everything>& object) {
    return KeyedUnarchiver::unarchive<Everything>(KeyedArchiver::archivedData(object));
}

struct Asking final : Archivable {
    static constexpr std::string_view archivedClassName = "Everything";
    std::vector<std::string_view> archivedClassNames() const override { return {}; }
    void encodeWithCoder(KeyedArchiver& /*coder*/) const override {}
    static std::shared_ptr<Asking> initWithCoder(KeyedUnarchiver& coder) {
        EXPECT_TRUE(coder.containsValue("text"));
        EXPECT_TRUE(coder.containsValue("flag"));
        EXPECT_FALSE(coder.containsValue("missing"));
        // The archive's own key, not a model's.
        EXPECT_FALSE(coder.containsValue("$class"));
        return std::make_shared<Asking>();
    }
};

/// As far as an archived class goes without an initialiser.
struct Uninitialised : Archivable {
    static constexpr std::string_view archivedClassName = "Everything";
    std::vector<std::string_view> archivedClassNames() const override { return {}; }
    void encodeWithCoder(KeyedArchiver& /*coder*/) const override {}
};
struct Initialised final : Uninitialised {
    static std::shared_ptr<Initialised> initWithCoder(KeyedUnarchiver& coder);
};

template <class T>
concept Unarchived = requires(const Data& archive) {
    KeyedUnarchiver::unarchive<T>(archive);
};
static_assert(!Unarchived<Uninitialised>);
static_assert(Unarchived<Initialised>);

struct InnerFirst final : Archivable {
    static constexpr std::string_view archivedClassName = "Everything";
    std::optional<std::string> text;
    std::vector<std::string_view> archivedClassNames() const override { return {}; }
    void encodeWithCoder(KeyedArchiver& /*coder*/) const override {}
    static std::shared_ptr<InnerFirst> initWithCoder(KeyedUnarchiver& coder) {
        auto object = std::make_shared<InnerFirst>();
        const auto inner = coder.decodeObject<Everything>("other");
        object->text = (inner ? inner->text.value_or("-") : "none") + "," +
                       coder.decodeText("text").value_or("-");
        return object;
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
        EXPECT_EQ(again->text, object->text);
        EXPECT_EQ(again->url, object->url);
        EXPECT_EQ(again->date, object->date);
        EXPECT_EQ(again->number, object->number);
        EXPECT_EQ(again->range, object->range);
        EXPECT_EQ(again->integer, object->integer);
        EXPECT_EQ(again->real, object->real);
        EXPECT_EQ(again->flag, object->flag);
        ASSERT_EQ(again->other != nullptr, object->other != nullptr);
        if (again->other) {
            EXPECT_FALSE(again->other->text || again->other->url || again->other->date ||
                         again->other->number || again->other->range || again->other->other);
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

TEST(KeyedUnarchiverTest, HasDefaultsForWhatIsMissing) {
    ArchiveFile file;
    const auto object =
        KeyedUnarchiver::unarchive<Everything>(file.bytes(file.instance("Everything", {})));
    ASSERT_TRUE(object);
    EXPECT_FALSE(object->text || object->url || object->date || object->number || object->range ||
                 object->other);
    EXPECT_EQ(object->integer, 0);
    EXPECT_EQ(object->real, 0);
    EXPECT_FALSE(object->flag);
}

TEST(KeyedUnarchiverTest, TakesValuesOfOtherKindsAsMissing) {
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
                const bool isNumber = std::holds_alternative<Number>(value);
                EXPECT_EQ(object->text.has_value(),
                          key == "text" && std::holds_alternative<std::string>(value));
                EXPECT_EQ(object->date.has_value(),
                          key == "date" && std::holds_alternative<PropertyList::Date>(value));
                EXPECT_EQ(object->number.has_value(), key == "number" && isNumber);
                EXPECT_EQ(object->integer, key == "integer" && isNumber ? 7 : 0);
                EXPECT_EQ(object->real, key == "real" && isNumber ? 7 : 0);
                EXPECT_EQ(object->flag, key == "flag" && isNumber);
                EXPECT_FALSE(object->url || object->range || object->other) << key;
            }
        }
    }
}

TEST(KeyedUnarchiverTest, ReadsScalarsFromAnyNumber) {
    EXPECT_EQ(everything("integer", Number::of(-2.9))->integer, -2);
    EXPECT_EQ(everything("integer", Number::of(1e300))->integer, int64Max);
    EXPECT_EQ(everything("integer", Number::of(true))->integer, 1);
    EXPECT_EQ(everythingReferring("integer", Number::of(5))->integer, 5);
    EXPECT_EQ(everything("real", Number::of(3))->real, 3.0);
    EXPECT_EQ(everything("real", Number::of(true))->real, 1.0);
    EXPECT_TRUE(everything("flag", Number::of(2))->flag);
    EXPECT_TRUE(everythingReferring("flag", Number::of(true))->flag);
    EXPECT_FALSE(everything("flag", Number::of(0.0))->flag);
}

TEST(KeyedUnarchiverTest, ReadsDatesOfBothForms) {
    const auto at = [](double seconds) -> std::optional<Date> {
        const auto plain = everythingReferring("date", PropertyList::Date{seconds});
        const auto object = everything("date", [&](ArchiveFile& file) {
            return file.instance("NSDate", {{"NS.time", file.value(Number::of(seconds))}});
        });
        EXPECT_EQ(plain->date, object->date) << seconds;
        return object->date;
    };
    const Date start = std::chrono::sys_days(std::chrono::January / 1 / 2001);
    EXPECT_EQ(at(0), start);
    EXPECT_EQ(at(-0.5), start - 500ms);
    EXPECT_EQ(at(0.0000005), start + 1us);
    EXPECT_EQ(at(0.9999999), start + 1s);
    EXPECT_EQ(at(521692800.123456), start + 521692800s + 123456us);
    EXPECT_EQ(at(63113904000.0), Date(std::chrono::sys_days(std::chrono::January / 1 / 4001)));
    EXPECT_TRUE(at(-9.2e12));
    EXPECT_TRUE(at(9.2e12));
    for (const double beyond : {9.3e12, -9.3e12, 1e300, -1e300, infinity, -infinity, notANumber}) {
        EXPECT_FALSE(at(beyond)) << beyond;
    }
}

TEST(KeyedUnarchiverTest, ReadsDatesWhoseTimeIsAnInteger) {
    const auto object = everything("date", [](ArchiveFile& file) {
        return file.instance("NSDate", {{"NS.time", file.object(file.number(60))}});
    });
    EXPECT_EQ(object->date, Date(std::chrono::sys_days(std::chrono::January / 1 / 2001)) + 1min);
}

TEST(KeyedUnarchiverTest, ReadsTextsOfEveryForm) {
    const auto text = [](const std::string& className, const std::string& key,
                         const PropertyList::Value& value, bool refers) {
        return everything("text",
                          [&](ArchiveFile& file) {
                              const auto inner = file.value(value);
                              return file.instance(className,
                                                   {{key, refers ? file.object(inner) : inner}});
                          })
            ->text;
    };
    EXPECT_EQ(text("NSString", "NS.string", std::string("a"), false), "a");
    EXPECT_EQ(text("NSString", "NS.string", std::string("a"), true), "a");
    EXPECT_EQ(text("NSString", "NS.bytes", PropertyList::Data{"\xC3\xA9"}, false), "\u00e9");
    EXPECT_EQ(text("NSString", "NS.bytes", PropertyList::Data{"\xC3\xA9"}, true), "\u00e9");
    EXPECT_FALSE(text("NSString", "NS.bytes", PropertyList::Data{"\xC3"}, false));
    EXPECT_FALSE(text("NSString", "NS.bytes", std::string("a"), false));
    EXPECT_FALSE(text("NSString", "NS.string", Number::of(1), false));
    EXPECT_FALSE(text("NSString", "other", std::string("a"), false));
    EXPECT_FALSE(text("NSDate", "NS.string", std::string("a"), false));
    const auto mutableText = everything("text", [](ArchiveFile& file) {
        const auto classEntry = file.object(file.dictionary(
            {{"$classname", file.text("NSMutableString")},
             {"$classes", file.array({file.text("NSMutableString"), file.text("NSString")})}}));
        return file.object(
            file.dictionary({{"NS.string", file.text("a")}, {"$class", classEntry}}));
    });
    EXPECT_EQ(mutableText->text, "a");
}

TEST(KeyedUnarchiverTest, ReadsURLsWithAndWithoutBase) {
    const auto url = [](const std::vector<std::string>& parts) -> std::optional<std::string> {
        const auto object = everything("url", [&](ArchiveFile& file) {
            auto base = file.uid(0);
            for (const std::string& part : parts) {
                base = file.instance(
                    "NSURL", {{"NS.base", base}, {"NS.relative", file.object(file.text(part))}});
            }
            return base;
        });
        return object->url ? std::optional(object->url->absoluteString()) : std::nullopt;
    };
    EXPECT_EQ(url({"https://a.example/b#c"}), "https://a.example/b#c");
    EXPECT_EQ(url({"relative"}), "relative");
    EXPECT_EQ(url({""}), "");
    EXPECT_EQ(url({"no url"}), std::nullopt);
    EXPECT_EQ(url({"https://a.example/b/", "c?d#e"}), "https://a.example/b/c?d#e");
    EXPECT_EQ(url({"https://a.example/b/c", "../d"}), "https://a.example/d");
    EXPECT_EQ(url({"https://a.example/b", "https://c.example/"}), "https://c.example/");
    EXPECT_EQ(url({"no url", "c"}), std::nullopt);
    EXPECT_EQ(url({"https://a.example/", "b/", "c/", "d/", "e"}), "https://a.example/b/c/d/e");
    EXPECT_EQ(url({"https://a.example/", "b/", "c/", "d/", "e/", "f"}), std::nullopt);
    const auto circle = everything("url", [](ArchiveFile& file) {
        return file.instance("NSURL", {{"NS.base", file.uid(file.objects.size() + 1)},
                                       {"NS.relative", file.text("a")}});
    });
    EXPECT_FALSE(circle->url);
}

TEST(KeyedUnarchiverTest, ReadsRangesThatCanBe) {
    const auto range = [](Number special, Number location, Number length, bool refers) {
        return everything("range",
                          [&](ArchiveFile& file) {
                              const auto entry = [&](Number number) {
                                  const auto value = file.value(number);
                                  return refers ? file.object(value) : value;
                              };
                              return file.instance("NSValue",
                                                   {{"NS.special", file.value(special)},
                                                    {"NS.rangeval.location", entry(location)},
                                                    {"NS.rangeval.length", entry(length)}});
                          })
            ->range;
    };
    const Number four = Number::of(4);
    const Number most = Number::of(int64Max);
    for (const bool refers : {false, true}) {
        EXPECT_EQ(range(four, Number::of(1), Number::of(2), refers), (Range{1, 2}));
        EXPECT_EQ(range(four, most, Number::of(0), refers), (Range{int64Max, 0}));
        EXPECT_FALSE(range(four, most, Number::of(1), refers));
        EXPECT_FALSE(range(four, most, most, refers));
        EXPECT_FALSE(range(four, Number::of(std::uint64_t{1} << 63U), Number::of(0), refers));
        EXPECT_FALSE(range(four, Number::of(-1), Number::of(2), refers));
        EXPECT_FALSE(range(four, Number::of(1), Number::of(-2), refers));
        EXPECT_FALSE(range(four, Number::of(1.5), Number::of(2), refers));
        EXPECT_FALSE(range(Number::of(1), Number::of(1), Number::of(2), refers));
    }
}

TEST(KeyedUnarchiverTest, GivesTheSameObjectEachTime) {
    const auto root = std::make_shared<Node>("r");
    root->left = std::make_shared<Node>("s");
    root->right = root->left;
    const auto again = KeyedUnarchiver::unarchive<Node>(KeyedArchiver::archivedData(root));
    ASSERT_TRUE(again && again->left);
    EXPECT_EQ(again->left, again->right);
    EXPECT_EQ(again->left->name, "s");
}

TEST(KeyedUnarchiverTest, IsNullWhereACircleCloses) {
    const auto root = std::make_shared<Node>("r");
    root->left = std::make_shared<Node>("s");
    root->left->left = root;
    root->right = root;
    const auto again = KeyedUnarchiver::unarchive<Node>(KeyedArchiver::archivedData(root));
    root->left->left = root->right = nullptr;
    ASSERT_TRUE(again && again->left);
    EXPECT_FALSE(again->right || again->left->left);
}

TEST(KeyedUnarchiverTest, TakesASubclassForItsClassAndNotTheOtherWayRound) {
    const auto special = KeyedArchiver::archivedData(std::make_shared<SpecialNode>("s"));
    EXPECT_TRUE(KeyedUnarchiver::unarchive<Node>(special));
    EXPECT_FALSE(KeyedUnarchiver::unarchive<Everything>(special));
    const auto everything = KeyedArchiver::archivedData(std::make_shared<Everything>());
    EXPECT_FALSE(KeyedUnarchiver::unarchive<Node>(everything));
}

TEST(KeyedUnarchiverTest, TellsTheClassOfTheRoot) {
    EXPECT_EQ(KeyedUnarchiver::rootClassName(
                  KeyedArchiver::archivedData(std::make_shared<SpecialNode>("s"))),
              "SpecialNode");
    EXPECT_EQ(KeyedUnarchiver::rootClassName(KeyedArchiver::archivedData(nullptr)), std::nullopt);
    EXPECT_EQ(KeyedUnarchiver::rootClassName(Data()), std::nullopt);
    EXPECT_EQ(KeyedUnarchiver::rootClassName(Data("no archive")), std::nullopt);
}

TEST(KeyedUnarchiverTest, TellsKeysThatAreThereFromThoseThatAreNot) {
    EXPECT_TRUE(KeyedUnarchiver::unarchive<Asking>(
        KeyedArchiver::archivedData(std::make_shared<Everything>())));
}

TEST(KeyedUnarchiverTest, ReadsItsOwnObjectAfterAnInnerOne) {
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
