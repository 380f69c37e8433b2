#pragma once

#include "service/Service.hpp"

#include <optional>
#include <stdexcept>
#include <string>

namespace KeloService {

/// A command line that cannot be used; the text is one line that says why.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct Options {
    Settings settings;
    bool quiet = false;
    bool exitWithParent = false;
    /// What --help or --version asks to be printed instead of serving.
    std::optional<std::string> information;
};

/// Reads the command line of kelo-service. `executable` is the program's own file, beside whose
/// folder the development certificates lie. Throws UsageError.
Options parseOptions(int argc, const char* const* argv, const std::string& executable);

} // namespace KeloService
