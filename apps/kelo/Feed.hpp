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

/// A post with what stands beside it in its record. What is not there is null, absent or empty.
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

/// Reads a record as the library's own parser of posts does, and what stands beside it by the
/// library's other parsers. What one of those cannot read is left out.
class FeedPostParser final : public KeloAPI::JsonParser<FeedPost> {
public:
    std::shared_ptr<FeedPost> parse(const KeloAPI::JsonObject& json) const override;
};

/// Reads the cards of a feed: URL actions and solicitations by the library's parsers, mosaics by
/// its constructors. A card of an unknown type is a bare `KLFeedInsert`, so that it does not spoil
/// its list; one of a known type that cannot be read fails as the library's parsers do.
class FeedCardParser final : public KeloAPI::JsonParser<KeloAPI::KLFeedInsert> {
public:
    std::shared_ptr<KeloAPI::KLFeedInsert> parse(const KeloAPI::JsonObject& json) const override;
};

} // namespace KeloHost
