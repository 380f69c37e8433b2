#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/RecommendationsEndpoint.hpp>
#include <KeloAPI/model/KLEmpty.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

namespace {

/// By the enumeration's order.
constexpr std::array<std::string_view, 3> boosts = {"positive", "neutral", "negative"};

} // namespace

std::string_view rawValue(RecommendationBoost boost) {
    return boosts.at(static_cast<std::size_t>(boost));
}

std::optional<RecommendationBoost> recommendationBoostOf(std::string_view rawValue) {
    return caseNamed<RecommendationBoost>(boosts, rawValue);
}

RecommendationsEndpoint::RecommendationsEndpoint(Key key)
    : Endpoint(key, Api::session(SessionType::Authenticated)) {
    setMethod(Method::POST);
    setParameterEncoding(ParameterEncoding::JSON);
}

std::shared_ptr<RecommendationsEndpoint> RecommendationsEndpoint::create() {
    return make<RecommendationsEndpoint>();
}

void RecommendationsEndpoint::addUserFeedback(const std::string& userId, RecommendationBoost boost,
                                              Completion completion) {
    sendFeedback("recommendations/feedback/users/" + userId, boost, std::move(completion));
}

void RecommendationsEndpoint::addPostFeedback(const std::string& postId, RecommendationBoost boost,
                                              Completion completion) {
    sendFeedback("recommendations/feedback/posts/" + postId, boost, std::move(completion));
}

void RecommendationsEndpoint::sendFeedback(std::string path, RecommendationBoost boost,
                                           Completion completion) {
    setParameters({{"recommendationBoost", rawValue(boost)}});
    setPath(std::move(path));
    request(std::make_shared<KLEmptyParser>(),
            detail::errorOnly([completion = std::move(completion)](std::optional<Error> error) {
                if (!completion) {
                    return;
                }
                if (error) {
                    completion(RecommendationResult::Failure{*std::move(error)});
                } else {
                    completion(RecommendationResult::Success{});
                }
            }));
}

} // namespace KeloAPI
