#include "service/media/BigEndian.hpp"
#include "service/media/H264Writer.hpp"
#include "service/media/MediaLibrary.hpp"
#include "service/media/Scene.hpp"
#include "support/H264Reader.hpp"
#include "support/Mp4Reader.hpp"
#include "support/OtherDecoder.hpp"
#include "support/TestCertificate.hpp"

#include <gtest/gtest.h>

#include <iterator>
#include <set>

namespace KeloServiceTest {
namespace {

using KeloService::H264Writer;
using KeloService::makeVideo;
using KeloService::Picture;
using KeloService::Scene;

constexpr int sides[] = {64, 128, 192, 256};
constexpr std::uint64_t seeds[] = {1150000000000000001, 1150000000000004112, 7};

bool equal(const Picture& left, const Picture& right) {
    return left.side == right.side && left.luma == right.luma && left.blue == right.blue &&
           left.red == right.red;
}

TEST(Video, IsAFileWhoseIndexComesFirst) {
    const std::string file = makeVideo(7, 64).bytes;
    std::string kinds;
    for (const Mp4Box& box : readBoxes(file)) {
        kinds += std::string(box.kind) + " ";
    }
    EXPECT_EQ(kinds, "ftyp moov mdat ");
    EXPECT_EQ(findBox(file, "ftyp")->substr(0, 4), "isom");
    for (const char* path : {"moov/mvhd", "moov/trak/tkhd", "moov/trak/mdia/mdhd",
                             "moov/trak/mdia/hdlr", "moov/trak/mdia/minf/vmhd",
                             "moov/trak/mdia/minf/dinf/dref", "moov/trak/mdia/minf/stbl/stts"}) {
        EXPECT_TRUE(findBox(file, path)) << path;
    }
}

TEST(Video, SamplesFillTheFileToItsEnd) {
    for (const int side : sides) {
        const std::string file = makeVideo(7, side).bytes;
        const auto samples = readSamples(file);
        const std::string_view content = findBox(file, "mdat").value();
        EXPECT_EQ(samples.front().data(), content.data());
        EXPECT_EQ(samples.back().data() + samples.back().size(), file.data() + file.size());
        const std::string_view keys = findBox(file, "moov/trak/mdia/minf/stbl/stss").value();
        EXPECT_EQ(keys.substr(4), KeloService::bigEndian(1, 4) + KeloService::bigEndian(1, 4));
    }
}

TEST(Video, SaysHowLongAndHowLargeItIs) {
    for (const std::uint64_t seed : seeds) {
        const std::string file = makeVideo(seed, 192).bytes;
        const std::string_view times = findBox(file, "moov/trak/mdia/minf/stbl/stts").value();
        const std::uint64_t frames = readNumber(times, 8, 4);
        EXPECT_EQ(frames, readSamples(file).size());
        const std::uint64_t duration = frames * readNumber(times, 12, 4);
        EXPECT_EQ(duration, Scene(seed).duration());
        EXPECT_GE(duration, 2000U);
        EXPECT_LE(duration, 6000U);
        EXPECT_EQ(readNumber(findBox(file, "moov/mvhd").value(), 12, 4), 1000U);
        EXPECT_EQ(readNumber(findBox(file, "moov/mvhd").value(), 16, 4), duration);
        EXPECT_EQ(readNumber(findBox(file, "moov/trak/mdia/mdhd").value(), 16, 4), duration);
        const std::string_view header = findBox(file, "moov/trak/tkhd").value();
        EXPECT_EQ(readNumber(header, 20, 4), duration);
        EXPECT_EQ(readNumber(header, 76, 4), 192U << 16);
        EXPECT_EQ(readNumber(header, 80, 4), 192U << 16);
    }
}

TEST(Video, DecoderConfigurationAgreesWithTheParameters) {
    const std::string file = makeVideo(7, 128).bytes;
    const ParameterSets sets = readParameterSets(file);
    const VideoShape shape = readSequenceParameters(sets.sequence);
    EXPECT_EQ(shape.profile, 66);
    EXPECT_EQ(shape.level, 30);
    EXPECT_EQ(shape.blocksAcross, 8);
    EXPECT_EQ(shape.blocksDown, 8);
    EXPECT_EQ(sets.configuration.substr(1, 3), sets.sequence.substr(1, 3));
    EXPECT_EQ(sets.picture.at(0) & 0x1F, 8);
}

TEST(Video, DecodesToTheScene) {
    for (const std::uint64_t seed : seeds) {
        for (const int side : sides) {
            const std::string file = makeVideo(seed, side).bytes;
            H264Reader reader(readSequenceParameters(readParameterSets(file).sequence));
            std::uint32_t time = 0;
            for (const std::string_view sample : readSamples(file)) {
                const auto units = readUnits(sample);
                ASSERT_EQ(units.size(), 1U);
                ASSERT_TRUE(equal(reader.read(units[0]), Scene(seed).picture(side, time)))
                    << seed << " " << side << " " << time;
                time += 100;
            }
        }
    }
}

TEST(Video, KeepsStartCodesOutOfItsUnits) {
    // Black samples are full of them.
    H264Writer writer(32);
    Picture picture(32);
    H264Reader reader(readSequenceParameters(writer.sequenceParameters()));
    EXPECT_TRUE(equal(reader.read(writer.keyFrame(picture)), picture));
    Picture next = picture;
    next.luma[5] = 1;
    next.luma[7] = 3;
    next.red.back() = 2;
    EXPECT_TRUE(equal(reader.read(writer.nextFrame(next, picture)), next));
    EXPECT_TRUE(equal(reader.read(writer.nextFrame(next, next)), next));
}

TEST(Video, DiffersBetweenPostsAndSizesAndNeverOtherwise) {
    std::set<std::string> files;
    std::set<std::size_t> lengths;
    for (const std::uint64_t seed : seeds) {
        for (const int side : sides) {
            const std::string file = makeVideo(seed, side).bytes;
            EXPECT_EQ(file, makeVideo(seed, side).bytes);
            EXPECT_GT(file.size(), 10000U);
            EXPECT_LT(file.size(), 700000U);
            files.insert(file);
            lengths.insert(file.size());
        }
    }
    EXPECT_EQ(files.size(), std::size(seeds) * std::size(sides));
    EXPECT_EQ(lengths.size(), files.size());
}

TEST(Video, EndsWhereItBegan) {
    for (const std::uint64_t seed : seeds) {
        const Scene scene(seed);
        EXPECT_TRUE(equal(scene.picture(64, scene.duration()), scene.picture(64, 0)));
        EXPECT_FALSE(equal(scene.picture(64, scene.duration() / 4), scene.picture(64, 0)));
    }
}

TEST(Video, AnotherDecoderSeesTheScene) {
    if (!hasOtherDecoder()) {
        GTEST_SKIP() << "this machine has no ffmpeg";
    }
    const TemporaryFolder folder;
    for (const int side : sides) {
        const std::string file = folder.write("video.mp4", makeVideo(seeds[0], side).bytes);
        EXPECT_TRUE(otherDecodersFrames(file) == sceneFrames(Scene(seeds[0]), side)) << side;
    }
}

} // namespace
} // namespace KeloServiceTest
