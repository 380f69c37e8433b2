// All public headers before those of real toolkits: ours leave nothing that would disturb them.
#include <KeloAPI/KeloAPI.hpp>

#include <gtk/gtk.h>
#include <ncurses.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

static_assert(Success == 0 && None == 0L && True == 1 && False == 0);
