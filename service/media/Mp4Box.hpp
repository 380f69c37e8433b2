#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace KeloService {

/// A box: its length, its four-letter kind, and what is in it.
std::string box(std::string_view kind, std::initializer_list<std::string_view> contents);
/// A box that begins with a version (0) and flags.
std::string fullBox(std::string_view kind, std::uint32_t flags,
                    std::initializer_list<std::string_view> contents);

} // namespace KeloService
