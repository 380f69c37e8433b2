#include "foundation/FoundationArchive.hpp"

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

#include <gtest/gtest.h>

#include <chrono>

namespace KeloAPI {

using testing::FoundationArchive;
using testing::ObjectLines;
using testing::referenceDate;

namespace {

using namespace std::chrono_literals;

const std::string classes = "class KLLoopData\n"
                            "number count\nnumber velocity\ndate created\nbool onFire\n"
                            "class PostThumbnail\n"
                            "url url\nint64 width\nint64 height\n"
                            "class KLChannel\n"
                            "text channelId\ntext name\ndate created\nurl iconUrl\n"
                            "url iconRetinaUrl\ntext fontColorHex\ntext backgroundColorHex\n"
                            "text channelDescription\n"
                            "class KLTag\n"
                            "text tagId\ntext name\n"
                            "class KLEntity\n"
                            "text idString\ntext type\ntext title\ntext link\nobject range\n"
                            "class KLVenueCategory\n"
                            "text categoryId\ntext shortName\nurl iconUrl\n"
                            "class KLVenue\n"
                            "text foursquareVenueId\ntext name\ntext address\ntext city\n"
                            "text state\ntext country\ndouble latitude\ndouble longitude\n"
                            "object category\n"
                            "class SoundboardSound\n"
                            "url soundUrl\ntext name\ntext sourcePostId\ntext soundId\n"
                            "bool featured\n" +
                            testing::rangeClass;

/// A Foundation reads these objects in our archive of the object, and writes an archive of the same
/// that we read as an object with the same archive.
template <class T>
void expectSame(const std::shared_ptr<T>& object, const std::vector<ObjectLines>& objects) {
    const std::string lines = testing::objectsOf(classes, objects);
    const Data ours = KeyedArchiver::archivedData(object);
    EXPECT_EQ(FoundationArchive::read(ours, classes), lines);
    const auto again = KeyedUnarchiver::unarchive<T>(FoundationArchive::write(lines));
    ASSERT_TRUE(again);
    EXPECT_EQ(KeyedArchiver::archivedData(again).text(), ours.text());
}

} // namespace

TEST(ModelFoundationTest, LoopData) {
    const auto data = std::make_shared<LoopData>(Number::of(std::int64_t{42}), Number::of(2.5));
    data->created = referenceDate + 521692800s + 250ms;
    data->onFire = true;
    expectSame(data, {{"KLLoopData", {"i42", "d2.5", "521692800.25", "1"}}});
}

TEST(ModelFoundationTest, PostThumbnail) {
    expectSame(std::make_shared<PostThumbnail>(*URL::parse("https://a.example/t.png"), 480, -1),
               {{"PostThumbnail", {"=https://a.example/t.png", "480", "-1"}}});
}

TEST(ModelFoundationTest, Channel) {
    const auto channel = std::make_shared<KLChannel>("12", "Comedy", "ffffff", "00ff00");
    channel->created = referenceDate + 1s;
    channel->iconUrl = URL::parse("https://a.example/i.png");
    expectSame(channel, {{"KLChannel",
                          {"=12", "=Comedy", "1", "=https://a.example/i.png", "null", "=ffffff",
                           "=00ff00", "null"}}});
    channel->name = "";
    channel->created = referenceDate - 1s;
    channel->iconRetinaUrl = URL::parse("https://a.example/i@2x.png?a=%20");
    channel->channelDescription = "cats";
    expectSame(channel,
               {{"KLChannel",
                 {"=12", "=", "-1", "=https://a.example/i.png",
                  "=https://a.example/i%402x.png%3Fa%3D%2520", "=ffffff", "=00ff00", "=cats"}}});
}

TEST(ModelFoundationTest, VenueCategory) {
    expectSame(std::make_shared<KLVenueCategory>("c1", "Port"),
               {{"KLVenueCategory", {"=c1", "=Port", "null"}}});
}

TEST(ModelFoundationTest, Tag) {
    expectSame(std::make_shared<KLTag>("5", "cats\U0001F600"),
               {{"KLTag", {"=5", "=%23cats%F0%9F%98%80"}}});
}

/// The range crosses to the Foundation as an object of the tests' own: it cannot archive ranges.
TEST(ModelFoundationTest, Entity) {
    expectSame(
        std::make_shared<KLEntity>(std::nullopt, "mention", "Ann", " | kelo://user/7", Range{3, 4}),
        {{"KLEntity", {"null", "=mention", "=Ann", "=%20%7C%20kelo://user/7", "2"}},
         {"NSValue", {"4", "i4", "i3"}}});
}

TEST(ModelFoundationTest, Venue) {
    const auto venue = std::make_shared<KLVenue>("4b1", "Harbour");
    expectSame(venue, {{"KLVenue",
                        {"=4b1", "=Harbour", "null", "null", "null", "null", "0", "0", "null"}}});
    venue->city = "Lisbon";
    venue->latitude = 38.75;
    venue->longitude = -9.125;
    venue->category = std::make_shared<KLVenueCategory>("c1", "Port");
    venue->category->iconUrl = URL::parse("https://a.example/32.png");
    expectSame(venue,
               {{"KLVenue",
                 {"=4b1", "=Harbour", "null", "=Lisbon", "null", "null", "38.75", "-9.125", "2"}},
                {"KLVenueCategory", {"=c1", "=Port", "=https://a.example/32.png"}}});
}

TEST(ModelFoundationTest, SoundboardSound) {
    expectSame(std::make_shared<SoundboardSound>("Boing", "77", "https://a.example/s.m4a", true),
               {{"SoundboardSound", {"=https://a.example/s.m4a", "=Boing", "null", "=77", "1"}}});
}

} // namespace KeloAPI
