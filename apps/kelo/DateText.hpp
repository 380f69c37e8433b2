#pragma once

#include <KeloAPI/base/Date.hpp>

#include <string>

namespace KeloHost {

/// "2016-03-01T12:00:00.250Z"
std::string isoText(KeloAPI::Date date);
/// "2016-03-01 12:00", in UTC.
std::string shortText(KeloAPI::Date date);

} // namespace KeloHost
