#pragma once

#include "Failure.hpp"

#include <KeloAPI/base/Error.hpp>

#include <string>

namespace KeloHost {

/// What a call's error means to a person, in one line. `host` is where the call went.
Failure explained(const KeloAPI::Error& error, const std::string& host);

} // namespace KeloHost
