#include "CommandLine.hpp"

#include "Color.hpp"
#include "Command.hpp"
#include "CommonOptions.hpp"
#include "Help.hpp"
#include "KeptSession.hpp"
#include "Slip.hpp"
#include "Terminal.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <utility>

namespace KeloHost {

namespace {

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
            add(parameter);
        }
        for (const Command& one : command.commands) {
            auto* subcommand = app.add_subcommand(one.name);
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

    /// The command that was chosen, and those that it belongs to.
    CommandPath path() const {
        CommandPath all = {&_command};
        for (const auto& reader : _readers) {
            if (reader->_app.parsed()) {
                const CommandPath more = reader->path();
                all.insert(all.end(), more.begin(), more.end());
            }
        }
        return all;
    }

    /// What that command was given.
    Arguments chosenArguments() const {
        for (const auto& reader : _readers) {
            if (reader->_app.parsed()) {
                return reader->chosenArguments();
            }
        }
        return given();
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

private:
    using Form = Parameter::Form;

    void add(const Parameter& parameter) {
        const std::string names =
            (parameter.shortName.empty() ? "" : parameter.shortName + ",") + parameter.name;
        if (parameter.form == Form::Help) {
            _app.set_help_flag(names);
        } else if (parameter.form == Form::Version) {
            _app.set_version_flag(names, "kelo " KELO_VERSION);
        } else if (parameter.form == Form::Flag) {
            addFlag(parameter);
        } else {
            addOption(parameter);
        }
    }

    void addFlag(const Parameter& parameter) {
        auto* flag = _app.add_flag(parameter.name);
        if (!parameter.excluded.empty()) {
            flag->excludes(_app.get_option(parameter.excluded));
        }
    }

    void addOption(const Parameter& parameter) {
        // `given` reads the texts of the option.
        const CLI::callback_t take = [](const CLI::results_t&) { return true; };
        auto* option = _app.add_option(parameter.name, take);
        option->required(!parameter.isOption() && !parameter.isOptional)
            ->type_name(parameter.valueName)
            ->default_str(parameter.defaultValue)
            ->envname(parameter.environment);
        if (!parameter.needed.empty()) {
            option->needs(_app.get_option(parameter.needed));
        }
        if (parameter.isList()) {
            option->expected(CLI::detail::expected_max_vector_size);
        } else if (parameter.form == Form::Bitrate) {
            option->check(CLI::NonNegativeNumber);
        } else if (parameter.form == Form::Directory) {
            option->check(CLI::ExistingDirectory);
        }
        if (parameter.limits) {
            option->check(CLI::Range(parameter.limits->least, parameter.limits->most));
        }
        if (!parameter.choices.empty()) {
            option->check(CLI::Validator(
                [isMember = CLI::IsMember(parameter.choices), &parameter](std::string& word) {
                    const std::string problem = isMember(word);
                    return problem.empty() ? "" : problem + didYouMean(word, parameter.choices);
                },
                ""));
        }
        if (parameter.check != nullptr) {
            option->check(CLI::Validator(parameter.check, ""));
        }
    }

    const Command& _command;
    CLI::App& _app;
    std::vector<std::unique_ptr<Reader>> _readers;
};

/// What the command that was chosen does, or says.
void choose(Invocation& invocation, const Reader& reader) {
    const CommandPath path = reader.path();
    const Command& command = *path.back();
    const Arguments arguments = reader.chosenArguments();
    const std::string problem = command.check == nullptr ? "" : command.check(arguments);
    if (!problem.empty()) {
        throw unusable(path, problem);
    }
    if (command.describe != nullptr) {
        invocation.information = command.describe(*path.front(), arguments);
    } else if (command.work) {
        invocation.work = [work = command.work, arguments](const auto& host) {
            work(host, arguments);
        };
    } else {
        throw unusable(path, "a command is needed");
    }
}

} // namespace

Invocation parseCommandLine(int argc, char** argv) {
    const Command kelo = wholeProgram();
    CLI::App app("", kelo.name);
    // Common options may stand behind the command, too.
    app.fallthrough();
    const Reader reader(app, kelo);
    Invocation invocation;
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        setColor(reader.given().text("--color"));
        invocation.information = helpText(reader.path());
        return invocation;
    } catch (const CLI::CallForVersion& version) {
        invocation.information = std::string(version.what()) + "\n";
        return invocation;
    } catch (const CLI::ParseError& error) {
        setColor(reader.given().text("--color"));
        const auto unread = app.remaining(true);
        if (!unread.empty()) {
            throw unexpected(reader.path(), unread.front());
        }
        std::string line = error.what();
        std::replace(line.begin(), line.end(), '\n', ' ');
        throw unusable(reader.path(), line);
    }
    invocation.options = commonOptions(reader.given());
    setColor(reader.given().text("--color"));
    choose(invocation, reader);
    if (!invocation.information) {
        complete(app, invocation.options);
    }
    return invocation;
}

} // namespace KeloHost
