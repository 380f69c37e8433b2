#include <KeloAPI/platform/Object.hpp>

namespace KeloAPI {

Object::~Object() = default;

} // namespace KeloAPI
