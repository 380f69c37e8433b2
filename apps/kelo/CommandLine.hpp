#pragma once

#include "Options.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace KeloHost {

class Host;

/// What a command line asks for.
struct Invocation {
    Options options;
    /// The command's work; empty where there is `information`.
    std::function<void(const std::shared_ptr<Host>& host)> work;
    /// What --help or --version prints in its place.
    std::optional<std::string> information;
};

/// Reads the command line and the environment. Throws a `Failure` with `ExitCode::Usage`.
Invocation parseCommandLine(int argc, char** argv);

} // namespace KeloHost
