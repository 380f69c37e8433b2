#pragma once

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/api/Outcome.hpp>

// X11's headers make Success a macro: it is set aside for the length of this file.
#pragma push_macro("Success")
#undef Success

namespace KeloAPI {

/// Whether the user wants more, the same or less of something recommended.
enum class RecommendationBoost : std::uint8_t { Positive, Neutral, Negative };

/// The boost's text on the wire: "positive", "neutral", "negative".
KELO_API std::string_view rawValue(RecommendationBoost boost);

/// The boost with exactly this text; none for any other.
KELO_API std::optional<RecommendationBoost> recommendationBoostOf(std::string_view rawValue);

/// How feedback ended: with the error, or with nothing to add.
class KELO_API RecommendationResult {
public:
    struct Failure {
        Error error;
    };
    struct Success {};

    RecommendationResult(Failure failure)
        : _failure(std::move(failure)) {}
    RecommendationResult(Success) {}

    /// True when the service took the feedback.
    bool success() const { return !_failure; }
    /// Null for a success.
    const Error* error() const { return _failure ? &_failure->error : nullptr; }

private:
    std::optional<Failure> _failure;
};

/// Sends feedback on recommendations: POST recommendations/feedback/users/ or .../posts/ and an id,
/// with a JSON body whose one key is "recommendationBoost".
class KELO_API RecommendationsEndpoint : public Endpoint {
public:
    /// Called on the main queue. May be empty: the feedback is sent all the same, and nobody hears
    /// how it ended.
    using Completion = std::function<void(const RecommendationResult& result)>;

    /// On the authenticated session, with `Api::sessionDelegate()`.
    static std::shared_ptr<RecommendationsEndpoint> create();

    /// Sends feedback on a recommended user. The id goes into the path as given.
    void addUserFeedback(const std::string& userId, RecommendationBoost boost,
                         Completion completion);
    /// Sends feedback on a recommended post. The id goes into the path as given.
    void addPostFeedback(const std::string& postId, RecommendationBoost boost,
                         Completion completion);

protected:
    explicit RecommendationsEndpoint(Key key);

private:
    void sendFeedback(std::string path, RecommendationBoost boost, Completion completion);
};

} // namespace KeloAPI

#pragma pop_macro("Success")
