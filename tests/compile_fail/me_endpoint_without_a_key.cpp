// expect: no matching
#include <KeloAPI/endpoints/MeEndpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
void make() {
    MeEndpoint endpoint;
}
#else
auto make() {
    return MeEndpoint::create();
}
#endif
