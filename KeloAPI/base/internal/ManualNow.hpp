#pragma once

#include <KeloAPI/base/Date.hpp>

#include <optional>

namespace KeloAPI {

/// Makes `Date::now()` this instant until it is set again; absent, that of the system's clock. From
/// any thread.
void setNow(std::optional<Date> instant);

} // namespace KeloAPI
