#pragma once

#include <KeloAPI/base/Object.hpp>

#include <string_view>

namespace KeloAPI {

/// The names of the formats that a video is offered in. Formats are plain texts, compared to the
/// letter; the service may name others.
class KLVideoFileFormat final : public Object {
public:
    KLVideoFileFormat() = delete;

    static constexpr std::string_view MP4 = "h264";             ///< A whole video in one file.
    static constexpr std::string_view HLS = "hls";              ///< A playlist of segments.
    static constexpr std::string_view PREVIEW = "h264-preview"; ///< A small video for lists.
};

} // namespace KeloAPI
