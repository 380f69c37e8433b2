// expect: deleted
#include <KeloAPI/platform/Number.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
Number make(const char* text) {
    return Number::of(text);
}
#else
Number make(const char* text) {
    return Number::of(text != nullptr);
}
#endif
