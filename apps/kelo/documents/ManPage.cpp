#include "documents/Documents.hpp"
#include "Help.hpp"

namespace KeloHost {

namespace {

/// Text as roff has it: hyphens stay what is typed, and no line begins as a request does.
std::string escapedForRoff(const std::string& text) {
    std::string escaped = text.starts_with(".") || text.starts_with("'") ? "\\&" : "";
    for (const char c : text) {
        escaped += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    return escaped;
}

std::string heading(const std::string& title) {
    return ".SH " + title + "\n";
}

std::string entryText(const Entry& entry) {
    return ".TP\n\\fB" + escapedForRoff(entry.name) + "\\fR\n" + escapedForRoff(entry.text) + "\n";
}

std::string entriesText(const std::vector<Entry>& entries) {
    std::string text;
    for (const Entry& entry : entries) {
        text += entryText(entry);
    }
    return text;
}

std::string commandText(const CommandPath& path) {
    std::string text = ".SS \"" + escapedForRoff(usageOf(path)) + "\"\n" +
                       escapedForRoff(path.back()->help) + ".\n";
    for (const Section& section : sectionsOf(path)) {
        if (section.heading == "Examples") {
            text += ".PP\nExamples:\n";
        }
        // Commands of a command have their own place.
        text += section.heading == "Commands" ? "" : entriesText(section.entries);
    }
    return text;
}

} // namespace

std::string manPage(const Command& kelo) {
    const CommandPath path = {&kelo};
    std::string text = ".TH KELO 1 \"\" \"kelo " KELO_VERSION "\" \"User Commands\"\n" +
                       heading("NAME") + "kelo \\- " + escapedForRoff(kelo.help) + "\n" +
                       heading("SYNOPSIS") + escapedForRoff(usageOf(path)) + "\n" +
                       heading("OPTIONS") + "Every command takes these options.\n" +
                       entriesText(entriesOf(kelo.parameters, true)) + heading("COMMANDS");
    forEachCommand(path, [&](const CommandPath& command) { text += commandText(command); });
    text += heading("\"EXIT STATUS\"") + entriesText(exitCodes()) + heading("ENVIRONMENT") +
            entriesText(environmentOf(kelo)) + heading("EXAMPLES");
    return text + entriesText(examplesIn(kelo));
}

} // namespace KeloHost
