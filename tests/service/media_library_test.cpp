#include "service/media/MediaFiles.hpp"
#include "service/media/MediaLibrary.hpp"
#include "service/media/Mp4Box.hpp"
#include "support/Mp4Boxes.hpp"

#include <gtest/gtest.h>

#include <set>
#include <sstream>

namespace KeloServiceTest {
namespace {

using KeloService::bigEndian;
using KeloService::findStreamPart;
using KeloService::mediaFiles;

constexpr int videoSides[] = {480, 128};
constexpr std::uint64_t videoSeconds = 3;
constexpr std::uint64_t someSeed = 1150000000000000001;
const std::string streamFolder = "/media/videos/k5/";

std::uint64_t numberAt(std::string_view text, std::size_t place) {
    return bigEndian(text.substr(place, 4));
}

const std::vector<KeloService::MediaFile>& filesOf(const char* kind, int side) {
    return mediaFiles(std::string(kind) + "/" + std::to_string(side));
}

std::vector<std::string_view> namesOf(const char* kind, int side) {
    std::vector<std::string_view> names;
    for (const auto& file : filesOf(kind, side)) {
        names.push_back(file.name.substr(0, file.name.rfind('.')));
    }
    return names;
}

void expectSide(std::string_view file, int side) {
    const std::string_view header = findBox(file, "moov/trak/tkhd");
    for (const std::size_t place : {76U, 80U}) { // in pixels, with 16 bits behind the point
        EXPECT_EQ(numberAt(header, place), static_cast<std::uint64_t>(side) << 16);
    }
    EXPECT_EQ(findBox(file, "moov/trak/mdia/minf/stbl/stsd").substr(12, 4), "avc1");
}

TEST(MediaLibrary, VideosAreWholeFilesWhoseIndexComesFirst) {
    EXPECT_EQ(filesOf("videos", 480).size(), 24U);
    for (const auto& [name, file] : filesOf("videos", 480)) {
        SCOPED_TRACE(name);
        EXPECT_EQ(boxKinds(file), "ftyp moov free mdat ");
        expectSide(file, 480);
        const std::string_view header = findBox(file, "moov/mvhd");
        EXPECT_EQ(numberAt(header, 16), videoSeconds * numberAt(header, 12));
        EXPECT_GT(file.size(), 10000U);
    }
}

TEST(MediaLibrary, SmallVideosAreInPiecesOfOneSecond) {
    for (const auto& [name, file] : filesOf("videos", 128)) {
        SCOPED_TRACE(name);
        EXPECT_EQ(boxKinds(file), "ftyp moov moof mdat moof mdat moof mdat ");
        expectSide(file, 128);
        const std::uint64_t timescale = numberAt(findBox(file, "moov/trak/mdia/mdhd"), 12);
        std::uint64_t number = 0;
        for (const Mp4Box& box : readBoxes(file)) {
            if (box.kind != "moof") {
                continue;
            }
            ++number;
            EXPECT_EQ(numberAt(findBox(box.content, "mfhd"), 4), number);
            EXPECT_EQ(bigEndian(findBox(box.content, "traf/tfdt").substr(4, 8)),
                      (number - 1) * timescale);
            // Flags that say what is there; track, duration, size and flags of its samples.
            const std::string_view track = findBox(box.content, "traf/tfhd");
            ASSERT_EQ(numberAt(track, 0), 0x020038U);
            // The same for the run; count, place and flags of its first sample.
            const std::string_view run = findBox(box.content, "traf/trun");
            ASSERT_EQ(numberAt(run, 0), 0x205U);
            EXPECT_EQ(numberAt(run, 4) * numberAt(track, 8), timescale);
            EXPECT_EQ(numberAt(run, 12), 0x02000000U) << "it is no key frame";
        }
        EXPECT_EQ(number, videoSeconds);
    }
}

TEST(MediaLibrary, EveryPostHasAFileOfItsOwn) {
    for (const int side : videoSides) {
        std::set<std::string> videos;
        std::set<std::string> files;
        for (std::uint64_t seed = someSeed; seed < someSeed + 48; ++seed) {
            const std::string path = "/media/videos/k" + std::to_string(seed) + ".mp4";
            const auto media = KeloService::findVideo(seed, side, path);
            EXPECT_EQ(media.contentType, "video/mp4");
            EXPECT_EQ(media.bytes, KeloService::findVideo(seed, side, path).bytes);
            ASSERT_FALSE(readBoxes(media.bytes).empty());
            EXPECT_EQ(readBoxes(media.bytes).back().kind, "free");
            EXPECT_EQ(readBoxes(media.bytes).back().content, path);
            files.insert(media.bytes);
            videos.insert(media.bytes.substr(0, media.bytes.size() - 8 - path.size()));
        }
        EXPECT_EQ(files.size(), 48U);
        EXPECT_EQ(videos.size(), 24U);
    }
}

/// The files that the playlist names, the beginning first.
std::vector<std::string> playlistFiles() {
    std::vector<std::string> names;
    std::istringstream playlist(KeloService::makePlaylist(someSeed).bytes);
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

TEST(MediaLibrary, PlaylistNamesAFileForEachSecond) {
    const auto playlist = KeloService::makePlaylist(someSeed);
    EXPECT_EQ(playlist.contentType, "application/vnd.apple.mpegurl");
    EXPECT_TRUE(playlist.bytes.starts_with("#EXTM3U\n"));
    EXPECT_TRUE(playlist.bytes.ends_with("#EXT-X-ENDLIST\n"));
    EXPECT_EQ(playlistFiles().size(), 1 + videoSeconds);
    for (const char* name : {"segment0.m4s", "segment4.m4s", "segment01.m4s", "", "index.m3u8"}) {
        EXPECT_FALSE(findStreamPart(someSeed, streamFolder + name)) << name;
    }
}

TEST(MediaLibrary, PartsOfAStreamMakeUpTheSmallVideo) {
    std::string joined;
    for (const std::string& name : playlistFiles()) {
        const std::string path = streamFolder + name;
        const auto part = findStreamPart(someSeed, path);
        ASSERT_TRUE(part) << name;
        const bool isFirst = joined.empty();
        EXPECT_EQ(part->contentType, isFirst ? "video/mp4" : "video/iso.segment");
        EXPECT_EQ(boxKinds(part->bytes), isFirst ? "ftyp moov free " : "moof mdat free ");
        EXPECT_EQ(readBoxes(part->bytes).back().content, path);
        joined += part->bytes.substr(0, part->bytes.size() - 8 - path.size());
    }
    EXPECT_TRUE(KeloService::findVideo(someSeed, 128, "").bytes.starts_with(joined));
    EXPECT_EQ(readBoxes(joined).size(), 2 + 2 * videoSeconds);
}

TEST(MediaLibrary, PicturesAreAsLargeAsTheyShallBe) {
    for (const int side : {480, 300, 240, 160, 120, 60, 40, 32}) {
        std::set<std::string_view> different;
        for (const auto& [name, file] : filesOf("pictures", side)) {
            SCOPED_TRACE(std::to_string(side) + "/" + std::string(name));
            EXPECT_TRUE(file.starts_with("\x89PNG\r\n\x1A\n"));
            EXPECT_EQ(file.substr(12, 4), "IHDR");
            EXPECT_EQ(numberAt(file, 16), static_cast<std::uint64_t>(side));
            EXPECT_EQ(numberAt(file, 20), static_cast<std::uint64_t>(side));
            EXPECT_TRUE(file.ends_with("IEND\xAE\x42\x60\x82"));
            different.insert(file);
        }
        EXPECT_EQ(different.size(), filesOf("pictures", side).size());
        EXPECT_GE(different.size(), 10U);
        const auto picture = KeloService::findPicture(someSeed, side);
        EXPECT_EQ(picture.contentType, "image/png");
        EXPECT_TRUE(different.contains(picture.bytes));
        EXPECT_NE(picture.bytes, KeloService::findPicture(someSeed + 1, side).bytes);
    }
}

TEST(MediaLibrary, HasNoOtherSizes) {
    EXPECT_THROW(mediaFiles("videos/64"), std::out_of_range);
    EXPECT_THROW(mediaFiles("pictures"), std::out_of_range);
}

TEST(MediaLibrary, SizesOfAVideoShowTheSame) {
    // The same place among the files means the same name.
    const auto names = namesOf("videos", 480);
    EXPECT_EQ(names, namesOf("videos", 128));
    EXPECT_EQ(names, namesOf("pictures", 480));
}

} // namespace
} // namespace KeloServiceTest
