#include "support/ArchiveFile.hpp"
#include "support/KeyTable.hpp"

#include <KeloAPI/archive/internal/KeyedArchive.hpp>
#include <KeloAPI/archive/KeyedArchiver.hpp>
#include <KeloAPI/archive/KeyedUnarchiver.hpp>
#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/model/PostThumbnail.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace KeloAPI::testing {

using ::testing::ElementsAreArray;

namespace {

using namespace std::chrono_literals;

constexpr Date start = std::chrono::sys_days(std::chrono::January / 1 / 2001);

using Lines = std::vector<std::string>;

// What properties show, beside what they show elsewhere.
std::string keptText(const std::optional<Date>& date) {
    if (!date) {
        return absent;
    }
    const bool isNow = std::chrono::abs(*date - Date::now()) < 60s;
    return isNow ? "now" : std::to_string((*date - start).count());
}
std::string keptText(const Range& range) {
    return std::to_string(range.location) + "+" + std::to_string(range.length);
}
std::string keptText(const std::shared_ptr<KLVenueCategory>& category) {
    return category ? "category " + category->shortName() : absent;
}
template <class Value>
std::string keptText(const Value& value) {
    return shown(value);
}
template <class... Values>
Lines lines(const Values&... values) {
    return {keptText(values)...};
}

// What a model keeps, in the order of its keys.
Lines kept(const LoopData& data) {
    return lines(data.count, data.velocity, std::optional(data.created), data.onFire);
}
Lines kept(const PostThumbnail& thumbnail) {
    return lines(thumbnail.url(), thumbnail.width(), thumbnail.height());
}
Lines kept(const KLChannel& channel) {
    return lines(channel.channelId, channel.name, channel.created, channel.iconUrl,
                 channel.iconRetinaUrl, channel.fontColorHex, channel.backgroundColorHex,
                 channel.channelDescription);
}
Lines kept(const KLTag& tag) {
    return lines(tag.tagId(), tag.name());
}
Lines kept(const KLEntity& entity) {
    return lines(entity.idString(), entity.type(), entity.title(), entity.link(), entity.range);
}
Lines kept(const KLVenueCategory& category) {
    return lines(category.categoryId(), category.shortName(), category.iconUrl);
}
Lines kept(const KLVenue& venue) {
    return lines(venue.foursquareVenueId(), venue.name(), venue.address, venue.city, venue.state,
                 venue.country, venue.latitude, venue.longitude, venue.category);
}
Lines kept(const SoundboardSound& sound) {
    return lines(sound.soundUrl(), sound.name(), sound.sourcePostId(), sound.soundId(),
                 sound.featured());
}

/// What an entry of an archive is.
enum class Kind { Text, Address, Instant, NumberObject, Integer, Real, Flag, Stretch, Category };
constexpr std::array kinds = {Kind::Text,         Kind::Address, Kind::Instant,
                              Kind::NumberObject, Kind::Integer, Kind::Real,
                              Kind::Flag,         Kind::Stretch, Kind::Category};

bool isNumeric(Kind kind) {
    return kind == Kind::NumberObject || kind == Kind::Integer || kind == Kind::Real ||
           kind == Kind::Flag;
}

PropertyList::Reference entry(ArchiveFile& file, Kind kind) {
    switch (kind) {
    case Kind::Text:
        return file.object(file.text("words"));
    case Kind::Address:
        return file.instance("NSURL",
                             {{"NS.base", file.uid(0)},
                              {"NS.relative", file.object(file.text("https://a.example/"))}});
    case Kind::Instant:
        return file.instance("NSDate", {{"NS.time", file.value(Number::of(2.5))}});
    case Kind::NumberObject:
        return file.object(file.number(7));
    case Kind::Integer:
        return file.number(7);
    case Kind::Real:
        return file.value(Number::of(1.5));
    case Kind::Flag:
        return file.value(Number::of(true));
    case Kind::Stretch:
        return file.instance("NSValue", {{"NS.special", file.number(4)},
                                         {"NS.rangeval.location", file.object(file.number(3))},
                                         {"NS.rangeval.length", file.object(file.number(4))}});
    case Kind::Category:
        return file.instance("KLVenueCategory", {{"categoryId", file.object(file.text("c"))},
                                                 {"shortName", file.object(file.text("Cafe"))}});
    }
    return file.uid(0);
}

const char* const refused = "no object";

struct Key {
    const char* name;
    Kind kind;
    /// What `kept` shows of the entry above, and of none.
    const char* present;
    const char* missing;
};

struct Model {
    std::string_view className;
    std::vector<Key> keys;
    std::function<Lines(const Data&)> read;
};

template <class T>
Lines keptIn(const Data& archive) {
    const auto object = KeyedUnarchiver::unarchive<T>(archive);
    return object ? kept(*object) : Lines{refused};
}

const std::vector<Model>& models() {
    static const std::vector<Model> all = {
        {"KLLoopData",
         {{"count", Kind::NumberObject, "7", refused},
          {"velocity", Kind::NumberObject, "7", refused},
          {"created", Kind::Instant, "2500000", "now"},
          {"onFire", Kind::Flag, "true", "false"}},
         keptIn<LoopData>},
        {"PostThumbnail",
         {{"url", Kind::Address, "https://a.example/", refused},
          {"width", Kind::Integer, "7", "0"},
          {"height", Kind::Integer, "7", "0"}},
         keptIn<PostThumbnail>},
        {"KLChannel",
         {{"channelId", Kind::Text, "words", ""},
          {"name", Kind::Text, "words", ""},
          {"created", Kind::Instant, "2500000", absent},
          {"iconUrl", Kind::Address, "https://a.example/", absent},
          {"iconRetinaUrl", Kind::Address, "https://a.example/", absent},
          {"fontColorHex", Kind::Text, "words", "000000"},
          {"backgroundColorHex", Kind::Text, "words", "000000"},
          {"channelDescription", Kind::Text, "words", absent}},
         keptIn<KLChannel>},
        {"KLTag",
         {{"tagId", Kind::Text, "words", ""}, {"name", Kind::Text, "words", ""}},
         keptIn<KLTag>},
        {"KLEntity",
         {{"idString", Kind::Text, "words", absent},
          {"type", Kind::Text, "words", absent},
          {"title", Kind::Text, "words", ""},
          {"link", Kind::Text, "words", ""},
          {"range", Kind::Stretch, "3+4", "0+0"}},
         keptIn<KLEntity>},
        {"KLVenueCategory",
         {{"categoryId", Kind::Text, "words", ""},
          {"shortName", Kind::Text, "words", ""},
          {"iconUrl", Kind::Address, "https://a.example/", absent}},
         keptIn<KLVenueCategory>},
        {"KLVenue",
         {{"foursquareVenueId", Kind::Text, "words", ""},
          {"name", Kind::Text, "words", ""},
          {"address", Kind::Text, "words", absent},
          {"city", Kind::Text, "words", absent},
          {"state", Kind::Text, "words", absent},
          {"country", Kind::Text, "words", absent},
          {"latitude", Kind::Real, "1.5", "0"},
          {"longitude", Kind::Real, "1.5", "0"},
          {"category", Kind::Category, "category Cafe", absent}},
         keptIn<KLVenue>},
        {"SoundboardSound",
         {{"soundUrl", Kind::Address, "https://a.example/", refused},
          {"name", Kind::Text, "words", refused},
          {"sourcePostId", Kind::Text, "words", absent},
          {"soundId", Kind::Text, "words", refused},
          {"featured", Kind::Flag, "true", "false"}},
         keptIn<SoundboardSound>},
    };
    return all;
}

using Entry = std::function<std::optional<PropertyList::Reference>(ArchiveFile&)>;

/// An archive of the model in which one key has another entry, or none.
Data archiveWith(const Model& model, const std::string& key, const Entry& other) {
    ArchiveFile file;
    ArchiveFile::Entries entries;
    for (const Key& one : model.keys) {
        const auto value = one.name == key ? other(file) : entry(file, one.kind);
        if (value) {
            entries.emplace_back(one.name, *value);
        }
    }
    return file.bytes(file.instance(std::string(model.className), entries));
}

/// What is read where one key is there or not, and all the others are.
Lines expected(const Model& model, const std::string& key) {
    Lines lines;
    for (const Key& one : model.keys) {
        lines.emplace_back(one.name == key ? one.missing : one.present);
        if (lines.back() == refused) {
            return {refused};
        }
    }
    return lines;
}

/// The model's keys in the order in which an archive has them.
Lines keysIn(const Data& archive) {
    const auto read = KeyedArchive::read(archive);
    Lines keys;
    for (const auto& [key, value] : read->entries(read->root())->entries) {
        keys.push_back(*read->list().get<std::string>(key));
    }
    return keys;
}

template <class T>
void expectRoundTrip(const std::shared_ptr<T>& object) {
    const Data archive = KeyedArchiver::archivedData(object);
    EXPECT_EQ(KeyedUnarchiver::rootClassName(archive), T::archivedClassName);
    EXPECT_EQ(keptIn<T>(archive), kept(*object));
    const auto model = std::find_if(models().begin(), models().end(), [](const Model& one) {
        return one.className == T::archivedClassName;
    });
    ASSERT_NE(model, models().end());
    Lines keys;
    for (const Key& key : model->keys) {
        keys.emplace_back(key.name);
    }
    keys.emplace_back("$class");
    EXPECT_THAT(keysIn(archive), ElementsAreArray(keys));
}

/// Values of every shape, absent ones too.
class Values {
public:
    std::string text() {
        static constexpr std::array<std::string_view, 6> parts = {
            "",           std::string_view("a\0b", 3), "#tag", " | ",
            "caf\u00e9 ", "\U0001F600\u200D\U0001F525"};
        std::string made;
        for (int i = next(4); i > 0; --i) {
            made += parts[static_cast<std::size_t>(next(parts.size()))];
        }
        return made;
    }
    std::optional<std::string> maybeText() {
        return next(3) == 0 ? std::nullopt : std::optional(text());
    }
    URL url() {
        return *URL::parse("https://kelo.example/" + std::to_string(next(1000)) + "?a=%20");
    }
    std::optional<URL> maybeUrl() { return next(3) == 0 ? std::nullopt : std::optional(url()); }
    std::optional<Date> maybeDate() {
        return next(3) == 0
                   ? std::nullopt
                   : std::optional(start + std::chrono::microseconds(integer() % (1LL << 50)));
    }
    std::int64_t integer() { return static_cast<std::int64_t>(_random()); }
    double real() { return static_cast<double>(integer()) / 1e15; }
    bool flag() { return next(2) == 0; }
    Range range() { return {next(1 << 20), next(1 << 20)}; }
    int next(std::size_t bound) { return static_cast<int>(_random() % bound); }

private:
    std::mt19937_64 _random{20'260'101};
};

class ModelArchivingTest : public ::testing::Test {
protected:
    static constexpr int rounds = 200;
    Values values;

