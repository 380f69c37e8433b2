#include "service/routes/Routes.hpp"

namespace KeloService {
namespace {

Json soundRecord(const Sound& sound, const std::string& baseUrl) {
    Json record{{"soundId", sound.soundId},
                {"name", sound.name},
                {"soundUrl", baseUrl + sound.path},
                {"featured", sound.featured}};
    if (sound.sourcePostId) {
        record["sourcePostId"] = *sound.sourcePostId;
    }
    return record;
}

} // namespace

void addSoundboardRoutes(Router& router, const Context& context) {
    router.add("GET", "/soundboard", [&context](const Call&) {
        Json records = Json::array();
        for (const Sound& sound : context.store.sounds.list()) {
            records.push_back(soundRecord(sound, context.baseUrl));
        }
        return dataAnswer({{"count", records.size()}, {"records", records}});
    });
}

} // namespace KeloService
