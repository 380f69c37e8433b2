#pragma once

#include "service/seed/Random.hpp"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace KeloService {

struct Person {
    std::string_view username;
    std::string_view description;
    std::string_view location;
};

/// The invented accounts; the first is the one that the default session belongs to.
std::span<const Person> people();

struct ChannelTheme {
    std::string_view name;
    std::string_view description;
    std::string_view backgroundColor;
    std::string_view vanityUrl;
    /// The tags that its posts carry.
    std::string_view tags[3];
};

std::span<const ChannelTheme> channelThemes();

/// A believable caption for a post about the theme, with tags, and now and then with mentions,
/// emoji, flags, combining marks and other scripts.
std::string makeCaption(Random& random, const ChannelTheme& theme);

std::string makeComment(Random& random);

/// A "#word" or "@word" of a caption.
struct Mark {
    /// '#' or '@'.
    char sign = '#';
    /// Without the sign.
    std::string word;
    /// In code points; `end` is the first one behind it.
    std::int64_t start = 0;
    std::int64_t end = 0;
};

std::vector<Mark> findMarks(const std::string& caption);

} // namespace KeloService
