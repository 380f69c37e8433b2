#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/internal/decimalText.hpp>
#include <KeloAPI/endpoints/LongformViewsEndpoint.hpp>
#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPI/model/KLLongformViews.hpp>

namespace KeloAPI {

LongformViewsEndpoint::LongformViewsEndpoint(Key key, const std::string& longformId)
    : Endpoint(key, Api::session(SessionType::Authenticated)) {
    setPath("/longforms/" + longformId + "/views");
}

std::shared_ptr<LongformViewsEndpoint>
LongformViewsEndpoint::create(const std::string& longformId) {
    return make<LongformViewsEndpoint>(longformId);
}

std::shared_ptr<EndpointRequest> LongformViewsEndpoint::fetchViews(
    std::function<void(std::shared_ptr<KLLongformViews>, std::optional<Error>)> completion) {
    setParameters({});
    setParameterEncoding(ParameterEncoding::URL);
    setMethod(Method::GET);
    return request(std::make_shared<KLLongformViewsParser>(),
                   detail::firstItem(std::move(completion)));
}

std::shared_ptr<EndpointRequest>
LongformViewsEndpoint::submitView(std::function<void(std::optional<Error>)> completion) {
    setParameters({{"timestamp", decimalText(timeIntervalSince1970(Date::now()))}});
    setParameterEncoding(ParameterEncoding::JSON);
    setMethod(Method::POST);
    return request(std::make_shared<KLEmptyParser>(), detail::errorOnly(std::move(completion)));
}

} // namespace KeloAPI
