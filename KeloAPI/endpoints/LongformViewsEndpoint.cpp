#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/LongformViewsEndpoint.hpp>
#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPI/model/KLLongformViews.hpp>

#include <array>
#include <charconv>
#include <utility>

namespace KeloAPI {

LongformViewsEndpoint::LongformViewsEndpoint(Key key, const std::string& longformId)
    : Endpoint(key, Api::session(SessionType::Authenticated)) {
    setPath("/longforms/" + longformId + "/views");
}

LongformViewsEndpoint::~LongformViewsEndpoint() = default;

std::shared_ptr<LongformViewsEndpoint>
LongformViewsEndpoint::create(const std::string& longformId) {
    return make<LongformViewsEndpoint>(longformId);
}

std::shared_ptr<EndpointRequest> LongformViewsEndpoint::fetchViews(
    std::function<void(std::shared_ptr<KLLongformViews>, std::optional<Error>)> completion) {
    detail::requireCompletion(completion);
    setParameters({});
    setParameterEncoding(ParameterEncoding::URL);
    setMethod(Method::GET);
    return request(
        std::make_shared<KLLongformViewsParser>(),
        [completion = std::move(completion)](std::vector<std::shared_ptr<KLLongformViews>> views,
                                             const std::optional<Metadata>&, const Timeline&,
                                             std::optional<Error> error) {
            completion(views.empty() ? nullptr : std::move(views.front()), std::move(error));
        });
}

std::shared_ptr<EndpointRequest>
LongformViewsEndpoint::submitView(std::function<void(std::optional<Error>)> completion) {
    detail::requireCompletion(completion);
    setParameters({{"timestamp", detail::decimalText(timeIntervalSince1970(Date::now()))}});
    setParameterEncoding(ParameterEncoding::JSON);
    setMethod(Method::POST);
    return request(std::make_shared<KLEmptyParser>(),
                   [completion = std::move(completion)](
                       const std::vector<std::shared_ptr<KLEmpty>>&, const std::optional<Metadata>&,
                       const Timeline&,
                       std::optional<Error> error) { completion(std::move(error)); });
}

namespace detail {

std::string decimalText(double value) {
    // The longest is the smallest denormal number: "-0." and 324 digits behind it.
    std::array<char, 400> buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed)
            .ptr;
    std::string text(buffer.data(), end);
    if (text.find('.') == std::string::npos) {
        text += ".0";
    }
    return text;
}

} // namespace detail

} // namespace KeloAPI
