#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace KeloService {

/// The standard alphabet, with padding.
std::string encodeBase64(std::string_view bytes);
/// Absent when the text is not base64 with padding.
std::optional<std::string> decodeBase64(std::string_view text);

} // namespace KeloService
