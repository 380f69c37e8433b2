// expect: private
#include <KeloAPI/platform/URL.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
URL make() {
    return URL(std::string("http://h"));
}
#else
std::optional<URL> make() {
    return URL::parse("http://h");
}
#endif
