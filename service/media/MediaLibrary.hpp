#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace KeloService {

/// A file as the service serves it.
struct Media {
    std::string contentType;
    std::string bytes;
};

// The service's media are made when they are asked for; the same arguments give the same bytes on
// every machine. `seed` is the id of the post, user or channel whose media they are.

/// An MP4 file with one video track. `side` is in pixels, a multiple of 16.
Media makeVideo(std::uint64_t seed, int side);

/// An HTTP live streaming playlist that names "init.mp4" and "segment1.m4s" and so on beside it.
Media makePlaylist(std::uint64_t seed);
/// A file that the playlist names; absent for any other name.
std::optional<Media> makeStreamPart(std::uint64_t seed, const std::string& name);

/// A PNG file with the video's first frame.
Media makeImage(std::uint64_t seed, int side);

/// The side of the video that a rendition of this format and rate has.
int videoSide(const std::string& format, double rate);

} // namespace KeloService
