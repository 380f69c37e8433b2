#include <KeloAPI/http/Method.hpp>

#include <array>
#include <cstddef>

namespace KeloAPI {

std::string_view name(Method method) {
    constexpr std::array<std::string_view, 9> names = {
        "OPTIONS", "GET", "HEAD", "POST", "PUT", "PATCH", "DELETE", "TRACE", "CONNECT"};
    return names.at(static_cast<std::size_t>(method));
}

} // namespace KeloAPI
