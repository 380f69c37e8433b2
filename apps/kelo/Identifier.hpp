#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace KeloHost {

/// CLI11's form of a check: an empty text for an identifier, what is wrong otherwise.
std::string checkIdentifier(const std::string& text);

/// Adds a required identifier to a command. It becomes part of a path, so it may not hold what
/// would lead elsewhere.
CLI::Option* addIdentifier(CLI::App& command, const std::string& name, std::string& identifier,
                           const std::string& description);

} // namespace KeloHost
