// expect: deleted|no matching
#include <KeloAPI/api/Endpoint.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
void copy(Endpoint& endpoint) {
    Endpoint copied = endpoint;
}
#else
std::shared_ptr<Endpoint> copy(std::shared_ptr<Endpoint> endpoint) {
    return endpoint;
}
#endif
