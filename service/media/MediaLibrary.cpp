#include "service/media/MediaLibrary.hpp"

#include "service/media/BigEndian.hpp"
#include "service/media/H264Writer.hpp"
#include "service/media/Mp4Writer.hpp"
#include "service/media/PngWriter.hpp"
#include "service/media/Scene.hpp"

#include <string_view>
#include <utility>

namespace KeloService {
namespace {

constexpr std::uint32_t frameDuration = 100;
constexpr std::uint32_t framesPerSecond = VideoTrack::timescale / frameDuration;
constexpr int streamSide = 128;

constexpr std::string_view beginningName = "init.mp4";

std::string segmentName(std::uint32_t number) {
    return "segment" + std::to_string(number) + ".m4s";
}

/// A segment is one second long.
std::uint32_t segmentCount(const Scene& scene) {
    return scene.duration() / VideoTrack::timescale;
}

std::string withLength(const std::string& unit) {
    return bigEndian(unit.size(), 4) + unit;
}

/// Encodes the scene, with a key frame at the beginning and then after every `keyFrameInterval`
/// frames.
VideoTrack encode(const Scene& scene, int side, std::uint32_t keyFrameInterval) {
    H264Writer writer(side);
    VideoTrack track;
    track.side = side;
    track.frameDuration = frameDuration;
    track.sequenceParameters = writer.sequenceParameters();
    track.pictureParameters = writer.pictureParameters();
    Picture before(side);
    for (std::uint32_t i = 0; i < scene.duration() / frameDuration; ++i) {
        Picture picture = scene.picture(side, i * frameDuration);
        const bool isKeyFrame = i % keyFrameInterval == 0;
        track.samples.push_back(
            {withLength(isKeyFrame ? writer.keyFrame(picture) : writer.nextFrame(picture, before)),
             isKeyFrame});
        before = std::move(picture);
    }
    return track;
}

} // namespace

Media makeVideo(std::uint64_t seed, int side) {
    const Scene scene(seed);
    const std::uint32_t onlyTheFirst = scene.duration();
    return {"video/mp4", mp4File(encode(scene, side, onlyTheFirst))};
}

Media makePlaylist(std::uint64_t seed) {
    const Scene scene(seed);
    std::string text = "#EXTM3U\n#EXT-X-VERSION:7\n#EXT-X-TARGETDURATION:1\n"
                       "#EXT-X-PLAYLIST-TYPE:VOD\n#EXT-X-INDEPENDENT-SEGMENTS\n"
                       "#EXT-X-MAP:URI=\"" +
                       std::string(beginningName) + "\"\n";
    for (std::uint32_t number = 1; number <= segmentCount(scene); ++number) {
        text += "#EXTINF:1.0,\n" + segmentName(number) + "\n";
    }
    return {"application/vnd.apple.mpegurl", text + "#EXT-X-ENDLIST\n"};
}

std::optional<Media> makeStreamPart(std::uint64_t seed, const std::string& name) {
    const Scene scene(seed);
    if (name == beginningName) {
        return Media{"video/mp4", mp4StreamBeginning(encode(scene, streamSide, framesPerSecond))};
    }
    for (std::uint32_t number = 1; number <= segmentCount(scene); ++number) {
        if (name == segmentName(number)) {
            const VideoTrack track = encode(scene, streamSide, framesPerSecond);
            return Media{"video/iso.segment",
                         mp4StreamSegment(track, number, std::size_t{number - 1} * framesPerSecond,
                                          framesPerSecond)};
        }
    }
    return std::nullopt;
}

Media makeImage(std::uint64_t seed, int side) {
    return {"image/png", pngFile(side, Scene(seed).pixels(side, 0))};
}

int videoSide(const std::string& format, double rate) {
    if (format == "h264-preview") {
        return 64;
    }
    if (rate == 0) {
        return 192;
    }
    return rate < 500 ? 128 : 256;
}

} // namespace KeloService
