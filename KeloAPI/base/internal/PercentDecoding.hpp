#pragma once

#include <string>
#include <string_view>

namespace KeloAPI {

/// `text` with its percent escapes undone. A "%" without two hexadecimal digits stays.
std::string percentDecoded(std::string_view text);

} // namespace KeloAPI
