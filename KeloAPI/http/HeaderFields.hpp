#pragma once

#include <KeloAPI/base/Export.hpp>

#include <map>
#include <string>
#include <string_view>

namespace KeloAPI {

/// Orders header names as HTTP compares them: without regard to case.
struct KELO_API HeaderNameLess {
    using is_transparent = void;
    /// Whether `a` comes before `b`.
    bool operator()(std::string_view a, std::string_view b) const;
};

/// Header fields by name. An empty text is a value.
using HeaderFields = std::map<std::string, std::string, HeaderNameLess>;

} // namespace KeloAPI
