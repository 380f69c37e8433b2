#pragma once

#include <KeloAPI/json/Parameters.hpp>

#include <optional>
#include <string>

namespace KeloAPI {

/// `value` as compact JSON in UTF-8; none where it has no JSON form: an infinite double, one that
/// is not a number, or a text that is not UTF-8.
std::optional<std::string> jsonText(const ParameterValue& value);
/// The same for a map.
std::optional<std::string> jsonText(const Parameters& map);

} // namespace KeloAPI
