#pragma once

#include "commands/Commands.hpp"
#include "Options.hpp"

#include <optional>
#include <string>

namespace KeloHost {

/// What a command line asks for.
struct Invocation {
    Options options;
    /// The command's work; empty where there is `information`.
    Start start;
    /// What --help or --version prints in its place.
    std::optional<std::string> information;
};

/// Reads the command line and the environment. Throws a `Failure` with `ExitCode::Usage`.
Invocation parseCommandLine(int argc, char** argv);

} // namespace KeloHost