    std::shared_ptr<KLVenueCategory> category() {
        auto made = std::make_shared<KLVenueCategory>(values.text(), values.text());
        made->iconUrl = values.maybeUrl();
        return made;
    }
};

} // namespace

TEST_F(ModelArchivingTest, LoopData) {
    for (int i = 0; i < rounds; ++i) {
        const auto count = i % 2 == 0 ? Number::of(static_cast<std::uint64_t>(values.integer()))
                                      : Number::of(values.integer());
        auto data = std::make_shared<LoopData>(count, Number::of(values.real()));
        data->created = values.maybeDate().value_or(start);
        data->onFire = values.flag();
        expectRoundTrip(data);
    }
}

TEST_F(ModelArchivingTest, PostThumbnail) {
    for (int i = 0; i < rounds; ++i) {
        expectRoundTrip(
            std::make_shared<PostThumbnail>(values.url(), values.integer(), values.integer()));
    }
}

TEST_F(ModelArchivingTest, Channel) {
    for (int i = 0; i < rounds; ++i) {
        auto channel =
            std::make_shared<KLChannel>(values.text(), values.text(), values.text(), values.text());
        channel->created = values.maybeDate();
        channel->iconUrl = values.maybeUrl();
        channel->iconRetinaUrl = values.maybeUrl();
        channel->channelDescription = values.maybeText();
        expectRoundTrip(channel);
    }
}

