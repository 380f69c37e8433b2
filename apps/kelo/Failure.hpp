#pragma once

#include <KeloAPI/KeloAPI.hpp>

#include <stdexcept>
#include <string>
#include <utility>

namespace KeloHost {

/// The program's exit codes. A signal's is 128 and its number: 130 for Ctrl-C.
enum class ExitCode : int {
    Success = 0,
    /// The service, the network or a file failed.
    Failed = 1,
    /// The command line cannot be used.
    Usage = 2,
    /// The user has to sign in, or was refused.
    SignIn = 3,
    /// Ctrl-C, where there was something to end first.
    Interrupted = 130,
};

/// Why the program fails: an exit code and one line for the user, empty when the reason has been
/// printed already. Of a slip on the command line, a hint is another line.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& line, std::string hint = "")
        : std::runtime_error(line)
        , _code(code)
        , _hint(std::move(hint)) {}

    ExitCode code() const { return _code; }
    const std::string& hint() const { return _hint; }

private:
    ExitCode _code;
    std::string _hint;
};

/// What a call's error means to a person, in one line. `host` is where the call went.
Failure explained(const KeloAPI::Error& error, const std::string& host,
                  const std::string& expectedPins);

} // namespace KeloHost
