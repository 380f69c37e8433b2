#pragma once

#include "service/media/Picture.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace KeloServiceTest {

/// What the sequence parameters say.
struct VideoShape {
    int profile = 0;
    int level = 0;
    int blocksAcross = 0;
    int blocksDown = 0;
};

/// The payload of a NAL unit with the bytes taken out that keep start codes from appearing. Throws
/// std::runtime_error when a start code appears all the same.
std::string unescape(std::string_view unit);

/// Throws std::runtime_error for anything it does not know.
VideoShape readSequenceParameters(std::string_view unit);

/// Decodes the part of H.264 that has no compression: macroblocks that carry their samples, and
/// macroblocks that stay as they were.
class H264Reader {
public:
    explicit H264Reader(const VideoShape& shape);

    /// Throws std::runtime_error for anything it does not know, and for a frame that is not used up
    /// to its last bit.
    const KeloService::Picture& read(std::string_view unit);

private:
    int blocks_;
    unsigned frame_ = 0;
    KeloService::Picture picture_;
};

} // namespace KeloServiceTest
