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

// `seed` is the id of the post, user or thing whose media they are: it chooses among the files that
// the service has. What a path names is the same on every machine.

/// A post's video, an MP4 file that lasts three seconds. Its last box holds the path, so that the
/// file differs from that of any other post.
Media findVideo(std::uint64_t seed, int side, const std::string& path);

/// An HTTP live streaming playlist that names "init.mp4" and "segment1.m4s" and so on beside it.
Media makePlaylist(std::uint64_t seed);
/// A file that the playlist names, by its path; absent for any other one.
std::optional<Media> findStreamPart(std::uint64_t seed, const std::string& path);

/// A PNG file. The one as large as the video shows its first frame.
Media findPicture(std::uint64_t seed, int side);

/// The side in pixels of the video that a rendition of this format and rate has.
int videoSide(const std::string& format, double rate);

} // namespace KeloService
