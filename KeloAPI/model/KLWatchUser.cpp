#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>

namespace KeloAPI {

std::shared_ptr<KLWatchUser> UserParser::parse(const JsonObject& json) const {
    const auto [username, loopCount, loopVelocity] =
        json.values("username", "loopCount", "loopVelocity");
    auto user = std::make_shared<KLWatchUser>();
    if (!username.exists()) {
        user->username.emplace();
    } else if (const auto text = username.text()) {
        user->username.emplace(*text);
    }
    const auto count = loopCount.number();
    const auto velocity = loopVelocity.number();
    if (count && velocity) {
        user->loopData = std::make_shared<LoopData>(*count, *velocity);
    }
    return user;
}

std::shared_ptr<KLWatchUser> parseUser(const JsonObject& json) {
    return UserParser().parse(json["user"].object().value_or(json));
}

} // namespace KeloAPI
