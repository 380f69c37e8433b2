#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace KeloHost {

class Host;

/// The options of every command, from the command line and the environment.
struct Options {
    /// HOST or HOST:PORT of the service.
    std::string host = "localhost:8443";
    /// Session key of the signed-in user; empty for nobody. By default the one that `kelo-service`
    /// knows from the start, which no real service does.
    std::string session = "kelo-development-session";
    /// That key is the one that `kelo login` keeps for the host.
    bool sessionIsKept = false;
    /// For signing in; empty where they are to be asked for.
    std::string user;
    std::string password;
    /// File (PEM) of the one certificate that the service may have; empty where nobody names one.
    std::string pin;
    /// Value of "Accept-Language"; empty to send none.
    std::string language = "en-US";
    /// JSON instead of text on standard output.
    bool json = false;
    /// The library's diagnostics on standard error.
    bool verbose = false;
    /// File that what the calls take is written to; empty for none.
    std::string trace;
    /// Never ask the user anything.
    bool noInput = false;
};

/// What a command line asks for.
struct Invocation {
    Options options;
    /// The command's work; empty where there is `information`.
    std::function<void(const std::shared_ptr<Host>& host)> work;
    /// What is printed in its place: a help text, the version, ...
    std::optional<std::string> information;
};

/// Reads the command line and the environment. Throws a `Failure` with `ExitCode::Usage`.
Invocation parseCommandLine(int argc, char** argv);

} // namespace KeloHost
