// expect: deleted|implicitly-declared
#include <KeloAPI/platform/Json.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
JsonDocument take(JsonDocument& document) {
    return document;
}
#else
JsonDocument take(JsonDocument& document) {
    return std::move(document);
}
#endif
