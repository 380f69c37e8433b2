#pragma once

#include <KeloAPI/api/Endpoint.hpp>

namespace KeloAPI {

class KLLongformViews;

/// Reads and reports the views of one long-form video, at /longforms/, its id and /views.
class KELO_API LongformViewsEndpoint : public Endpoint {
public:
    /// On the authenticated session, with `Api::sessionDelegate()`.
    static std::shared_ptr<LongformViewsEndpoint> create(const std::string& longformId);

    /// GET. The completion runs on the main queue, with null views where the response held none.
    std::shared_ptr<EndpointRequest> fetchViews(
        std::function<void(std::shared_ptr<KLLongformViews> views, std::optional<Error> error)>
            completion);

    /// POST, with a JSON body whose one key is "timestamp": the instant of the call in seconds
    /// since 1970, as text. The completion runs on the main queue.
    std::shared_ptr<EndpointRequest>
    submitView(std::function<void(std::optional<Error> error)> completion);

protected:
    /// For derived classes, through `make`.
    LongformViewsEndpoint(Key key, const std::string& longformId);
};

} // namespace KeloAPI
