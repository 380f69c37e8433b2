#pragma once

#include <KeloAPI/api/Endpoint.hpp>

namespace KeloAPI {

class SoundboardSound;

/// Reads the sounds that users can put into their videos: GET /soundboard.
class KELO_API SoundboardEndpoint : public Endpoint {
public:
    /// On a session of the caller's choice; a null one stops the process.
    static std::shared_ptr<SoundboardEndpoint> create(std::shared_ptr<Session> session);

    /// The completion runs on the main queue, with an empty list beside an error.
    std::shared_ptr<EndpointRequest>
    fetchSounds(std::function<void(std::vector<std::shared_ptr<SoundboardSound>> sounds,
                                   std::optional<Error> error)>
                    completion);

protected:
    /// For derived classes, through `make`.
    SoundboardEndpoint(Key key, std::shared_ptr<Session> session);
};

} // namespace KeloAPI
