#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/LoopsEndpoint.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/queues/Diagnostics.hpp>

namespace KeloAPI {

LoopsEndpoint::LoopsEndpoint(Key key)
    : Endpoint(key, Api::session(SessionType::Authenticated)) {
    setPath("loops");
    setMethod(Method::POST);
    setParameterEncoding(ParameterEncoding::JSON);
}

std::shared_ptr<LoopsEndpoint> LoopsEndpoint::create() {
    return make<LoopsEndpoint>();
}

void LoopsEndpoint::submit(std::int64_t count, const std::shared_ptr<KLWatchPost>& post) {
    if (post == nullptr || !post->postId) {
        return;
    }
    const Parameters record = {
        {"count", count}, {"postId", *post->postId}, {"ts", timeIntervalSince1970(Date::now())}};
    setParameters({{"loops", ParameterList{record}}});
    request([](const std::optional<std::string>&, const std::optional<Error>& error) {
        Diagnostics::write("Submitted loops with error: " + (error ? error->description() : "nil"));
    });
}

} // namespace KeloAPI
