#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace KeloHost {

/// Adds a required identifier to a command. It becomes part of a path, so it may not hold what
/// would lead elsewhere.
CLI::Option* addIdentifier(CLI::App& command, const std::string& name, std::string& identifier,
                           const std::string& description);

} // namespace KeloHost
