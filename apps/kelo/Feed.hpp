#pragma once

#include <KeloAPI/KeloAPI.hpp>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace KeloHost {

/// A user with the identifier, which the library's own parser leaves out.
class FeedUser final : public KeloAPI::Object {
public:
    /// Absent in a record without one.
    std::optional<std::string> userId;
    /// Never null once parsed.
    std::shared_ptr<KeloAPI::KLWatchUser> user;
};

/// A post with the other fields of its record. Missing ones are null, absent or empty.
class FeedPost final : public KeloAPI::Object {
public:
    /// Never null once parsed.
    std::shared_ptr<KeloAPI::KLWatchPost> post;
    /// Never null once parsed.
    std::shared_ptr<FeedUser> author;
    std::optional<std::string> channel;
    std::shared_ptr<KeloAPI::KLVenue> venue;
    std::shared_ptr<KeloAPI::KLByline> byline;
    std::shared_ptr<KeloAPI::KLPostAudioMetadata> audio;
    std::vector<std::shared_ptr<KeloAPI::KLTag>> tags;
    /// The linked stretches of the caption.
    std::vector<std::shared_ptr<KeloAPI::KLEntity>> entities;
};

/// Reads a user's record, or the user in another record.
class FeedUserParser final : public KeloAPI::JsonParser<FeedUser> {
public:
    std::shared_ptr<FeedUser> parse(const KeloAPI::JsonObject& json) const override;
};

/// Reads a post by the library's own parser, and the other fields of its record by the library's
/// other parsers. A field that cannot be read is left out.
class FeedPostParser final : public KeloAPI::JsonParser<FeedPost> {
public:
    std::shared_ptr<FeedPost> parse(const KeloAPI::JsonObject& json) const override;
};

/// Reads the cards of a feed: URL actions and solicitations by the library's parsers, mosaics by
/// its constructors. A card of an unknown type is a bare `KLFeedInsert`, so that its list can be
/// read; a malformed card of a known type fails as it does in the library's parsers.
class FeedCardParser final : public KeloAPI::JsonParser<KeloAPI::KLFeedInsert> {
public:
    std::shared_ptr<KeloAPI::KLFeedInsert> parse(const KeloAPI::JsonObject& json) const override;
};

} // namespace KeloHost
