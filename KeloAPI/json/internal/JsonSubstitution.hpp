#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace KeloAPI {

/// A number of a JSON text that neither a 64-bit integer nor a double holds.
struct LargeNumber {
    /// Its place among all numbers of the text, the first being 0.
    std::size_t ordinal;
    /// The place in the text behind its last character.
    std::size_t end;
    bool isInteger;
    /// The nearest double; the largest of its sign where it is beyond doubles.
    double value;
};

struct JsonSubstitution {
    std::vector<LargeNumber> numbers;
    bool changed = false;
};

/// Replaces what RFC 8259 allows and the JSON reader refuses: 0 for a
/// large number, U+FFFD for an escaped surrogate that stands alone. The text keeps its length, and
/// a malformed text stays malformed.
JsonSubstitution substituteUnreadable(std::string& text);

} // namespace KeloAPI
