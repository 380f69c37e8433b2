#pragma once

#include "service/seed/People.hpp"
#include "service/seed/Random.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace KeloService {

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
