#include "service/store/Images.hpp"

namespace KeloService {

std::optional<StoredImage> Images::find(const std::string& path) {
    const auto lock = database_.lock();
    Query query = database_.query("SELECT seed, side FROM images WHERE path = ?1");
    if (!query.bind(path).next()) {
        return std::nullopt;
    }
    return StoredImage{query.integer(0), static_cast<int>(query.integer(1))};
}

} // namespace KeloService
