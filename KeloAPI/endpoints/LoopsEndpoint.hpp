#pragma once

#include <KeloAPI/api/Endpoint.hpp>

namespace KeloAPI {

class KLWatchPost;

/// Reports how often a post's video has looped on this device: POST loops, with a JSON body.
class KELO_API LoopsEndpoint : public Endpoint {
public:
    /// On the authenticated session, with `Api::sessionDelegate()`.
    static std::shared_ptr<LoopsEndpoint> create();

    /// Sends one record, {"loops": [{"count", "postId", "ts"}]} with the instant of the call in
    /// seconds since 1970, and forgets it: the outcome is one diagnostic line, there is no retry
    /// and no handle. `count` is sent as given. Null and a post without an identifier send nothing.
    void submit(std::int64_t count, const std::shared_ptr<KLWatchPost>& post);

protected:
    explicit LoopsEndpoint(Key key); ///< For derived classes, through `make`.
};

} // namespace KeloAPI
