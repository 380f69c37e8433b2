#include "support/ModelArchives.hpp"

#include <KeloAPI/archive/internal/KeyedArchive.hpp>

#include <gtest/gtest.h>

namespace KeloAPI::testing {

namespace {

/// An archive of the model without one key.
Data archiveWithout(const ArchivedModel& model, const std::string& missing) {
    return model.archive([&](ArchiveFile& file, const ArchivedKey& key) {
        return key.name == missing ? std::nullopt : std::optional(entry(file, key));
    });
}

/// The model's keys in the order in which an archive has them.
Lines keysIn(const Data& archive) {
    const auto read = KeyedArchive::read(archive);
    Lines keys;
    for (const auto& [key, value] : read->entries(read->root())->entries) {
        keys.push_back(*read->get<std::string>(key));
    }
    return keys;
}

} // namespace

TEST(ModelArchivingTest, EveryKeyMayBeMissingAndIsWrittenAllTheSame) {
    for (const ArchivedModel& model : archivedModels()) {
        Lines names;
        for (const ArchivedKey& key : model.keys) {
            names.push_back(key.name);
        }
        names.emplace_back("$class");
        for (const std::string& missing : names) {
            SCOPED_TRACE(model.className + " without " + missing);
            const Data archive = archiveWithout(model, missing);
            const Lines expected =
                model.expected([&](const ArchivedKey& key) { return key.name != missing; });
            EXPECT_EQ(model.read(archive), expected);
            if (expected != Lines{refused}) {
                const Data again = model.rewrite(archive);
                EXPECT_EQ(KeyedUnarchiver::rootClassName(again), model.className);
                EXPECT_EQ(model.read(again), expected);
                EXPECT_EQ(keysIn(again), names);
            }
        }
    }
}

TEST(ModelArchivingTest, OneClassIsNotReadAsAnother) {
    for (const ArchivedModel& model : archivedModels()) {
        const Data archive = archiveWithout(model, "");
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
    EXPECT_EQ(again->soundUrl, URL::empty());
    EXPECT_EQ(again->name, "Bell");
}

} // namespace KeloAPI::testing
