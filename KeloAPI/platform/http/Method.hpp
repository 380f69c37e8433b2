#pragma once

#include <KeloAPI/platform/Export.hpp>

#include <cstdint>
#include <string_view>

namespace KeloAPI {

/// An HTTP method.
enum class Method : std::uint8_t { OPTIONS, GET, HEAD, POST, PUT, PATCH, DELETE, TRACE, CONNECT };

/// The method's name on the wire.
KELO_API std::string_view name(Method method);

} // namespace KeloAPI
