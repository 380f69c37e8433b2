#include "service/media/Mp4Writer.hpp"

#include "service/media/BigEndian.hpp"
#include "service/media/H264Writer.hpp"
#include "service/media/Mp4Box.hpp"

namespace KeloService {
namespace {

constexpr std::uint32_t onlyTrack = 1;
constexpr std::uint32_t one = 0x00010000; // 16.16 fixed point

std::string number(std::uint64_t value) {
    return bigEndian(value, 4);
}

std::string zeros(std::size_t bytes) {
    std::string text(bytes, '\0');
    return text;
}

/// Neither turned nor scaled.
std::string plainMatrix() {
    return number(one) + zeros(12) + number(one) + zeros(12) + number(0x40000000);
}

std::string fileType() {
    return box("ftyp", {"isom", number(512), "isom", "iso5", "avc1", "mp41"});
}

std::string movieHeader(std::uint64_t duration) {
    return fullBox("mvhd", 0,
                   {zeros(8), number(VideoTrack::timescale), number(duration), number(one),
                    bigEndian(0x0100, 2), zeros(10), plainMatrix(), zeros(24),
                    number(onlyTrack + 1)});
}

std::string trackHeader(const VideoTrack& track, std::uint64_t duration) {
    const std::string side = number(static_cast<std::uint64_t>(track.side) << 16);
    constexpr std::uint32_t enabledInMovie = 3;
    return fullBox("tkhd", enabledInMovie,
                   {zeros(8), number(onlyTrack), zeros(4), number(duration), zeros(16),
                    plainMatrix(), side, side});
}

std::string decoderConfiguration(const VideoTrack& track) {
    const std::string parameters = {1,
                                    static_cast<char>(H264Writer::profile),
                                    static_cast<char>(H264Writer::compatibility),
                                    static_cast<char>(H264Writer::level),
                                    static_cast<char>(0xFF),  // lengths have four bytes
                                    static_cast<char>(0xE1)}; // one set of sequence parameters
    return box("avcC",
               {parameters, bigEndian(track.sequenceParameters.size(), 2), track.sequenceParameters,
                "\1", bigEndian(track.pictureParameters.size(), 2), track.pictureParameters});
}

std::string sampleDescription(const VideoTrack& track) {
    const std::string side = bigEndian(static_cast<std::uint64_t>(track.side), 2);
    const std::string resolution = number(0x00480000); // 72 dots per inch
    const std::string entry =
        box("avc1", {zeros(6), bigEndian(1, 2), zeros(16), side, side, resolution, resolution,
                     zeros(4), bigEndian(1, 2), zeros(32), bigEndian(24, 2), bigEndian(0xFFFF, 2),
                     decoderConfiguration(track)});
    return fullBox("stsd", 0, {number(1), entry});
}

std::string sampleSizes(const VideoTrack& track) {
    std::string sizes;
    for (const Sample& sample : track.samples) {
        sizes += number(sample.bytes.size());
    }
    return fullBox("stsz", 0, {number(0), number(track.samples.size()), sizes});
}

std::string keyFrames(const VideoTrack& track) {
    std::string numbers;
    for (std::size_t i = 0; i < track.samples.size(); ++i) {
        numbers += track.samples[i].isKeyFrame ? number(i + 1) : "";
    }
    return fullBox("stss", 0, {number(numbers.size() / 4), numbers});
}

/// All samples in one chunk that begins at `offset` in the file.
std::string sampleTable(const VideoTrack& track, std::size_t offset) {
    const std::string count = number(track.samples.size());
    return box("stbl",
               {sampleDescription(track),
                fullBox("stts", 0, {number(1), count, number(track.frameDuration)}),
                keyFrames(track), fullBox("stsc", 0, {number(1), number(1), count, number(1)}),
                sampleSizes(track), fullBox("stco", 0, {number(1), number(offset)})});
}

/// A stream's beginning has no samples of its own.
std::string emptySampleTable(const VideoTrack& track) {
    return box("stbl", {sampleDescription(track), fullBox("stts", 0, {number(0)}),
                        fullBox("stsc", 0, {number(0)}), fullBox("stsz", 0, {zeros(8)}),
                        fullBox("stco", 0, {number(0)})});
}

std::string trackBox(const VideoTrack& track, std::uint64_t duration, const std::string& table) {
    const std::string here = fullBox("url ", 1, {}); // the samples lie in this file
    const std::string minf =
        box("minf", {fullBox("vmhd", 1, {zeros(8)}),
                     box("dinf", {fullBox("dref", 0, {number(1), here})}), table});
    constexpr std::uint64_t undetermined = 0x55C4; // "und", five bits each
    const std::string mdia =
        box("mdia", {fullBox("mdhd", 0,
                             {zeros(8), number(VideoTrack::timescale), number(duration),
                              bigEndian(undetermined, 2), zeros(2)}),
                     fullBox("hdlr", 0, {zeros(4), "vide", zeros(12), "Video", zeros(1)}), minf});
    return box("trak", {trackHeader(track, duration), mdia});
}

std::string movie(const VideoTrack& track, std::size_t offset) {
    return box("moov", {movieHeader(track.duration()),
                        trackBox(track, track.duration(), sampleTable(track, offset))});
}

std::string sampleBytes(const VideoTrack& track, std::size_t first, std::size_t count) {
    std::string bytes;
    for (std::size_t i = first; i < first + count; ++i) {
        bytes += track.samples[i].bytes;
    }
    return bytes;
}

/// `offset` is where the samples begin, counted from the segment's first byte.
std::string fragment(const VideoTrack& track, std::uint32_t segment, std::size_t first,
                     std::size_t count, std::size_t offset) {
    constexpr std::uint32_t standsAlone = 0x02000000;
    constexpr std::uint32_t needsOthers = 0x01010000;
    std::string samples;
    for (std::size_t i = first; i < first + count; ++i) {
        samples += number(track.samples[i].bytes.size()) +
                   number(track.samples[i].isKeyFrame ? standsAlone : needsOthers);
    }
    constexpr std::uint32_t durationAndFragmentIsBase = 0x020008;
    constexpr std::uint32_t offsetSizesAndFlags = 0x000601;
    const std::string traf = box(
        "traf", {fullBox("tfhd", durationAndFragmentIsBase,
                         {number(onlyTrack), number(track.frameDuration)}),
                 fullBox("tfdt", 0, {number(first * track.frameDuration)}),
                 fullBox("trun", offsetSizesAndFlags, {number(count), number(offset), samples})});
    return box("moof", {fullBox("mfhd", 0, {number(segment)}), traf});
}

} // namespace

std::string mp4File(const VideoTrack& track) {
    const std::string beginning = fileType();
    // The index is as long with any offset in it.
    const std::size_t offset = beginning.size() + movie(track, 0).size() + 8;
    return beginning + movie(track, offset) +
           box("mdat", {sampleBytes(track, 0, track.samples.size())});
}

std::string mp4StreamBeginning(const VideoTrack& track) {
    const std::string defaults = fullBox("trex", 0, {number(onlyTrack), number(1), zeros(12)});
    return fileType() + box("moov", {movieHeader(0), trackBox(track, 0, emptySampleTable(track)),
                                     box("mvex", {defaults})});
}

std::string mp4StreamSegment(const VideoTrack& track, std::uint32_t number, std::size_t first,
                             std::size_t count) {
    const std::size_t offset = fragment(track, number, first, count, 0).size() + 8;
    return fragment(track, number, first, count, offset) +
           box("mdat", {sampleBytes(track, first, count)});
}

} // namespace KeloService
