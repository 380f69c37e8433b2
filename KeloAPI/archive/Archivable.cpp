#include <KeloAPI/archive/Archivable.hpp>

namespace KeloAPI {

Archivable::~Archivable() = default;

} // namespace KeloAPI
