#include "CommandLine.hpp"

#include "Failure.hpp"

#include <KeloAPI/base/URL.hpp>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <string_view>

namespace KeloHost {

namespace {

constexpr const char* footer =
    "Exit codes: 0 success, 1 the service, the network or a file failed, 2 the command line "
    "cannot\n"
    "be used, 3 the user has to sign in or was refused, 130 Ctrl-C.\n\n"
    "Try it: run `kelo serve` in one terminal and `kelo timeline popular` in another.";

std::string oneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

/// CLI11's form of a check: an empty text for a good value, what is wrong otherwise.
std::string checkHost(const std::string& host) {
    const auto url = KeloAPI::URL::parse("https://" + host);
    const bool onlyHost = url && !url->host().empty() && url->path().empty() && !url->query() &&
                          host.find_first_of("@#") == std::string::npos;
    const bool usablePort = onlyHost && url->port().value_or(0) != 0 && host.back() != ':';
    return usablePort ? "" : "'" + host + "' is not of the form HOST or HOST:PORT";
}

/// A header field takes no control characters, and HTTP promises nothing beyond ASCII.
std::string checkHeaderValue(const std::string& value) {
    const bool good =
        std::all_of(value.begin(), value.end(), [](char c) { return c >= ' ' && c <= '~'; });
    return good ? "" : "only printable ASCII characters can be sent";
}

void addGlobalOptions(CLI::App& app, Options& options) {
    app.add_option("--host", options.host, "Where the service is")
        ->envname("KELO_HOST")
        ->type_name("HOST[:PORT]")
        ->capture_default_str()
        ->check(checkHost);
    app.add_option("--session", options.session, "Session key of the signed-in user")
        ->envname("KELO_SESSION")
        ->type_name("KEY")
        ->capture_default_str()
        ->check(checkHeaderValue);
    auto* user = app.add_option("--user", options.user,
                                "Sign in as this user, at once or when the session is refused")
                     ->type_name("NAME");
    app.add_option("--password", options.password, "The user's password; asked for otherwise")
        ->type_name("PASSWORD")
        ->needs(user);
    app.add_option("--language", options.language, "Languages to be answered in")
        ->type_name("LANGUAGES")
        ->capture_default_str()
        ->check(checkHeaderValue);
    app.add_flag("--json", options.json, "Print JSON: one object a line");
    app.add_flag("--verbose", options.verbose, "Tell on standard error what is sent");
    app.add_flag("--no-input", options.noInput, "Ask nothing, even on a terminal");
}

/// The command that was chosen. Its own complaint is better than CLI11's where there is none.
const Command& chosen(const std::vector<Command>& commands) {
    const auto found = std::find_if(commands.begin(), commands.end(),
                                    [](const Command& command) { return command.app->parsed(); });
    if (found == commands.end()) {
        throw Failure(ExitCode::Usage, "a command is needed, see kelo --help");
    }
    return *found;
}

} // namespace

Invocation parseCommandLine(int argc, char** argv) {
    Invocation invocation;
    CLI::App app("The command-line host of the short-looping-video service.", "kelo");
    app.footer(footer);
    app.set_version_flag("--version", "kelo " KELO_VERSION);
    // Global options may stand behind the command, too.
    app.fallthrough();
    app.require_subcommand(0, 1);
    addGlobalOptions(app, invocation.options);
    const std::vector<Command> commands = addCommands(app);
    try {
        app.parse(argc, argv);
        // A user who is named outranks the session that is there by default.
        if (app.count("--user") != 0 && app.count("--session") == 0) {
            invocation.options.session.clear();
        }
        invocation.start = chosen(commands).start;
    } catch (const CLI::CallForHelp&) {
        invocation.information = app.help();
    } catch (const CLI::CallForVersion& version) {
        invocation.information = std::string(version.what()) + "\n";
    } catch (const CLI::ParseError& error) {
        throw Failure(ExitCode::Usage, oneLine(error.what()));
    }
    return invocation;
}

} // namespace KeloHost
