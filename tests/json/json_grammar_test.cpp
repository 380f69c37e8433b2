#include "json/acceptance.hpp"
#include "support/GeneratedBlock.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <regex>

// Every text of a kind is made, and the grammar says which ones are JSON.
namespace KeloAPI::testing {

namespace {

/// A text that is JSON as a value, or not.
struct GrammarCase {
    std::string text;
    bool isSound;
};
using GrammarCases = std::vector<GrammarCase>;

/// Calls `visit` with all texts of up to `most` letters, the empty one apart.
template <class Visit>
void forEachText(const std::string& letters, std::size_t most, const Visit& visit) {
    std::vector<std::string> shorter = {""};
    for (std::size_t size = 1; size <= most; ++size) {
        std::vector<std::string> longer;
        for (const std::string& text : shorter) {
            for (const char letter : letters) {
                longer.push_back(text + letter);
                visit(longer.back());
            }
        }
        shorter = std::move(longer);
    }
}

std::string inQuotes(const std::string& characters) {
    return '"' + characters + '"';
}

GrammarCases numbers() {
    const std::regex number("-?(0|[1-9][0-9]*)(\\.[0-9]+)?([eE][+-]?[0-9]+)?");
    GrammarCases cases;
    forEachText("-+07.eE", 5, [&](const std::string& text) {
        cases.push_back({text, std::regex_match(text, number)});
    });
    return cases;
}

/// One value of lists and empty objects, read from the front of `text`; false where none is there.
bool takeBrackets(std::string_view& text) {
    if (text.starts_with("{}")) {
        text.remove_prefix(2);
        return true;
    }
    if (!text.starts_with('[')) {
        return false;
    }
    text.remove_prefix(1);
    if (!text.starts_with(']') && !takeBrackets(text)) {
        return false;
    }
    const bool closes = text.starts_with(']');
    text.remove_prefix(closes ? 1 : 0);
    return closes;
}

GrammarCases brackets() {
    GrammarCases cases;
    forEachText("[]{}", 6, [&](const std::string& text) {
        std::string_view rest = text;
        cases.push_back({text, takeBrackets(rest) && rest.empty()});
    });
    return cases;
}

const std::vector<std::string> tokens = {"{",     "\"a\"", ":",    "[",     "1", ",",
                                         "true",  "]",     ",",    "\"b\"", ":", "{",
                                         "\"c\"", ":",     "null", "}",     "}"};

std::string joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts) {
        text += part + ' ';
    }
    text.pop_back();
    return text;
}

bool isScalar(const std::string& token) {
    return std::string("{}[],:").find(token) == std::string::npos;
}

/// True for the token before a colon.
bool isKey(std::size_t at) {
    return at + 1 < tokens.size() && tokens[at + 1] == ":";
}

GrammarCases tokensAmiss() {
    GrammarCases cases = {{joined(tokens), true}};
    const std::vector<std::string> all = {"{", "}", "[", "]", ",", ":", "\"x\"", "2", "false"};
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        auto changed = tokens;
        changed.erase(changed.begin() + static_cast<std::ptrdiff_t>(at));
        cases.push_back({joined(changed), false});
        changed = tokens;
        changed.insert(changed.begin() + static_cast<std::ptrdiff_t>(at), tokens[at]);
        cases.push_back({joined(changed), false});
        if (at + 1 < tokens.size() && tokens[at] != tokens[at + 1]) {
            changed = tokens;
            std::swap(changed[at], changed[at + 1]);
            cases.push_back({joined(changed), false});
        }
        for (const std::string& other : all) {
            changed = tokens;
            changed[at] = other;
            const bool fits =
                isKey(at) ? other == "\"x\"" : isScalar(tokens[at]) && isScalar(other);
            cases.push_back({joined(changed), fits || other == tokens[at]});
        }
    }
    return cases;
}

/// A byte between two tokens that belongs to neither.
GrammarCases whitespace() {
    GrammarCases cases;
    for (std::size_t gap = 1; gap < tokens.size(); ++gap) {
        for (int byte = 0; byte < 256; ++byte) {
            if (byte > ' ' && byte < 0x7F) {
                continue;
            }
            auto changed = tokens;
            changed[gap] = static_cast<char>(byte) + changed[gap];
            const bool isSpace = byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
            cases.push_back({joined(changed), isSpace});
        }
    }
    return cases;
}

GrammarCases literals() {
    GrammarCases cases;
    for (const std::string word : {"true", "false", "null"}) {
        cases.push_back({word, true});
        for (std::size_t at = 0; at < word.size(); ++at) {
            for (int byte = 0; byte < 256; ++byte) {
                std::string changed = word;
                changed[at] = static_cast<char>(byte);
                cases.push_back({changed, changed == word});
            }
            std::string changed = word;
            cases.push_back({changed.erase(at, 1), false});
            changed = word;
            cases.push_back({changed.insert(at, 1, word[at]), false});
        }
    }
    return cases;
}

