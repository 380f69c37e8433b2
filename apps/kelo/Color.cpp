#include "Color.hpp"

#include "Terminal.hpp"
#include "Text.hpp"

#include <cstdlib>
#include <optional>
#include <string_view>

namespace KeloHost {

namespace {

/// Absent for "auto".
std::optional<bool> isColorWanted;

bool isColored(Stream stream) {
    if (isColorWanted) {
        return *isColorWanted;
    }
    const char* noColor = std::getenv("NO_COLOR");
    const bool isRefused = noColor != nullptr && *noColor != '\0';
    return !isRefused && !Terminal::isDumb() &&
           (stream == Stream::Output ? Terminal::showsOutput() : Terminal::showsErrors());
}

const char* codeOf(Style style) {
    switch (style) {
    case Style::Bold:
        return "\x1b[1m";
    case Style::Dim:
        return "\x1b[2m";
    case Style::Red:
        return "\x1b[1;31m";
    case Style::Green:
        return "\x1b[32m";
    default:
        return "";
    }
}

} // namespace

void setColor(const std::string& when) {
    isColorWanted = when == "always"  ? std::optional(true)
                    : when == "never" ? std::optional(false)
                                      : std::nullopt;
}

std::string styled(const std::string& text, Style style, Stream stream) {
    return style == Style::Plain || !isColored(stream) ? text : codeOf(style) + text + "\x1b[m";
}

std::size_t Line::displayWidth() const {
    std::size_t width = 0;
    for (const auto& [text, style] : _pieces) {
        width += KeloHost::displayWidth(text);
    }
    return width;
}

std::string Line::printed() const {
    std::string line;
    for (const auto& [text, style] : _pieces) {
        line += styled(printable(text), style, Stream::Output);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

} // namespace KeloHost
