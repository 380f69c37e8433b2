#pragma once

#include <KeloAPI/base/Export.hpp>

#include <cstdint>
#include <string_view>

// Windows' headers make DELETE a macro: it is set aside for the length of this file.
#pragma push_macro("DELETE")
#undef DELETE

namespace KeloAPI {

/// An HTTP method.
enum class Method : std::uint8_t { OPTIONS, GET, HEAD, POST, PUT, PATCH, DELETE, TRACE, CONNECT };

/// `Method::DELETE` for sources in which that is a macro.
inline constexpr Method deleteMethod = Method::DELETE;

/// The method's name on the wire.
KELO_API std::string_view name(Method method);

} // namespace KeloAPI

#pragma pop_macro("DELETE")
