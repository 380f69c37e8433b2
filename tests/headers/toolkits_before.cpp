// All public headers behind those of real toolkits, whose macros are all about.

// The toolkits come first:
// clang-format off
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <gtk/gtk.h>
#include <ncurses.h>

#include <KeloAPI/KeloAPI.hpp>
// clang-format on

// The toolkits keep their macros.
static_assert(Success == 0 && None == 0L && True == 1 && False == 0);

// What a host does without our names that are macros here.
const KeloAPI::MeSuccess* broughtBy(const KeloAPI::MeResult& result) {
    return result.success();
}
bool wasTaken(const KeloAPI::RecommendationResult& result) {
    return result.success();
}
KeloAPI::PostActionResult<KeloAPI::KLEmpty> made() {
    return KeloAPI::PostActionSuccess<KeloAPI::KLEmpty>{};
}
