#include <KeloAPI/endpoints/SoundboardEndpoint.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>

namespace KeloAPI {

SoundboardEndpoint::SoundboardEndpoint(Key key, std::shared_ptr<Session> session)
    : Endpoint(key, std::move(session)) {
    setPath("/soundboard");
}

std::shared_ptr<SoundboardEndpoint> SoundboardEndpoint::create(std::shared_ptr<Session> session) {
    return make<SoundboardEndpoint>(std::move(session));
}

std::shared_ptr<EndpointRequest> SoundboardEndpoint::fetchSounds(
    std::function<void(std::vector<std::shared_ptr<SoundboardSound>>, std::optional<Error>)>
        completion) {
    setParameters({});
    setParameterEncoding(ParameterEncoding::URL);
    setMethod(Method::GET);
    return request(std::make_shared<SoundboardSoundParser>(),
                   detail::allItems(std::move(completion)));
}

} // namespace KeloAPI
