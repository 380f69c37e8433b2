// expect: deleted
#include <KeloAPI/platform/Parameters.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
ParameterValue make(const int* value) {
    return value;
}
#else
ParameterValue make(const int* value) {
    return *value;
}
#endif
