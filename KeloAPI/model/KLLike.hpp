#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

class KLWatchUser;

/// A user's like of a post. One thread at a time.
class KELO_API KLLike final : public Object {
public:
    /// "likeId", sent as a number or as text.
    std::optional<std::string> likeId;
    /// Who likes. Null only until a parser sets it; a record that tells of no user has one with an
    /// empty name.
    std::shared_ptr<KLWatchUser> user;
};

/// Never throws. An object without "likeId" stops the process.
class KELO_API LikeParser final : public JsonParser<KLLike> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLLike> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
