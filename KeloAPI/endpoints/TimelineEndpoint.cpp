#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/TimelineEndpoint.hpp>
#include <KeloAPI/model/KLWatchPost.hpp>

namespace KeloAPI {

namespace {

Parameters defaultParameters() {
    return {
        {"c_max", 3}, {"c_overflow", "trunc"}, {"l_max", 3}, {"l_overflow", "trunc"}, {"size", 5}};
}

/// The endpoint of another page of the feed at `path`; null without paging parameters.
std::shared_ptr<TimelineEndpoint> page(const std::string& path, std::optional<Parameters> paging) {
    if (!paging) {
        return nullptr;
    }
    auto endpoint = TimelineEndpoint::create(path);
    Parameters parameters = endpoint->parameters();
    for (auto& [name, value] : *paging) {
        parameters.insert_or_assign(name, std::move(value));
    }
    endpoint->setParameters(std::move(parameters));
    return endpoint;
}

} // namespace

TimelineEndpoint::TimelineEndpoint(Key key, const std::string& path)
    : TimelineEndpoint(key, Api::session(SessionType::Authenticated)) {
    const bool complete = path.find("timelines/") != std::string::npos;
    Endpoint::setPath(complete ? path : "timelines/" + path);
    Endpoint::setParameters(defaultParameters());
}

TimelineEndpoint::TimelineEndpoint(Key key, std::shared_ptr<Session> session)
    : Endpoint(key, std::move(session)) {}

std::shared_ptr<TimelineEndpoint> TimelineEndpoint::create(const std::string& path) {
    return make<TimelineEndpoint>(path);
}

std::shared_ptr<TimelineEndpoint> TimelineEndpoint::create(std::shared_ptr<Session> session) {
    return make<TimelineEndpoint>(std::move(session));
}

void TimelineEndpoint::fetch(std::function<void(const TimelineResult&)> result) {
    detail::requireCompletion(result);
    const auto self = std::static_pointer_cast<TimelineEndpoint>(shared_from_this());
    request(std::make_shared<PostParser>(),
            [self, result = std::move(result)](std::vector<std::shared_ptr<KLWatchPost>> posts,
                                               std::optional<Metadata> metadata, const Timeline&,
                                               std::optional<Error> error) {
                if (error) {
                    result(TimelineResult::Error{*std::move(error)});
                    return;
                }
                TimelineSuccess success{std::move(posts), nullptr, nullptr};
                if (metadata) {
                    const auto size = metadata->pageSize();
                    success.nextPage = page(self->path(), metadata->nextPageParameters(size));
                    success.previousPage =
                        page(self->path(), metadata->previousPageParameters(size));
                }
                result(std::move(success));
            });
}

} // namespace KeloAPI
