#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace KeloAPI {

/// The "charset" parameter of a Content-Type value, without quotes; empty when there is none.
std::string charsetOf(std::string_view contentType);

/// `bytes` in that character set as UTF-8; none when the set is not known or the bytes are not
/// text of it.
std::optional<std::string> decodedText(std::string_view bytes, const std::string& charset);

} // namespace KeloAPI
