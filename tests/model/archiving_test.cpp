#include "support/ModelArchives.hpp"

#include <KeloAPI/archive/internal/KeyedArchive.hpp>

#include <gtest/gtest.h>

namespace KeloAPI::testing {

namespace {

bool isNumeric(Kind kind) {
    return kind == Kind::NumberObject || kind == Kind::Integer || kind == Kind::Real ||
           kind == Kind::Flag;
}

using Entry = std::function<std::optional<PropertyList::Reference>(ArchiveFile&)>;

/// An archive of the model in which one key has another entry, or none.
Data archiveWith(const ArchivedModel& model, const std::string& changed, const Entry& other) {
    return model.archive([&](ArchiveFile& file, const ArchivedKey& key) {
        return key.name == changed ? other(file) : entry(file, key);
    });
}

/// What is read where one key is not there, and all the others are.
Lines expectedWithout(const ArchivedModel& model, const std::string& missing) {
    return model.expected([&](const ArchivedKey& key) { return key.name != missing; });
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

/// What we write of an archive's object has all of the model's keys, and is read as the same.
void expectRewritten(const ArchivedModel& model, const Data& archive) {
    const Data again = model.rewrite(archive);
    EXPECT_EQ(KeyedUnarchiver::rootClassName(again), model.className);
    EXPECT_EQ(model.read(again), model.read(archive));
    Lines keys;
    for (const ArchivedKey& key : model.keys) {
        keys.emplace_back(key.name);
    }
    keys.emplace_back("$class");
    EXPECT_EQ(keysIn(again), keys);
}

} // namespace

TEST(ModelArchivingTest, WritesWhatItReads) {
    for (const ArchivedModel& model : archivedModels()) {
        SCOPED_TRACE(model.className);
        expectRewritten(model, archiveWith(model, "", nullptr));
        for (const ArchivedKey& key : model.keys) {
            if (key.missing != refused) {
                SCOPED_TRACE(key.name);
                expectRewritten(model,
                                archiveWith(model, key.name, [](auto&) { return std::nullopt; }));
            }
        }
    }
}

TEST(ModelArchivingTest, EveryKeyMayBeMissingNullOrOfAnyOtherKind) {
    for (const ArchivedModel& model : archivedModels()) {
        SCOPED_TRACE(model.className);
        EXPECT_EQ(model.read(archiveWith(model, "", nullptr)), expectedWithout(model, ""));
        for (const ArchivedKey& key : model.keys) {
            const auto expectNone = [&](const std::string& what, const Entry& other) {
                EXPECT_EQ(model.read(archiveWith(model, key.name, other)),
                          expectedWithout(model, key.name))
                    << key.name << ' ' << what;
            };
            expectNone("missing", [](ArchiveFile&) { return std::nullopt; });
            for (const std::uint64_t place : {0, 1'000}) {
                expectNone("null or nowhere", [&](ArchiveFile& file) { return file.uid(place); });
            }
            for (int number = 0; number <= static_cast<int>(Kind::Category); ++number) {
                const auto kind = static_cast<Kind>(number);
                if (kind != key.kind && !(isNumeric(kind) && isNumeric(key.kind))) {
                    expectNone("of kind " + std::to_string(number), [&](ArchiveFile& file) {
                        return entry(file, {key.name, kind, {}});
                    });
                }
            }
        }
    }
}

TEST(ModelArchivingTest, OneClassIsNotReadAsAnother) {
    for (const ArchivedModel& model : archivedModels()) {
        const Data archive = archiveWith(model, "", nullptr);
        for (const ArchivedModel& other : archivedModels()) {
            if (other.className != model.className) {
                EXPECT_EQ(other.read(archive), Lines{refused})
                    << model.className << " as " << other.className;
            }
        }
    }
}

TEST(ModelArchivingTest, WhatHasNoKeyIsLost) {
    auto channel = std::make_shared<KLChannel>("12", "Comedy", "ffffff", "00ff00");
    channel->exploreIconRetinaUrl = URL::parse("https://a.example/");
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

    auto tag = std::make_shared<KLTag>("5", "cats");
    tag->count = 7;
    EXPECT_EQ(KeyedUnarchiver::unarchive<KLTag>(KeyedArchiver::archivedData(tag))->count, 0);
}

TEST(ModelArchivingTest, ASoundWithAnEmptyAddressIsASound) {
    const auto sound = std::make_shared<SoundboardSound>("Bell", "7", "no URL at all", true);
    const auto again =
        KeyedUnarchiver::unarchive<SoundboardSound>(KeyedArchiver::archivedData(sound));
    ASSERT_TRUE(again);
    EXPECT_EQ(kept(*again), kept(*sound));
}

} // namespace KeloAPI::testing
