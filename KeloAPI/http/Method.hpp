#pragma once

#include <KeloAPI/base/Export.hpp>

#include <cstdint>
#include <string_view>

// Windows' headers make DELETE a macro: it is set aside for the length of this file.
#pragma push_macro("DELETE")
#undef DELETE

namespace KeloAPI {

/// An HTTP method.
enum class Method : std::uint8_t {
    OPTIONS, ///< Asks what may be done with a resource.
    GET,     ///< Reads a resource.
    HEAD,    ///< Reads what `GET` would answer, without the body.
    POST,    ///< Hands data to a resource, to act on.
    PUT,     ///< Puts the body in the place of a resource.
    PATCH,   ///< Changes a part of a resource.
    DELETE,  ///< Removes a resource; see also `deleteMethod`.
    TRACE,   ///< Asks for the request as it arrived.
    CONNECT  ///< Asks a proxy for a tunnel.
};

/// `Method::DELETE` for sources in which that is a macro.
inline constexpr Method deleteMethod = Method::DELETE;

/// The method's name on the wire.
KELO_API std::string_view name(Method method);

} // namespace KeloAPI

#pragma pop_macro("DELETE")
