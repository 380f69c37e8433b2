#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

std::shared_ptr<KLWatchUser> UserParser::parse(const JsonObject& json) const {
    const auto [username, loopCount, loopVelocity] =
        json.values("username", "loopCount", "loopVelocity");
    auto user = std::make_shared<KLWatchUser>();
    user->username = textOrEmpty(username);
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
