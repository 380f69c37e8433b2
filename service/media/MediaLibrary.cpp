#include "service/media/MediaLibrary.hpp"

#include "service/media/MediaFiles.hpp"
#include "service/media/Mp4.hpp"

#include <string_view>
#include <vector>

namespace KeloService {
namespace {

constexpr int largeSide = 480;
constexpr int smallSide = 128;

std::string_view chosenFile(const std::string& kind, int side, std::uint64_t seed) {
    const auto& files = mediaFiles(kind + "/" + std::to_string(side));
    return files[seed % files.size()].bytes;
}

/// The file with a box that players pass over, so that its bytes are its own.
std::string withPath(std::string_view file, const std::string& path) {
    return std::string(file) + box("free", path);
}

/// What describes the video, then its segments. Each segment begins with a box of the kind "moof".
std::vector<std::string_view> streamParts(std::uint64_t seed) {
    const std::string_view file = chosenFile("videos", smallSide, seed);
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    for (std::size_t place = 0; place < file.size(); place += bigEndian(file.substr(place, 4))) {
        if (file.substr(place + 4, 4) == "moof") {
            parts.push_back(file.substr(start, place - start));
            start = place;
        }
    }
    parts.push_back(file.substr(start));
    return parts;
}

std::string partName(std::size_t number) {
    return number == 0 ? "init.mp4" : "segment" + std::to_string(number) + ".m4s";
}

} // namespace

Media findVideo(std::uint64_t seed, int side, const std::string& path) {
    return {"video/mp4", withPath(chosenFile("videos", side, seed), path)};
}

Media makePlaylist(std::uint64_t seed) {
    std::string text = "#EXTM3U\n#EXT-X-VERSION:7\n#EXT-X-TARGETDURATION:1\n"
                       "#EXT-X-PLAYLIST-TYPE:VOD\n#EXT-X-INDEPENDENT-SEGMENTS\n"
                       "#EXT-X-MAP:URI=\"" +
                       partName(0) + "\"\n";
    for (std::size_t number = 1; number < streamParts(seed).size(); ++number) {
        text += "#EXTINF:1.0,\n" + partName(number) + "\n";
    }
    return {"application/vnd.apple.mpegurl", text + "#EXT-X-ENDLIST\n"};
}

std::optional<Media> findStreamPart(std::uint64_t seed, const std::string& path) {
    const auto parts = streamParts(seed);
    for (std::size_t number = 0; number < parts.size(); ++number) {
        if (path.ends_with("/" + partName(number))) {
            return Media{number == 0 ? "video/mp4" : "video/iso.segment",
                         withPath(parts[number], path)};
        }
    }
    return std::nullopt;
}

Media findPicture(std::uint64_t seed, int side) {
    return {"image/png", std::string(chosenFile("pictures", side, seed))};
}

int videoSide(const std::string& format, double rate) {
    const bool large = format == "h264" && (rate == 0 || rate >= 500);
    return large ? largeSide : smallSide;
}

} // namespace KeloService
