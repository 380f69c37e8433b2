#include "service/media/MediaLibrary.hpp"
#include "service/media/Scene.hpp"
#include "support/H264Reader.hpp"
#include "support/Mp4Reader.hpp"
#include "support/OtherDecoder.hpp"
#include "support/TestCertificate.hpp"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

namespace KeloServiceTest {
namespace {

using KeloService::makeStreamPart;
using KeloService::Scene;

constexpr std::uint64_t streamSeed = 1150000000000000001;
constexpr int streamSide = 128;

/// The files that the playlist names, the beginning first.
std::vector<std::string> namedFiles() {
    std::vector<std::string> names;
    std::istringstream playlist(KeloService::makePlaylist(streamSeed).bytes);
    for (std::string line; std::getline(playlist, line);) {
        const std::string map = "#EXT-X-MAP:URI=\"";
        if (line.starts_with(map)) {
            names.push_back(line.substr(map.size(), line.size() - map.size() - 1));
        } else if (!line.starts_with('#')) {
            names.push_back(line);
        }
    }
    return names;
}

std::string partBytes(const std::string& name) {
    return makeStreamPart(streamSeed, name).value().bytes;
}

TEST(Stream, PlaylistNamesASegmentForEachSecond) {
    const KeloService::Media playlist = KeloService::makePlaylist(streamSeed);
    EXPECT_TRUE(playlist.bytes.starts_with("#EXTM3U\n"));
    EXPECT_TRUE(playlist.bytes.ends_with("#EXT-X-ENDLIST\n"));
    EXPECT_EQ(namedFiles().size(), 1 + Scene(streamSeed).duration() / 1000);
    for (const std::string& name : namedFiles()) {
        EXPECT_TRUE(makeStreamPart(streamSeed, name)) << name;
    }
    for (const char* name : {"segment0.m4s", "segment9.m4s", "segment01.m4s", "", "index.m3u8"}) {
        EXPECT_FALSE(makeStreamPart(streamSeed, name)) << name;
    }
}

TEST(Stream, DecodesToTheScene) {
    const auto names = namedFiles();
    const std::string beginning = partBytes(names.at(0));
    EXPECT_TRUE(findBox(beginning, "moov/mvex/trex"));
    H264Reader reader(readSequenceParameters(readParameterSets(beginning).sequence));
    std::uint32_t time = 0;
    for (std::size_t number = 1; number < names.size(); ++number) {
        const std::string segment = partBytes(names[number]);
        ASSERT_EQ(readBoxes(segment).size(), 2U);
        EXPECT_EQ(readNumber(findBox(segment, "moof/mfhd").value(), 4, 4), number);
        EXPECT_EQ(readNumber(findBox(segment, "moof/traf/tfdt").value(), 4, 4), time);
        const std::string_view run = findBox(segment, "moof/traf/trun").value();
        const std::uint64_t count = readNumber(run, 4, 4);
        EXPECT_EQ(count, 10U);
        std::size_t place = readNumber(run, 8, 4);
        EXPECT_EQ(segment.data() + place, findBox(segment, "mdat")->data());
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t size = readNumber(run, 12 + 8 * i, 4);
            const auto units = readUnits(std::string_view(segment).substr(place, size));
            ASSERT_EQ(units.size(), 1U);
            EXPECT_EQ((units[0].at(0) & 0x1F) == 5, i == 0);
            const KeloService::Picture& picture = reader.read(units[0]);
            EXPECT_TRUE(picture.luma == Scene(streamSeed).picture(streamSide, time).luma) << time;
            place += size;
            time += 100;
        }
        EXPECT_EQ(place, segment.size());
    }
    EXPECT_EQ(time, Scene(streamSeed).duration());
}

TEST(Stream, AnotherPlayerSeesTheScene) {
    if (!hasOtherDecoder()) {
        GTEST_SKIP() << "this machine has no ffmpeg";
    }
    const TemporaryFolder folder;
    for (const std::string& name : namedFiles()) {
        folder.write(name, partBytes(name));
    }
    const std::string playlist =
        folder.write("index.m3u8", KeloService::makePlaylist(streamSeed).bytes);
    EXPECT_TRUE(otherDecodersFrames(playlist) == sceneFrames(Scene(streamSeed), streamSide));
}

} // namespace
} // namespace KeloServiceTest
