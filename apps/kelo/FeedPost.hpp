#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace KeloAPI {
class KLByline;
class KLEntity;
class KLPostAudioMetadata;
class KLTag;
class KLVenue;
class KLWatchPost;
} // namespace KeloAPI

namespace KeloHost {

/// A post with what stands beside it in its record. What is not there is null, absent or empty.
class FeedPost final : public KeloAPI::Object {
public:
    /// Never null once parsed.
    std::shared_ptr<KeloAPI::KLWatchPost> post;
    std::optional<std::string> channel;
    std::shared_ptr<KeloAPI::KLVenue> venue;
    std::shared_ptr<KeloAPI::KLByline> byline;
    std::shared_ptr<KeloAPI::KLPostAudioMetadata> audio;
    std::vector<std::shared_ptr<KeloAPI::KLTag>> tags;
    /// The linked stretches of the caption.
    std::vector<std::shared_ptr<KeloAPI::KLEntity>> entities;

    FeedPost() = default;
    ~FeedPost() override;
};

/// Reads a record as the library's own parser of posts does, and what stands beside it by the
/// library's other parsers. What one of those cannot read is left out.
class FeedPostParser final : public KeloAPI::JsonParser<FeedPost> {
public:
    std::shared_ptr<FeedPost> parse(const KeloAPI::JsonObject& json) const override;
};

} // namespace KeloHost
