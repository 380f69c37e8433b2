#include "Output.hpp"

#include <cstdio>

namespace KeloHost {

Output::~Output() = default;

void Output::flush() {
    static_cast<void>(std::fflush(stdout));
}

} // namespace KeloHost
