#pragma once

#include <KeloAPI/base/Export.hpp>
#include <KeloAPI/http/Certificate.hpp>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace KeloAPI {

/// The service's certificates as they are built into the library.
class KELO_API Certificates {
public:
    Certificates() = delete;

    /// The certificates to pin, in the order in which they are stored; made anew on every call. An
    /// entry that is damaged is left out; an empty list makes every server of the pinned host be
    /// refused.
    static std::vector<Certificate> chain();
};

namespace detail {

/// The certificates among these scrambled texts.
std::vector<Certificate> certificates(std::span<const std::string_view> scrambled);

/// A scrambled text as the base64 text it stands for: groups of hexadecimal digits separated by
/// blanks, each a character exclusive-or a key that moves with its position. None when a group is
/// no such number.
std::optional<std::string> decoded(std::string_view scrambled);

} // namespace detail

} // namespace KeloAPI
