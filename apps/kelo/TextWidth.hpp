#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// UTF-8 text on a terminal.
namespace KeloHost {

/// Makes the functions below know about characters beyond ASCII, whatever the user's locale.
void useUnicode();

/// `text` on one line, without what a terminal would take for a command: control characters become
/// blanks, and marks that turn the direction of writing go. Bytes that are no UTF-8 become U+FFFD.
std::string printable(std::string_view text);

/// The columns that printable text takes.
std::size_t displayWidth(std::string_view text);

/// Printable text cut to at most `width` columns, its last one "…" when something is missing.
std::string clipped(std::string_view text, std::size_t width);

/// Printable text with blanks behind it (or in front) to fill `width` columns.
std::string padded(std::string_view text, std::size_t width);
std::string rightAligned(std::string_view text, std::size_t width);

} // namespace KeloHost