GrammarCases characters() {
    GrammarCases cases;
    for (int byte = 0; byte < 0x80; ++byte) {
        const auto character = static_cast<char>(byte);
        cases.push_back({inQuotes({character}), byte >= 0x20 && byte != '"' && byte != '\\'});
    }
    return cases;
}

GrammarCases escapes() {
    GrammarCases cases;
    for (int byte = 0; byte < 256; ++byte) {
        const auto character = static_cast<char>(byte);
        const bool isEscape =
            byte != 0 && std::string("\"\\/bfnrt").find(character) != std::string::npos;
        cases.push_back({inQuotes({'\\', character}), isEscape});
        for (std::size_t at = 2; at < 6; ++at) {
            std::string escape = "\\u00e4";
            escape[at] = character;
            cases.push_back({inQuotes(escape), std::isxdigit(byte) != 0});
        }
    }
    return cases;
}

/// Whether the bytes behind a lead byte complete one code point of UTF-8, as RFC 3629's grammar
/// has it.
bool isSoundSequence(const std::vector<int>& bytes) {
    const int lead = bytes[0];
    const int second = bytes[1];
    for (std::size_t i = 2; i < bytes.size(); ++i) {
        if (bytes[i] < 0x80 || bytes[i] > 0xBF) {
            return false;
        }
    }
    const int least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const int most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    const bool leadFits = bytes.size() == 2   ? lead >= 0xC2 && lead <= 0xDF
                          : bytes.size() == 3 ? lead >= 0xE0 && lead <= 0xEF
                                              : lead >= 0xF0 && lead <= 0xF4;
    return leadFits && second >= least && second <= most;
}

GrammarCases sequences() {
    GrammarCases cases;
    const std::vector<int> edges = {0x20, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0};
    for (int lead = 0xBF; lead < 0x100; ++lead) {
        std::vector<std::vector<int>> shorter = {{lead}};
        cases.push_back({inQuotes({static_cast<char>(lead)}), false});
        for (std::size_t size = 2; size <= 4; ++size) {
            std::vector<std::vector<int>> longer;
            for (const auto& start : shorter) {
                for (const int edge : edges) {
                    auto& bytes = longer.emplace_back(start);
                    bytes.push_back(edge);
                    // What is a shorter sequence and text behind it, is another case.
                    if (edge >= 0x80) {
                        cases.push_back(
                            {inQuotes({bytes.begin(), bytes.end()}), isSoundSequence(bytes)});
                    }
                }
            }
            shorter = std::move(longer);
        }
    }
    return cases;
}

/// Reads each case as a list's element, as a member's value and beside a large number. The row of
/// the table: how many there are of either kind, and how many are read or refused as they should.
std::string rowOf(const std::string& rule, const GrammarCases& cases) {
    int sound = 0;
    int read = 0;
    int refused = 0;
    std::vector<std::string> wrong;
    for (const auto& [text, isSound] : cases) {
        const bool accepted = accepts('[' + text + ']');
        EXPECT_EQ(accepts("{\"a\":" + text + '}'), accepted) << text;
        EXPECT_EQ(acceptsBesideALargeNumber(text), accepted) << text;
        sound += isSound ? 1 : 0;
        read += accepted && isSound ? 1 : 0;
        refused += accepted || isSound ? 0 : 1;
        if (accepted != isSound) {
            wrong.push_back(text);
        }
    }
    EXPECT_THAT(wrong, ::testing::IsEmpty()) << rule;
    const int malformed = static_cast<int>(cases.size()) - sound;
    std::string row = "| " + rule + " |";
    for (const int count : {sound, read, malformed, refused}) {
        row += ' ' + std::to_string(count) + " |";
    }
    return row + '\n';
}

TEST(JsonGrammarTest, EachTextIsReadOrRefusedAsTheGrammarSays) {
    const std::string table =
        "| Texts | Well-formed | read | Malformed | refused |\n"
        "| --- | --- | --- | --- | --- |\n" +
        rowOf("up to five of `-`, `+`, `0`, `7`, `.`, `e`, `E`: numbers", numbers()) +
        rowOf("up to six brackets", brackets()) +
        rowOf("a token left out, doubled, exchanged with the next or replaced", tokensAmiss()) +
        rowOf("a byte between two tokens", whitespace()) +
        rowOf("`true`, `false` and `null` with another, one more or one letter less", literals()) +
        rowOf("a character of ASCII in a string", characters()) +
        rowOf("a character behind a backslash, or among the digits behind `\\u`", escapes()) +
        rowOf("up to four bytes of UTF-8, at the edges of their ranges", sequences());
    expectGeneratedBlock(KELO_RELIABILITY_PAGE, "json", table);
}

} // namespace

} // namespace KeloAPI::testing
