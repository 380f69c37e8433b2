#include "service/store/Clock.hpp"

#include <chrono>

namespace KeloService {

std::int64_t currentMilliseconds() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

} // namespace KeloService
