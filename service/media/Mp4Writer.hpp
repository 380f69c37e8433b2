#pragma once

#include "service/media/VideoTrack.hpp"

#include <cstddef>
#include <string>

namespace KeloService {

/// The video as one file whose index comes first, so that playing can begin while it is fetched.
std::string mp4File(const VideoTrack& track);

/// The same video for streaming: a beginning that describes it, and segments that follow it.
std::string mp4StreamBeginning(const VideoTrack& track);
/// The `count` samples from `first` on, which must be a key frame. `number` counts segments from 1.
std::string mp4StreamSegment(const VideoTrack& track, std::uint32_t number, std::size_t first,
                             std::size_t count);

} // namespace KeloService
