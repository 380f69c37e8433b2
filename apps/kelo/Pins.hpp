#pragma once

#include "CommandLine.hpp"

#include <KeloAPI/KeloAPI.hpp>

#include <string>

namespace KeloHost {

/// True for names of this machine's loopback address, with a port or without.
bool isThisMachine(const std::string& host);

/// Hands the library's sessions a manager with these settings, and the certificates that the
/// service may have: the one that the options name, or, for a service on this machine, the one that
/// `kelo serve` made beside those that are built in. Returns which are expected and where they come
/// from, in words. Throws a `Failure` for a file that holds none.
std::string usePins(const Options& options, const KeloAPI::TransportSettings& settings);

} // namespace KeloHost
