#pragma once

#include <string>
#include <vector>

namespace KeloAPI {
class KLVenue;
} // namespace KeloAPI

namespace KeloHost {

class FeedPost;

/// What stands beside a post, as printable lines: its byline, channel, venue, music, tags and
/// links.
std::vector<std::string> detailLines(const FeedPost& post);

/// A venue's name and what is known of its place, on one printable line.
std::string venueText(const KeloAPI::KLVenue& venue);

} // namespace KeloHost
