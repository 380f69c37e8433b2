#include "CommandLine.hpp"

#include "Command.hpp"
#include "Failure.hpp"
#include "KeptSession.hpp"
#include "Terminal.hpp"
#include "Text.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <utility>

namespace KeloHost {

namespace {

constexpr const char* footer =
    "Exit codes: 0 success, 1 the service, the network or a file failed, 2 the command line "
    "cannot\n"
    "be used, 3 the user has to sign in or was refused, 130 Ctrl-C.\n\n"
    "Try it: run `kelo serve` in one terminal and `kelo timeline popular` in another.";

/// CLI11's form of a check: an empty text for a good value, what is wrong otherwise.
std::string checkHost(const std::string& host) {
    const auto url = KeloAPI::URL::parse("https://" + host);
    const bool onlyHost = url && !url->host().empty() && url->path().empty() && !url->query() &&
                          host.find_first_of("@#") == std::string::npos;
    const bool usablePort = onlyHost && url->port().value_or(0) != 0 && host.back() != ':';
    return usablePort ? "" : "'" + host + "' is not of the form HOST or HOST:PORT";
}

std::string checkHeaderValue(const std::string& value) {
    return fitsHeader(value) ? "" : "only printable ASCII characters can be sent";
}

void addGlobalOptions(CLI::App& app, Options& options) {
    app.add_option("--host", options.host, "Where the service is")
        ->envname("KELO_HOST")
        ->type_name("HOST[:PORT]")
        ->capture_default_str()
        ->check(checkHost);
    app.add_option("--session", options.session,
                   "Session key of the signed-in user, in place of the one that login keeps")
        ->envname("KELO_SESSION")
        ->type_name("KEY")
        ->capture_default_str()
        ->check(checkHeaderValue);
    auto* user = app.add_option("--user", options.user,
                                "Sign in as this user, at once or when the session is refused")
                     ->type_name("NAME");
    app.add_option("--password", options.password,
                   "The user's password; - reads it from standard input. Without, it is taken from "
                   "KELO_PASSWORD, or asked for without echo")
        ->type_name("PASSWORD")
        ->needs(user);
    app.add_option("--pin", options.pin, "The service's certificate (PEM); no other is accepted")
        ->envname("KELO_PIN")
        ->type_name("FILE");
    app.add_option("--language", options.language,
                   "Languages of the responses, the preferred one first")
        ->type_name("LANGUAGES")
        ->capture_default_str()
        ->check(checkHeaderValue);
    app.add_flag("--json", options.json, "Print JSON, one object per line");
    app.add_flag("--verbose", options.verbose, "Print each request on standard error");
    app.add_flag("--no-input", options.noInput, "Never ask anything, even on a terminal");
}

/// Reads what the command line leaves to the environment, standard input and the kept session.
void complete(const CLI::App& app, Options& options) {
    if (options.password == "-") {
        // At a terminal it is asked for later, without echo.
        options.password = Terminal::isTyped() ? "" : Terminal::inputLine().value_or("");
        if (options.password.empty() && !Terminal::isTyped()) {
            throw Failure(ExitCode::Usage, "--password: there is none on standard input");
        }
    } else if (const char* password = std::getenv("KELO_PASSWORD");
               password != nullptr && options.password.empty()) {
        options.password = password;
    }
    if (app.count("--session") != 0) {
        return;
    }
    // A user who is named outranks the session that is there by default.
    if (app.count("--user") != 0) {
        options.session.clear();
    } else if (const auto kept = keptSession(serviceAt(options.host))) {
        options.session = kept->key;
        options.sessionIsKept = true;
    }
}

/// A command as CLI11 knows it, and those that may follow its name.
class Reader {
public:
    Reader(CLI::App& app, const Command& command)
        : _command(command)
        , _app(app) {
        for (const Parameter& parameter : command.parameters) {
            parameter.form == Parameter::Form::Flag ? addFlag(parameter) : addOption(parameter);
        }
        for (const Command& one : command.commands) {
            auto* subcommand = app.add_subcommand(one.name, one.help)->group(one.group);
            _readers.push_back(std::make_unique<Reader>(*subcommand, one));
            // `cache` requires one; `work` reports a missing command.
            app.require_subcommand(app.get_parent() == nullptr ? 0 : 1, 1);
        }
        if (command.takesTheRest) {
            app.fallthrough(false);
            app.set_help_flag();
            app.prefix_command();
        }
    }

