#include <KeloAPI/model/KLEmpty.hpp>

namespace KeloAPI {

KLEmpty::~KLEmpty() = default;

std::shared_ptr<KLEmpty> KLEmptyParser::parse(const JsonObject&) const {
    return std::make_shared<KLEmpty>();
}

} // namespace KeloAPI
