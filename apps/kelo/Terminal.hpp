#pragma once

#include <unistd.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// Talking to the user. Questions go to standard error, answers come from standard input.
namespace KeloHost::Terminal {

/// True when standard output, or standard error, is a terminal.
inline bool showsOutput() {
    return isatty(STDOUT_FILENO) != 0;
}
inline bool showsErrors() {
    return isatty(STDERR_FILENO) != 0;
}
/// True when standard input is typed.
inline bool isTyped() {
    return isatty(STDIN_FILENO) != 0;
}
/// True when there is somebody to ask.
inline bool isInteractive() {
    return isTyped() && showsErrors();
}

/// Columns of the terminal that standard output, or standard error, is; absent when it is none.
std::optional<std::size_t> columns();
std::optional<std::size_t> errorColumns();

/// True when the terminal takes no commands but only text.
bool isDumb();
/// True when standard error is a terminal on which a line can be written over.
inline bool canWriteOver() {
    return showsErrors() && !isDumb();
}
/// Puts the text, or nothing, in the place of the last line of standard error. It must fit in
/// there: of a line that wraps, parts would stay. A signal that ends the program takes it away.
void writeOver(const std::string& text);

/// A line; what a terminal would take for a command is left out.
void say(const std::string& text);
/// The same for what went wrong, behind the program's name.
void complain(const std::string& text);

/// The line the user types, without its end; absent at the end of the input.
std::optional<std::string> ask(const std::string& question);
/// The same with the typing hidden.
std::optional<std::string> askHidden(const std::string& question);

/// The next line of standard input, without its end; absent where that is at its end.
std::optional<std::string> inputLine();
/// All of them.
std::vector<std::string> inputLines();

/// From now on the first Ctrl-C does not end the program, but makes the descriptor that is returned
/// readable; the second one ends it, and so does one at a question. -1 where Ctrl-C is ignored.
int catchInterruption();

/// Makes SIGINT, SIGTERM and SIGHUP end the program with 128 and the signal's number, and leave the
/// terminal as it was found.
void endOnSignals();

} // namespace KeloHost::Terminal
