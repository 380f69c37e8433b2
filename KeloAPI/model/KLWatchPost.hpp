#pragma once

#include <KeloAPI/base/Date.hpp>
#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

class KLRekelo;
class KLWatchUser;

/// One short looping video, published by a user. One thread at a time.
class KELO_API KLWatchPost final : public Object {
public:
    /// "postId", sent as a number or as text.
    std::optional<std::string> postId;
    /// The author, from the user keys of the record. Null only until a parser sets it; a record
    /// that tells of no user has one with an empty name.
    std::shared_ptr<KLWatchUser> user;
    /// "description".
    std::optional<std::string> caption;
    /// "created".
    std::optional<Date> created;
    /// URL of the default rendition, from "videoUrls".
    std::optional<std::string> videoUrl;
    /// "thumbnailUrl".
    std::optional<std::string> thumbnailUrl;
    /// "liked": whether the signed-in user likes the post.
    std::optional<bool> liked;
    /// The signed-in user's repost of the post, from "myRepostId"; null when there is none.
    std::shared_ptr<KLRekelo> currentUserRekelo;

    /// Whether the signed-in user has reposted the post.
    bool rekeloed() const { return currentUserRekelo != nullptr; }
};

/// Makes a post of a timeline's record; never throws. A record without "postId" stops the process.
/// A missing "description" or "thumbnailUrl" is an empty text, one of another kind is absent. The
/// video is the first entry of "videoUrls" with a "videoUrl" and the "rate" 0.
class KELO_API PostParser final : public JsonParser<KLWatchPost> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLWatchPost> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
