#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace KeloHost {

class Host;

/// What a command was given, by the names of its parameters. What was not given is empty, and 0.
class Arguments {
public:
    struct Value {
        std::vector<std::string> texts;
        std::int64_t number = 0;
    };

    explicit Arguments(std::map<std::string, Value> values = {})
        : _values(std::move(values)) {}

    bool has(const std::string& name) const { return _values.count(name) != 0; }
    std::vector<std::string> texts(const std::string& name) const {
        return has(name) ? _values.at(name).texts : std::vector<std::string>();
    }
    std::string text(const std::string& name) const {
        const auto all = texts(name);
        return all.empty() ? "" : all.front();
    }
    /// The same with another text for one parameter.
    Arguments with(const std::string& name, const std::string& text) const {
        auto values = _values;
        values[name].texts = {text};
        return Arguments(std::move(values));
    }
    /// Of a parameter with limits.
    std::int64_t number(const std::string& name) const {
        return has(name) ? _values.at(name).number : 0;
    }

private:
    const std::map<std::string, Value> _values;
};

/// One parameter of a command: an option with "--" before its name, else a place on the line.
struct Parameter {
    enum class Form : std::uint8_t { Text, List, Flag, Bitrate, Directory };
    struct Limits {
        std::int64_t least;
        std::int64_t most;
    };

    std::string name;
    std::string help;
    Form form = Form::Text;
    /// What the help text calls the value of an option.
    std::string valueName = {};
    std::string defaultValue = {};
    /// Of a whole number.
    std::optional<Limits> limits = {};
    std::vector<std::string> choices = {};
    /// Returns what is wrong with a text, or with one of a list; an empty text for a good one.
    std::string (*check)(const std::string& text) = nullptr;
    /// An option before it that a flag cannot stand beside.
    std::string excluded = {};
    /// The work is done for each identifier on standard input where "-" is given.
    bool isForEach = false;
    /// Of a place that may stay empty.
    bool isOptional = false;
};

/// One command.
struct Command {
    std::string name;
    std::string help;
    std::vector<Parameter> parameters = {};
    /// Returns at once, and what it started ends the program by `Host::end`; a `Failure` that it
    /// throws ends the program, too.
    std::function<void(const std::shared_ptr<Host>& host, const Arguments& arguments)> work = {};
    /// In place of `work`: of these, one has to follow the name.
    std::vector<Command> commands = {};
    /// Returns what is wrong with the arguments together; an empty text for good ones.
    std::string (*check)(const Arguments& arguments) = nullptr;
    /// Whatever follows, --help included, becomes the parameter "rest".
    bool takesTheRest = false;
    /// The heading that the help text has it under.
    std::string group = "Subcommands";
};

/// Every command, in the order of the help text.
std::vector<Command> allCommands();

} // namespace KeloHost
