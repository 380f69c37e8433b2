#pragma once

#include "Output.hpp"

namespace KeloAPI {
class KLVideoUpload;
} // namespace KeloAPI

// What people read of models.
namespace KeloHost {

Lines linesOf(const KeloAPI::KLWatchUser& user);
Lines linesOf(const KeloAPI::KLVenue& venue);
Lines linesOf(const KeloAPI::KLVideoUpload& upload);
/// A channel with the posts of its timeline, which are `FeedPost`s.
Lines linesOf(const KeloAPI::KLChannel& channel, bool details);
/// A page of posts, aligned, as wide as the terminal; with `details`, what stands beside each.
Lines linesOf(const std::vector<std::shared_ptr<FeedPost>>& posts, bool details);
Lines linesOf(const std::vector<std::shared_ptr<KeloAPI::SoundboardSound>>& sounds);
/// One line for each field, those of a field's own further in.
Lines linesOf(const KeloAPI::Parameters& fields, const std::string& indent);

} // namespace KeloHost
