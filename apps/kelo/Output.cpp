#include "Output.hpp"

namespace KeloHost {

Output::~Output() = default;

} // namespace KeloHost
