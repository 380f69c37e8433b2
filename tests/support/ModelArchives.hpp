#pragma once

#include "support/ArchivedModels.hpp"
#include "support/ArchiveFile.hpp"
#include "support/KeyTable.hpp"

#include <KeloAPI/model/KLChannel.hpp>
#include <KeloAPI/model/KLEntity.hpp>
#include <KeloAPI/model/KLTag.hpp>
#include <KeloAPI/model/KLVenue.hpp>
#include <KeloAPI/model/KLVenueCategory.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/model/PostThumbnail.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// The models that are archived: their classes, keys and values.
namespace KeloAPI::testing {

using Lines = std::vector<std::string>;

// What properties show, beside what they show elsewhere.
inline std::string keptText(const std::optional<Date>& date) {
    if (!date) {
        return absent;
    }
    const bool isNow = std::chrono::abs(*date - Date::now()) < std::chrono::minutes(1);
    return isNow ? "now" : shown(std::chrono::duration<double>(*date - referenceDate).count());
}
inline std::string keptText(const Range& range) {
    return std::to_string(range.location) + "+" + std::to_string(range.length);
}
inline std::string keptText(const std::shared_ptr<KLVenueCategory>& category) {
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
inline Lines kept(const LoopData& data) {
    return lines(data.count, data.velocity, std::optional(data.created), data.onFire);
}
inline Lines kept(const PostThumbnail& thumbnail) {
    return lines(thumbnail.url(), thumbnail.width(), thumbnail.height());
}
inline Lines kept(const KLChannel& channel) {
    return lines(channel.channelId, channel.name, channel.created, channel.iconUrl,
                 channel.iconRetinaUrl, channel.fontColorHex, channel.backgroundColorHex,
                 channel.channelDescription);
}
inline Lines kept(const KLTag& tag) {
    return lines(tag.tagId(), tag.name());
}
inline Lines kept(const KLEntity& entity) {
    return lines(entity.idString(), entity.type(), entity.title(), entity.link(), entity.range);
}
inline Lines kept(const KLVenueCategory& category) {
    return lines(category.categoryId(), category.shortName(), category.iconUrl);
}
inline Lines kept(const KLVenue& venue) {
    return lines(venue.foursquareVenueId(), venue.name(), venue.address, venue.city, venue.state,
                 venue.country, venue.latitude, venue.longitude, venue.category);
}
inline Lines kept(const SoundboardSound& sound) {
    return lines(sound.soundUrl(), sound.name(), sound.sourcePostId(), sound.soundId(),
                 sound.featured());
}

/// What an entry of an archive is.
enum class Kind { Text, Address, Instant, NumberObject, Integer, Real, Flag, Stretch, Category };

/// Shown where an archive has no object to read.
inline constexpr const char* refused = "no object";

struct ArchivedKey {
    std::string name;
    Kind kind;
    /// What `kept` shows where there is no entry.
    std::string missing;

    std::string address() const { return "https://a.example/" + name; }
    std::int64_t number() const { return static_cast<std::int64_t>(name.size()); }

    /// What `kept` shows of the entry below.
    std::string present() const {
        const std::string digits = std::to_string(number());
        return std::map<Kind, std::string>{{Kind::Text, name},
                                           {Kind::Address, address()},
                                           {Kind::Instant, "2.5"},
                                           {Kind::NumberObject, digits},
                                           {Kind::Integer, digits},
                                           {Kind::Real, digits + ".5"},
                                           {Kind::Flag, "true"},
                                           {Kind::Stretch, "3+4"},
                                           {Kind::Category, "category Cafe"}}
            .at(kind);
    }
};

/// The entry of a key: each has its own value, as far as its kind has more than one.
inline PropertyList::Reference entry(ArchiveFile& file, const ArchivedKey& key) {
    switch (key.kind) {
    case Kind::Text:
        return file.object(file.text(key.name));
    case Kind::Address:
        return file.instance("NSURL", {{"NS.base", file.uid(0)},
                                       {"NS.relative", file.object(file.text(key.address()))}});
    case Kind::Instant:
        return file.instance("NSDate", {{"NS.time", file.value(Number::of(2.5))}});
    case Kind::NumberObject:
        return file.object(file.number(key.number()));
    case Kind::Integer:
        return file.number(key.number());
    case Kind::Real:
        return file.value(Number::of(static_cast<double>(key.number()) + 0.5));
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

struct ArchivedModel {
    std::string className;
    std::vector<ArchivedKey> keys;
    /// What the object in an archive keeps.
    std::function<Lines(const Data&)> read;
    /// The archive that we write of the object in an archive.
    std::function<Data(const Data&)> rewrite;

    using EntryOf =
        std::function<std::optional<PropertyList::Reference>(ArchiveFile&, const ArchivedKey&)>;
    /// An archive whose object has these entries.
    Data archive(const EntryOf& entryOf) const {
        ArchiveFile file;
        ArchiveFile::Entries entries;
        for (const ArchivedKey& key : keys) {
            if (const auto value = entryOf(file, key)) {
                entries.emplace_back(key.name, *value);
            }
        }
        return file.bytes(file.instance(className, entries));
    }

    /// What is read where some keys are there and the others are not.
    Lines expected(const std::function<bool(const ArchivedKey&)>& isThere) const {
        Lines lines;
        for (const ArchivedKey& key : keys) {
            lines.emplace_back(isThere(key) ? key.present() : key.missing);
            if (lines.back() == refused) {
                return {refused};
            }
        }
        return lines;
    }
};

template <class T>
ArchivedModel archivedModel(std::vector<ArchivedKey> keys) {
    return {std::string(T::archivedClassName), std::move(keys),
            [](const Data& archive) {
                const auto object = KeyedUnarchiver::unarchive<T>(archive);
                return object ? kept(*object) : Lines{refused};
            },
            [](const Data& archive) {
                return KeyedArchiver::archivedData(KeyedUnarchiver::unarchive<T>(archive));
            }};
}

inline const std::vector<ArchivedModel>& archivedModels() {
    static const std::vector<ArchivedModel> all = {
        archivedModel<LoopData>({{"count", Kind::NumberObject, refused},
                                 {"velocity", Kind::NumberObject, refused},
                                 {"created", Kind::Instant, "now"},
                                 {"onFire", Kind::Flag, "false"}}),
        archivedModel<PostThumbnail>({{"url", Kind::Address, refused},
                                      {"width", Kind::Integer, "0"},
                                      {"height", Kind::Integer, "0"}}),
        archivedModel<KLChannel>({{"channelId", Kind::Text, ""},
                                  {"name", Kind::Text, ""},
                                  {"created", Kind::Instant, absent},
                                  {"iconUrl", Kind::Address, absent},
                                  {"iconRetinaUrl", Kind::Address, absent},
                                  {"fontColorHex", Kind::Text, "000000"},
                                  {"backgroundColorHex", Kind::Text, "000000"},
                                  {"channelDescription", Kind::Text, absent}}),
        archivedModel<KLTag>({{"tagId", Kind::Text, ""}, {"name", Kind::Text, ""}}),
        archivedModel<KLEntity>({{"idString", Kind::Text, absent},
                                 {"type", Kind::Text, absent},
                                 {"title", Kind::Text, ""},
                                 {"link", Kind::Text, ""},
                                 {"range", Kind::Stretch, "0+0"}}),
        archivedModel<KLVenueCategory>({{"categoryId", Kind::Text, ""},
                                        {"shortName", Kind::Text, ""},
                                        {"iconUrl", Kind::Address, absent}}),
        archivedModel<KLVenue>({{"foursquareVenueId", Kind::Text, ""},
                                {"name", Kind::Text, ""},
                                {"address", Kind::Text, absent},
                                {"city", Kind::Text, absent},
                                {"state", Kind::Text, absent},
                                {"country", Kind::Text, absent},
                                {"latitude", Kind::Real, "0"},
                                {"longitude", Kind::Real, "0"},
                                {"category", Kind::Category, absent}}),
        archivedModel<SoundboardSound>({{"soundUrl", Kind::Address, refused},
                                        {"name", Kind::Text, refused},
                                        {"sourcePostId", Kind::Text, absent},
                                        {"soundId", Kind::Text, refused},
                                        {"featured", Kind::Flag, "false"}}),
    };
    return all;
}

} // namespace KeloAPI::testing
