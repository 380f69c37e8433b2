#include <KeloAPI/platform/archive/Archivable.hpp>

namespace KeloAPI {

Archivable::~Archivable() = default;

} // namespace KeloAPI
