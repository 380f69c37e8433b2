#include "Help.hpp"

#include "Color.hpp"
#include "Terminal.hpp"
#include "Text.hpp"

#include <algorithm>

namespace KeloHost {

namespace {

constexpr std::size_t usualColumns = 80;
/// Longer lines are hard to read, shorter ones hold no word.
constexpr std::size_t mostColumns = 100;
constexpr std::size_t leastColumns = 20;
/// Wider names have their text below.
constexpr std::size_t widestName = 28;
constexpr std::size_t nameIndent = 2;
constexpr std::size_t textIndent = 6;

std::string nameOf(const Parameter& parameter) {
    return (parameter.shortName.empty() ? "" : parameter.shortName + ", ") + parameter.name +
           (parameter.isOption() && parameter.takesValue() ? " " + parameter.valueName : "") +
           (parameter.isList() ? "..." : "");
}

std::string textOf(const Parameter& parameter) {
    std::vector<std::string> notes;
    if (parameter.limits) {
        notes.push_back(std::to_string(parameter.limits->least) + " to " +
                        std::to_string(parameter.limits->most));
    }
    const auto isNamed = [&](const std::string& choice) {
        return parameter.help.find(choice) != std::string::npos;
    };
    if (!std::all_of(parameter.choices.begin(), parameter.choices.end(), isNamed)) {
        notes.push_back("one of " + joined(parameter.choices, ", "));
    }
    if (!parameter.defaultValue.empty()) {
        notes.push_back("default: " + parameter.defaultValue);
    }
    if (!parameter.environment.empty()) {
        notes.push_back("environment: " + parameter.environment);
    }
    if (!parameter.needed.empty()) {
        notes.push_back("needs " + parameter.needed);
    }
    if (!parameter.excluded.empty()) {
        notes.push_back("not with " + parameter.excluded);
    }
    return parameter.help + (notes.empty() ? "" : " (" + joined(notes, "; ") + ")");
}

/// The text in lines of so many columns, each behind as many blanks.
std::string wrapped(const std::string& text, std::size_t indent, std::size_t columns) {
    std::string lines;
    for (const std::string& line : wrappedLines(text, columns - std::min(columns, indent))) {
        lines += std::string(indent, ' ') + line + "\n";
    }
    return lines;
}

/// Names in one column and their texts in another, or below, as there is room.
std::string wrapped(const Section& section, std::size_t columns) {
    std::size_t width = 0;
    for (const Entry& entry : section.entries) {
        width = std::max(width, displayWidth(entry.name));
    }
    const bool isBelow = width > widestName || columns < 2 * widestName;
    std::string text = "\n" + styled(section.heading + ":", Style::Bold, Stream::Output) + "\n";
    for (const Entry& entry : section.entries) {
        const std::string name = std::string(nameIndent, ' ') + entry.name;
        if (isBelow) {
            text += name + "\n" + wrapped(entry.text, textIndent, columns);
        } else {
            const std::size_t indent = nameIndent + width + 2;
            text += padded(name, indent) + wrapped(entry.text, indent, columns).substr(indent);
        }
    }
    return text;
}

void addIfAny(std::vector<Section>& sections, const std::string& heading,
              std::vector<Entry> entries) {
    if (!entries.empty()) {
        sections.push_back({heading, std::move(entries)});
    }
}

/// Commands that follow one another under the same heading are one section.
void addCommands(std::vector<Section>& sections, const std::vector<Command>& commands) {
    for (const Command& command : commands) {
        if (command.group.empty()) {
            continue;
        }
        if (sections.empty() || sections.back().heading != command.group) {
            sections.push_back({command.group, {}});
        }
        sections.back().entries.push_back({command.name, command.help});
    }
}

} // namespace

std::string nameOf(const CommandPath& path) {
    std::string name;
    for (const Command* command : path) {
        name += (name.empty() ? "" : " ") + command->name;
    }
    return name;
}

std::string usageOf(const CommandPath& path) {
    const Command& command = *path.back();
    std::string usage = nameOf(path);
    if (command.takesTheRest) {
        return usage + " [ARGUMENTS]";
    }
    usage += " [OPTIONS]";
    for (const Parameter& parameter : command.parameters) {
        if (!parameter.isOption()) {
            const std::string place = nameOf(parameter);
            usage += parameter.isOptional ? " [" + place + "]" : " " + place;
        }
    }
    return command.commands.empty() ? usage : usage + " COMMAND";
}

void forEachCommand(const CommandPath& path, const std::function<void(const CommandPath&)>& use) {
    for (const Command& command : path.back()->commands) {
        if (!command.group.empty()) {
            CommandPath inner = path;
            inner.push_back(&command);
            use(inner);
            forEachCommand(inner, use);
        }
    }
}

std::vector<Entry> entriesOf(const std::vector<Parameter>& parameters, bool options) {
    std::vector<Entry> entries;
    for (const Parameter& parameter : parameters) {
        if (parameter.isOption() == options) {
            entries.push_back({nameOf(parameter), textOf(parameter)});
        }
    }
    return entries;
}

std::vector<Section> sectionsOf(const CommandPath& path) {
    const Command& command = *path.back();
    std::vector<Section> sections;
    addIfAny(sections, "Arguments", entriesOf(command.parameters, false));
    addCommands(sections, command.commands);
    addIfAny(sections, "Options", entriesOf(command.parameters, true));
    addIfAny(sections, "Examples", examplesIn(command));
    return sections;
}

std::vector<Entry> examplesIn(const Command& command) {
    std::vector<Entry> entries;
    for (const Example& example : command.examples) {
        entries.push_back({example.line, example.help});
    }
    return entries;
}

std::vector<Entry> environmentOf(const Command& kelo) {
    std::vector<Entry> entries;
    for (const Parameter& parameter : kelo.parameters) {
        if (!parameter.environment.empty()) {
            entries.push_back({parameter.environment,
                               parameter.help + ". Used if " + parameter.name + " is not given"});
        }
    }
    entries.insert(
        entries.end(),
        {{"KELO_PASSWORD", "The user's password, if --password is not given"},
         {"NO_COLOR", "If it is set and not empty, nothing is coloured unless --color asks for it"},
         {"TERM", "If it is dumb, nothing is coloured or written over"},
         {"XDG_DATA_HOME",
          "Holds the cache and the sessions that login keeps (default: ~/.local/share)"},
         {"XDG_STATE_HOME",
          "Holds the certificate that kelo serve makes for itself (default: ~/.local/state)"}});
    return entries;
}

std::vector<Entry> exitCodes() {
    return {{"0", "success"},
            {"1", "the service, the network or a file failed"},
            {"2", "the command line cannot be used"},
            {"3", "the user has to sign in or was refused"},
            {"130", "Ctrl-C"}};
}

std::string joined(const std::vector<std::string>& parts, const std::string& between) {
    std::string text;
    for (const std::string& part : parts) {
        text += (text.empty() ? "" : between) + part;
    }
    return text;
}

std::string helpText(const CommandPath& path) {
    const std::size_t columns =
        std::clamp(Terminal::columns().value_or(usualColumns), leastColumns, mostColumns);
    const std::string usage = "Usage:";
    std::string text = wrapped(path.back()->help, 0, columns) + "\n" +
                       styled(usage, Style::Bold, Stream::Output) +
                       wrapped(usage + " " + usageOf(path), 0, columns).substr(usage.size());
    std::vector<Section> sections = sectionsOf(path);
    if (path.size() > 1 && !path.back()->takesTheRest) {
        const auto behind = std::find_if(sections.begin(), sections.end(), [](const auto& section) {
            return section.heading == "Examples";
        });
        sections.insert(behind, {"Common options", entriesOf(path.front()->parameters, true)});
    } else if (path.size() == 1) {
        sections.push_back({"Exit codes", exitCodes()});
    }
    for (const Section& section : sections) {
        text += wrapped(section, columns);
    }
    return text;
}

} // namespace KeloHost