TEST_F(ModelArchivingTest, ChannelLosesWhatIsNotKept) {
    auto channel = std::make_shared<KLChannel>("12", "Comedy", "ffffff", "00ff00");
    channel->exploreIconRetinaUrl = values.url();
    channel->following = true;
    channel->vanityPathSuffix = "comedy";
    channel->showRecent = true;
    const auto again = KeyedUnarchiver::unarchive<KLChannel>(KeyedArchiver::archivedData(channel));
    ASSERT_TRUE(again);
    EXPECT_EQ(*again, *channel);
    EXPECT_FALSE(again->exploreIconRetinaUrl);
    EXPECT_FALSE(again->following);
    EXPECT_FALSE(again->vanityPathSuffix);
    EXPECT_FALSE(again->timelineData);
    EXPECT_FALSE(again->showRecent);
}

TEST_F(ModelArchivingTest, Tag) {
    for (int i = 0; i < rounds; ++i) {
        auto tag = std::make_shared<KLTag>(values.text(), values.text());
        tag->count = 7;
        expectRoundTrip(tag);
        EXPECT_EQ(KeyedUnarchiver::unarchive<KLTag>(KeyedArchiver::archivedData(tag))->count, 0);
    }
}

TEST_F(ModelArchivingTest, Entity) {
    for (int i = 0; i < rounds; ++i) {
        expectRoundTrip(std::make_shared<KLEntity>(values.maybeText(), values.maybeText(),
                                                   values.text(), values.text(), values.range()));
    }
}

