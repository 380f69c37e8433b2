#include "service/seed/Captions.hpp"

#include <string_view>

namespace KeloService {
namespace {

constexpr std::string_view openings[] = {"When the kettle boils before you do",
                                         "Take 47 and we finally got it",
                                         "My neighbour asked me to stop. I did not",
                                         "Nobody told the dog",
                                         "This took nine hours and 214 photos",
                                         "First try (it was not)",
                                         "How to fold a map, wrongly",
                                         "Monday, but make it loop",
                                         "He does this every single morning",
                                         "Wait for the last frame",
                                         "Sound on for this one",
                                         "The floor is, in fact, lava",
                                         "Grandma wins again",
                                         "Lunch break experiments",
                                         "I can't stop watching the left hand",
                                         "Borrowed light, borrowed shoes",
                                         "Rain check",
                                         "We were not supposed to be up there",
                                         "Perfect loop? You tell me",
                                         "Practising in the stairwell because of the echo",
                                         "Cafe\u0301 creme bru\u0302le\u0301e, take two",
                                         "Voila\u0300, le tour de magie",
                                         "¿Quién mueve la mesa?",
                                         "Früh übt sich",
                                         "今日の一枚",
                                         "السلام عليكم من السوق",
                                         "Привет из метро",
                                         "एक और कोशिश",
                                         "\"Quotes\", back\\slashes and a\ttab",
                                         "Line one\nline two"};

constexpr std::string_view emoji[] = {"😂",
                                      "🔥",
                                      "✨",
                                      "🐈‍⬛",
                                      "👨‍👩‍👧‍👦",
                                      "👍🏽",
                                      "🏳️‍🌈",
                                      "🇵🇹",
                                      "🇯🇵",
                                      "🇺🇦🇬🇭",
                                      "❤️",
                                      "🤷🏻‍♀️",
                                      "🎩",
                                      "🫠",
                                      "⏩",
                                      "1️⃣2️⃣3️⃣",
                                      "e\u0301\u0323",
                                      "Z̸̢a̶l̷g̵o̸"};

constexpr std::string_view closings[] = {"",
                                         "",
                                         "",
                                         " (thanks to @PERSON)",
                                         " with @PERSON",
                                         " cc @PERSON @PERSON",
                                         " – more tomorrow",
                                         " …",
                                         " via a very old camera"};

constexpr std::string_view everyday[] = {"loop", "howto", "latenight", "firsttry", "weekend"};

constexpr std::string_view commentTexts[] = {"how??",
                                             "I have watched this forty times 😂",
                                             "The hat! 🎩",
                                             "ok but who cleaned up after",
                                             "Teach me",
                                             "@PERSON look at this",
                                             "❤️❤️❤️",
                                             "Perfecto",
                                             "same energy as my cat",
                                             "The loop is seamless, I can't find the cut",
                                             "すごい",
                                             "did the neighbours complain"};

std::string withNames(Random& random, std::string_view text) {
    constexpr std::string_view placeholder = "PERSON";
    std::string filled(text);
    for (std::size_t at = filled.find(placeholder); at != std::string::npos;
         at = filled.find(placeholder)) {
        filled.replace(at, placeholder.size(), random.oneOf(people()).username);
    }
    return filled;
}

std::size_t sequenceLength(char first) {
    const auto byte = static_cast<unsigned char>(first);
    return byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

/// Names and tags consist of letters, digits and underscores; a full stop counts inside.
bool isWord(const std::string& text, std::size_t at) {
    const char c = text[at];
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                        (c >= '0' && c <= '9') || c == '_' || sequenceLength(c) == 2;
    return letter || (c == '.' && at + 1 < text.size() && isWord(text, at + 1));
}

} // namespace

std::string makeCaption(Random& random, const ChannelTheme& theme) {
    std::string caption;
    if (random.oneIn(40)) {
        return caption;
    }
    if (random.oneIn(4)) {
        caption += random.oneOf(std::span(emoji));
        caption += ' ';
    }
    caption += random.oneOf(std::span(openings));
    for (std::int64_t count = random.below(4); count > 0; --count) {
        caption += ' ';
        caption += random.oneOf(std::span(emoji));
    }
    caption += withNames(random, random.oneOf(std::span(closings)));
    for (std::int64_t count = random.below(3); count >= 0; --count) {
        caption += " #";
        caption += random.oneOf(std::span(theme.tags));
    }
    if (random.oneIn(3)) {
        caption += " #";
        caption += random.oneOf(std::span(everyday));
    }
    return caption;
}

std::string makeComment(Random& random) {
    return withNames(random, random.oneOf(std::span(commentTexts)));
}

std::vector<Mark> findMarks(const std::string& caption) {
    std::vector<Mark> marks;
    std::int64_t codePoint = 0;
    for (std::size_t at = 0; at < caption.size();) {
        const char sign = caption[at];
        const std::int64_t start = codePoint;
        at += sequenceLength(sign);
        ++codePoint;
        if (sign != '#' && sign != '@') {
            continue;
        }
        const std::size_t wordStart = at;
        while (at < caption.size() && isWord(caption, at)) {
            at += sequenceLength(caption[at]);
            ++codePoint;
        }
        if (at != wordStart) {
            marks.push_back({sign, caption.substr(wordStart, at - wordStart), start, codePoint});
        }
    }
    return marks;
}

} // namespace KeloService
