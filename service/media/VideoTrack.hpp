#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace KeloService {

/// One frame as files store it: a NAL unit behind its length.
struct Sample {
    std::string bytes;
    bool isKeyFrame = false;
};

/// An encoded square video whose frames all last the same time.
struct VideoTrack {
    /// Units of time in a second.
    static constexpr std::uint32_t timescale = 1000;

    /// In pixels.
    int side = 0;
    /// In units of time.
    std::uint32_t frameDuration = 0;
    /// NAL units.
    std::string sequenceParameters;
    std::string pictureParameters;
    std::vector<Sample> samples;

    std::uint64_t duration() const { return frameDuration * samples.size(); }
};

} // namespace KeloService
