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

// What properties show that are no texts or numbers.
inline std::string keptDate(const std::optional<Date>& date) {
    if (!date) {
        return absent;
    }
    const bool isNow = std::chrono::abs(*date - Date::now()) < std::chrono::minutes(1);
    return isNow ? "now" : shown(std::chrono::duration<double>(*date - referenceDate).count());
}
inline std::string keptRange(const KLEntity& entity) {
    return std::to_string(entity.range.location) + "+" + std::to_string(entity.range.length);
}
inline std::string keptCategory(const KLVenue& venue) {
    return venue.category ? "category " + venue.category->shortName : absent;
}

/// What an entry of an archive is.
enum class Kind { Text, Address, Instant, NumberObject, Integer, Real, Flag, Stretch, Category };

/// Shown where an archive has no object to read.
inline constexpr const char* refused = "no object";

struct ArchivedKey {
    std::string name;
    Kind kind;
    /// What is shown where there is no entry.
    std::string missing;

    std::string address() const { return "https://a.example/" + name; }
    std::int64_t number() const { return static_cast<std::int64_t>(name.size()); }

    /// What is shown of the entry below.
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
    /// What the keys of the object in an archive show.
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

/// A key of a class, and what its property shows.
template <class T>
struct KeyOf {
    ArchivedKey key;
    Property<T> property;
};

template <class T>
ArchivedModel archivedModel(const std::vector<KeyOf<T>>& keys) {
    ArchivedModel model{std::string(T::archivedClassName), {}, {}, {}};
    for (const auto& one : keys) {
        model.keys.push_back(one.key);
    }
    model.read = [keys](const Data& archive) {
        const auto object = KeyedUnarchiver::unarchive<T>(archive);
        Lines lines;
        for (const auto& one : keys) {
            lines.push_back(object ? one.property(*object) : "");
        }
        return object ? lines : Lines{refused};
    };
    model.rewrite = [](const Data& archive) {
        return KeyedArchiver::archivedData(KeyedUnarchiver::unarchive<T>(archive));
    };
    return model;
}

inline const std::vector<ArchivedModel>& archivedModels() {
    static const std::vector<ArchivedModel> all = {
        archivedModel<LoopData>({{{"count", Kind::NumberObject, refused}, &LoopData::count},
                                 {{"velocity", Kind::NumberObject, refused}, &LoopData::velocity},
                                 {{"created", Kind::Instant, "now"},
                                  [](const LoopData& made) { return keptDate(made.created); }},
                                 {{"onFire", Kind::Flag, "false"}, &LoopData::onFire}}),
        archivedModel<PostThumbnail>({{{"url", Kind::Address, refused}, &PostThumbnail::url},
                                      {{"width", Kind::Integer, "0"}, &PostThumbnail::width},
                                      {{"height", Kind::Integer, "0"}, &PostThumbnail::height}}),
        archivedModel<KLChannel>(
            {{{"channelId", Kind::Text, ""}, &KLChannel::channelId},
             {{"name", Kind::Text, ""}, &KLChannel::name},
             {{"created", Kind::Instant, absent},
              [](const KLChannel& made) { return keptDate(made.created); }},
             {{"iconUrl", Kind::Address, absent}, &KLChannel::iconUrl},
             {{"iconRetinaUrl", Kind::Address, absent}, &KLChannel::iconRetinaUrl},
             {{"fontColorHex", Kind::Text, "000000"}, &KLChannel::fontColorHex},
             {{"backgroundColorHex", Kind::Text, "000000"}, &KLChannel::backgroundColorHex},
             {{"channelDescription", Kind::Text, absent}, &KLChannel::channelDescription}}),
        archivedModel<KLTag>(
            {{{"tagId", Kind::Text, ""}, &KLTag::tagId}, {{"name", Kind::Text, ""}, &KLTag::name}}),
        archivedModel<KLEntity>({{{"idString", Kind::Text, absent}, &KLEntity::idString},
                                 {{"type", Kind::Text, absent}, &KLEntity::type},
                                 {{"title", Kind::Text, ""}, &KLEntity::title},
                                 {{"link", Kind::Text, ""}, &KLEntity::link},
                                 {{"range", Kind::Stretch, "0+0"}, keptRange}}),
        archivedModel<KLVenueCategory>(
            {{{"categoryId", Kind::Text, ""}, &KLVenueCategory::categoryId},
             {{"shortName", Kind::Text, ""}, &KLVenueCategory::shortName},
             {{"iconUrl", Kind::Address, absent}, &KLVenueCategory::iconUrl}}),
        archivedModel<KLVenue>(
            {{{"foursquareVenueId", Kind::Text, ""}, &KLVenue::foursquareVenueId},
             {{"name", Kind::Text, ""}, &KLVenue::name},
             {{"address", Kind::Text, absent}, &KLVenue::address},
             {{"city", Kind::Text, absent}, &KLVenue::city},
             {{"state", Kind::Text, absent}, &KLVenue::state},
             {{"country", Kind::Text, absent}, &KLVenue::country},
             {{"latitude", Kind::Real, "0"}, &KLVenue::latitude},
             {{"longitude", Kind::Real, "0"}, &KLVenue::longitude},
             {{"category", Kind::Category, absent}, keptCategory}}),
        archivedModel<SoundboardSound>(
            {{{"soundUrl", Kind::Address, refused}, &SoundboardSound::soundUrl},
             {{"name", Kind::Text, refused}, &SoundboardSound::name},
             {{"sourcePostId", Kind::Text, absent}, &SoundboardSound::sourcePostId},
             {{"soundId", Kind::Text, refused}, &SoundboardSound::soundId},
             {{"featured", Kind::Flag, "false"}, &SoundboardSound::featured}}),
    };
    return all;
}

} // namespace KeloAPI::testing
