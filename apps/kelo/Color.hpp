#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// Colours, where the user wants them and the terminal has them.
namespace KeloHost {

enum class Style : std::uint8_t { Plain, Bold, Dim, Red, Green };
enum class Stream : std::uint8_t { Output, Errors };

/// "auto", as it is from the start: on a terminal, unless NO_COLOR is set and not empty or TERM is
/// dumb; "always"; or "never". Anything else is as "auto".
void setColor(const std::string& when);

/// The text as the stream shows it in this style.
std::string styled(const std::string& text, Style style, Stream stream);

/// One line that people read on standard output, in pieces that have styles of their own.
class Line {
public:
    Line(std::string text, Style style = Style::Plain) { add(std::move(text), style); }
    Line(const char* text)
        : Line(std::string(text)) {}

    Line& add(std::string text, Style style = Style::Plain) {
        _pieces.emplace_back(std::move(text), style);
        return *this;
    }

    std::size_t displayWidth() const;
    /// Without what a terminal would take for a command, and without blanks at its end.
    std::string printed() const;

private:
    std::vector<std::pair<std::string, Style>> _pieces;
};

} // namespace KeloHost
