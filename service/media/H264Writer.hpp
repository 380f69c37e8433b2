#pragma once

#include "service/media/Picture.hpp"

#include <cstdint>
#include <string>

namespace KeloService {

/// Writes H.264 video (Constrained Baseline) without compression: a key frame carries every sample
/// as it is, the frames after it only the macroblocks that changed. What is returned are NAL units,
/// without start codes or lengths.
class H264Writer {
public:
    /// Pixels along one side of a macroblock.
    static constexpr int blockSide = 16;
    static constexpr std::uint8_t profile = 66;
    static constexpr std::uint8_t compatibility = 0xC0;
    /// Level 3: up to 1620 macroblocks in a frame.
    static constexpr std::uint8_t level = 30;

    /// `side` is a multiple of `blockSide`.
    explicit H264Writer(int side);

    std::string sequenceParameters() const;
    std::string pictureParameters() const;
    /// A frame that stands for itself.
    std::string keyFrame(const Picture& picture);
    /// The frame that follows the one written last, whose picture is `before`.
    std::string nextFrame(const Picture& picture, const Picture& before);

private:
    int blocks_;
    std::uint32_t frame_ = 0;
    std::uint32_t keyFrames_ = 0;
};

} // namespace KeloService
