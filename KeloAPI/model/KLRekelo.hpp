#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

class KLWatchUser;

/// A user's repost of a post. One thread at a time.
class KELO_API KLRekelo final : public Object {
public:
    /// "repostId", sent as a number or as text; in a post's `currentUserRekelo`, the number under
    /// the post's "myRepostId".
    std::optional<std::string> rekeloId;
    /// Who reposted. Null only until a parser of reposts sets it; a record that tells of no user
    /// has one with an empty name. Null in a post's `currentUserRekelo`: there it is the signed-in
    /// user.
    std::shared_ptr<KLWatchUser> user;
};

/// Never throws. An object without "repostId" stops the process.
class KELO_API RekeloParser final : public JsonParser<KLRekelo> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLRekelo> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
