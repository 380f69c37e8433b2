#include "service/Clock.hpp"

#include <chrono>
#include <ctime>

namespace KeloService {

std::int64_t currentMilliseconds() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::string dateText(std::int64_t milliseconds) {
    const std::time_t seconds = milliseconds / 1000;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[32];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S.", &parts);
    // Three digits for the milliseconds, whose first are zeros where they are few.
    return std::string(text, length) + std::to_string(1000 + milliseconds % 1000).substr(1) + "000";
}

} // namespace KeloService