    /// The work of the command that was chosen.
    std::function<void(const std::shared_ptr<Host>& host)> work() const {
        for (const auto& reader : _readers) {
            if (reader->_app.parsed()) {
                return reader->work();
            }
        }
        if (!_command.work) {
            throw Failure(ExitCode::Usage, "a command is needed, see kelo --help");
        }
        const Arguments arguments = given();
        const std::string problem = _command.check == nullptr ? "" : _command.check(arguments);
        if (!problem.empty()) {
            throw Failure(ExitCode::Usage, problem);
        }
        return [work = _command.work, arguments](const auto& host) { work(host, arguments); };
    }

private:
    void addFlag(const Parameter& parameter) {
        auto* flag = _app.add_flag(parameter.name, parameter.help);
        if (!parameter.excluded.empty()) {
            flag->excludes(_app.get_option(parameter.excluded));
        }
    }

    void addOption(const Parameter& parameter) {
        // `given` reads the option's texts.
        const CLI::callback_t take = [](const CLI::results_t&) { return true; };
        auto* option = _app.add_option(parameter.name, take, parameter.help);
        option->required(!parameter.name.starts_with("--") && !parameter.isOptional)
            ->type_name(parameter.valueName)
            ->default_str(parameter.defaultValue);
        if (parameter.form == Parameter::Form::List) {
            option->expected(CLI::detail::expected_max_vector_size);
        } else if (parameter.form == Parameter::Form::Bitrate) {
            option->check(CLI::NonNegativeNumber);
        } else if (parameter.form == Parameter::Form::Directory) {
            option->check(CLI::ExistingDirectory);
        }
        if (parameter.limits) {
            option->check(CLI::Range(parameter.limits->least, parameter.limits->most));
        }
        if (!parameter.choices.empty()) {
            option->check(CLI::IsMember(parameter.choices));
        }
        if (parameter.check != nullptr) {
            option->check(CLI::Validator(parameter.check, ""));
        }
    }

    Arguments given() const {
        std::map<std::string, Arguments::Value> values;
        for (const Parameter& parameter : _command.parameters) {
            const CLI::Option& option = *_app.get_option(parameter.name);
            const bool isGiven = option.count() != 0;
            if (isGiven || !parameter.defaultValue.empty()) {
                values[parameter.name] = {isGiven ? option.results()
                                                  : CLI::results_t{parameter.defaultValue},
                                          parameter.limits ? option.as<std::int64_t>() : 0};
            }
        }
        if (_command.takesTheRest) {
            values["rest"] = {_app.remaining(), 0};
        }
        return Arguments(std::move(values));
    }

    const Command& _command;
    CLI::App& _app;
    std::vector<std::unique_ptr<Reader>> _readers;
};

} // namespace

Invocation parseCommandLine(int argc, char** argv) {
    Invocation invocation;
    CLI::App app("The command-line host of the short-looping-video service.", "kelo");
    app.footer(footer);
    app.set_version_flag("--version", "kelo " KELO_VERSION);
    // Global options may stand behind the command, too.
    app.fallthrough();
    addGlobalOptions(app, invocation.options);
    const Command root = {.name = "kelo", .help = "", .commands = allCommands()};
    const Reader reader(app, root);
    try {
        app.parse(argc, argv);
        invocation.work = reader.work();
        complete(app, invocation.options);
    } catch (const CLI::CallForHelp&) {
        invocation.information = app.help();
    } catch (const CLI::CallForVersion& version) {
        invocation.information = std::string(version.what()) + "\n";
    } catch (const CLI::ParseError& error) {
        std::string line = error.what();
        std::replace(line.begin(), line.end(), '\n', ' ');
        throw Failure(ExitCode::Usage, line);
    }
    return invocation;
}

} // namespace KeloHost
