#include <KeloAPI/base/internal/Ascii.hpp>
#include <KeloAPI/http/HeaderFields.hpp>

#include <algorithm>

namespace KeloAPI {

bool HeaderNameLess::operator()(std::string_view a, std::string_view b) const {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return Ascii::lower(x) < Ascii::lower(y);
    });
}

} // namespace KeloAPI
