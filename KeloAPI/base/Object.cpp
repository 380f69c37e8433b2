#include <KeloAPI/base/Object.hpp>

namespace KeloAPI {

Object::~Object() = default;

} // namespace KeloAPI
