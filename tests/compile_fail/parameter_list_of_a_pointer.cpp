// expect: deleted|no matching|could not convert
#include <KeloAPI/platform/Parameters.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
Parameters make(const int* value) {
    return {{"a", value}};
}
#else
Parameters make(const int* value) {
    return {{"a", *value}};
}
#endif
