#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

class LoopData;

/// What a watch screen needs of a user. One thread at a time.
class KELO_API KLWatchUser final : public Object {
public:
    /// "username".
    std::optional<std::string> username;
    /// The user's loop counter, from "loopCount" and "loopVelocity"; null when there is none.
    std::shared_ptr<LoopData> loopData;
};

/// Makes a user of any object; never throws. A missing "username" is an empty one, and one that is
/// not text is absent. The loop counter takes both of its keys as numbers.
class KELO_API UserParser final : public JsonParser<KLWatchUser> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLWatchUser> parse(const JsonObject& json) const override;
};

/// The user in a record: the object under "user" where there is one, otherwise what the record
/// itself says of a user. Never null.
KELO_API std::shared_ptr<KLWatchUser> parseUser(const JsonObject& json);

} // namespace KeloAPI
