// expect: deleted
#include <KeloAPI/model/KLPostSource.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
std::shared_ptr<KLPostSource> make(const JsonObject&) {
    return std::make_shared<KLPostSource>();
}
#else
std::shared_ptr<KLPostSource> make(const JsonObject& json) {
    return KLPostSource::fromJSON(json);
}
#endif
