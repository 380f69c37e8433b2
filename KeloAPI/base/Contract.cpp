#include <KeloAPI/base/Contract.hpp>

#include <cstdio>
#include <cstdlib>

namespace KeloAPI {

void contractViolation(std::string_view what) noexcept {
    // The process ends whether or not the line could be written.
    static_cast<void>(std::fprintf(stderr, "KeloAPI: contract violated: %.*s\n",
                                   static_cast<int>(what.size()), what.data()));
    std::abort();
}

} // namespace KeloAPI
