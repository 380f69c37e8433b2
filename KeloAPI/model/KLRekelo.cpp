#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/model/KLRekelo.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>

namespace KeloAPI {

std::shared_ptr<KLRekelo> RekeloParser::parse(const JsonObject& json) const {
    auto rekelo = std::make_shared<KLRekelo>();
    const JsonValue repostId = json["repostId"];
    require(repostId.exists(), "a repost has no \"repostId\"");
    rekelo->rekeloId = repostId.description();
    rekelo->user = parseUser(json);
    return rekelo;
}

} // namespace KeloAPI
