// expect: deleted
#include <KeloAPI/model/KLPostAudioMetadata.hpp>

using namespace KeloAPI;

#ifdef FORBIDDEN
std::shared_ptr<KLPostAudioMetadata> make(const JsonObject&) {
    return std::make_shared<KLPostAudioMetadata>();
}
#else
std::shared_ptr<KLPostAudioMetadata> make(const JsonObject& json) {
    return KLPostAudioMetadata::fromJSON(json);
}
#endif
