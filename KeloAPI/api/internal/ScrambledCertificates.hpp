#pragma once

#include <KeloAPI/http/Certificate.hpp>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace KeloAPI {

/// The certificates among these scrambled texts.
std::vector<Certificate> certificates(std::span<const std::string_view> scrambled);

/// A scrambled text as the base64 text it stands for: groups of hexadecimal digits separated by
/// blanks, each a character exclusive-or a key that moves with its position. None when a group is
/// no such number.
std::optional<std::string> decoded(std::string_view scrambled);

} // namespace KeloAPI
