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

/// The arguments of a command by the names of its parameters; empty, and 0, for missing ones.
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

/// One parameter of a command: an option where its name begins with "--", otherwise positional.
struct Parameter {
    enum class Form : std::uint8_t {
        Text,
        List,
        Flag,
        Bitrate,
        Directory,
        File,
        /// The words that name a command.
        CommandName,
        /// Flags that ask for a text in place of the command's work.
        Help,
        Version
    };
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
    /// An option above that this flag cannot be combined with.
    std::string excluded = {};
    /// Where it is "-", the work is done for each identifier on standard input.
    bool isForEach = false;
    /// Of a positional parameter that may be left out.
    bool isOptional = false;
    /// An option before it that has to stand beside it.
    std::string needed = {};
    /// The variable of the environment that an option is read from where it is not given.
    std::string environment = {};
    /// A second, short name of a flag, as in "-h".
    std::string shortName = {};

    bool isOption() const { return name.starts_with("--"); }
    bool isList() const { return form == Form::List || form == Form::CommandName; }
    bool takesValue() const {
        return form != Form::Flag && form != Form::Help && form != Form::Version;
    }
};

/// A command line as a user may give it, and what it is good for.
struct Example {
    std::string line;
    std::string help;
};

/// One command.
struct Command {
    std::string name;
    std::string help;
    std::vector<Parameter> parameters = {};
    /// Starts the command and returns. The program ends at `Host::end`, or with a `Failure` that
    /// this throws.
    std::function<void(const std::shared_ptr<Host>& host, const Arguments& arguments)> work = {};
    /// Subcommands in place of `work`; one of them is required.
    std::vector<Command> commands = {};
    /// Returns what is wrong with the arguments together; an empty text for good ones.
    std::string (*check)(const Arguments& arguments) = nullptr;
    /// Whatever follows, --help included, becomes the parameter "rest".
    bool takesTheRest = false;
    /// The heading that the help text has it under; no text mentions a command without one.
    std::string group = "Commands";
    std::vector<Example> examples = {};
    /// In place of `work`: a text that is made of the description of all of kelo. Throws a
    /// `Failure` for what is not there.
    std::string (*describe)(const Command& kelo, const Arguments& arguments) = nullptr;
};

/// kelo itself: its parameters are the options that every command has, its commands are in the
/// order of the help text.
Command wholeProgram();

} // namespace KeloHost
