#pragma once

#include "CommandLine.hpp"

#include <KeloAPI/KeloAPI.hpp>

#include <string>

namespace KeloHost {

/// True for localhost and for the numbers of this machine's loopback addresses, with a port or
/// without.
bool isThisMachine(const std::string& host);

/// Hands the library's sessions a manager with these settings, and the certificates that the
/// service may have: the one that the options name, or, for a service on this machine, the one that
/// `kelo serve` made beside those that are built in. Returns a clause that says which are expected,
/// where they come from, and which file was looked for in vain. Throws a `Failure` for a file that
/// is named and holds none.
std::string usePins(const Options& options, const KeloAPI::TransportSettings& settings);

} // namespace KeloHost
