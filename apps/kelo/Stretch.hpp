#pragma once

#include <KeloAPI/base/Range.hpp>

#include <string>
#include <string_view>

namespace KeloHost {

/// The stretch of a UTF-8 text that a range in UTF-16 code units covers; what lies behind the
/// text's end is left out.
std::string stretchOf(std::string_view text, KeloAPI::Range range);

} // namespace KeloHost
