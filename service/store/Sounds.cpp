#include "service/store/Sounds.hpp"

namespace KeloService {

std::vector<Sound> Sounds::list() {
    const auto lock = database_.lock();
    std::vector<Sound> sounds;
    Query query = database_.query(
        "SELECT soundId, name, path, featured, sourcePostId FROM sounds ORDER BY soundId");
    while (query.next()) {
        Sound sound{query.integer(0), query.text(1), query.text(2), query.boolean(3), {}};
        if (!query.isNull(4)) {
            sound.sourcePostId = query.integer(4);
        }
        sounds.push_back(std::move(sound));
    }
    return sounds;
}

} // namespace KeloService