TEST_F(ModelArchivingTest, VenueCategory) {
    for (int i = 0; i < rounds; ++i) {
        expectRoundTrip(category());
    }
}

TEST_F(ModelArchivingTest, Venue) {
    for (int i = 0; i < rounds; ++i) {
        auto venue = std::make_shared<KLVenue>(values.text(), values.text());
        venue->address = values.maybeText();
        venue->city = values.maybeText();
        venue->state = values.maybeText();
        venue->country = values.maybeText();
        venue->latitude = values.real();
        venue->longitude = values.real();
        venue->category = values.flag() ? category() : nullptr;
        expectRoundTrip(venue);
        const auto again = KeyedUnarchiver::unarchive<KLVenue>(KeyedArchiver::archivedData(venue));
        ASSERT_EQ(again->category == nullptr, venue->category == nullptr);
        if (venue->category) {
            EXPECT_EQ(kept(*again->category), kept(*venue->category));
        }
        EXPECT_EQ(again->latitude, venue->latitude) << "to the last bit";
        EXPECT_EQ(again->longitude, venue->longitude);
    }
}

TEST_F(ModelArchivingTest, SoundboardSound) {
    for (int i = 0; i < rounds; ++i) {
        const std::string url = i % 5 == 0 ? "no URL at all" : values.url().absoluteString();
        expectRoundTrip(std::make_shared<SoundboardSound>(values.text(), values.text(), url,
                                                          values.flag(), values.maybeText()));
    }
}

TEST_F(ModelArchivingTest, EveryKeyMayBeMissingNullOrOfAnyOtherKind) {
    for (const Model& model : models()) {
        EXPECT_EQ(model.read(archiveWith(model, "", nullptr)), expected(model, ""))
            << model.className;
        for (const Key& key : model.keys) {
            const auto expectNone = [&](const std::string& what, const Entry& other) {
                EXPECT_EQ(model.read(archiveWith(model, key.name, other)),
                          expected(model, key.name))
                    << model.className << ": " << key.name << ' ' << what;
            };
            expectNone("missing", [](ArchiveFile&) { return std::nullopt; });
            for (const std::uint64_t place : {0, 1'000}) {
                expectNone("null or nowhere", [&](ArchiveFile& file) { return file.uid(place); });
            }
            for (const Kind kind : kinds) {
                if (kind != key.kind && !(isNumeric(kind) && isNumeric(key.kind))) {
                    expectNone("of kind " + std::to_string(static_cast<int>(kind)),
                               [&](ArchiveFile& file) { return entry(file, kind); });
                }
            }
        }
    }
}

TEST_F(ModelArchivingTest, OneClassIsNotReadAsAnother) {
    for (const Model& model : models()) {
        const Data archive = archiveWith(model, "", nullptr);
        for (const Model& other : models()) {
            if (other.className != model.className) {
                EXPECT_EQ(other.read(archive), Lines{refused})
                    << model.className << " as " << other.className;
            }
        }
    }
}

} // namespace KeloAPI::testing
