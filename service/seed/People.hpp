#pragma once

#include <span>
#include <string_view>

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

} // namespace KeloService
