#pragma once

#include <string>

namespace KeloAPI {

/// The shortest decimal text that reads back as this finite number: always with a point, never with
/// an exponent.
std::string decimalText(double value);

} // namespace KeloAPI
