#pragma once

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/api/Outcome.hpp>

#include <variant>

// X11's headers make Success a macro: it is set aside for the length of this file.
#pragma push_macro("Success")
#undef Success

namespace KeloAPI {

/// Whether the user wants more, the same or less of something recommended.
enum class RecommendationBoost : std::uint8_t {
    Positive, ///< "positive": more of it.
    Neutral,  ///< "neutral": as much as before.
    Negative  ///< "negative": less of it.
};

/// The boost's text on the wire: "positive", "neutral", "negative".
KELO_API std::string_view rawValue(RecommendationBoost boost);

/// The boost with exactly this text; none for any other.
KELO_API std::optional<RecommendationBoost> recommendationBoostOf(std::string_view rawValue);

/// How feedback ended: with the error, or with nothing to add.
class KELO_API RecommendationResult {
public:
    /// The case of a failure.
    struct Failure {
        Error error; ///< What went wrong.
    };
    /// The case of a success.
    struct Success {};

    /// Feedback that failed.
    RecommendationResult(Failure failure)
        : _case(std::move(failure)) {}
    /// Feedback that the service took.
    RecommendationResult(Success success)
        : _case(success) {}

    /// Null unless the service took the feedback.
    const Success* success() const { return std::get_if<Success>(&_case); }
    /// Null for a success.
    const Error* error() const {
        const auto* failure = std::get_if<Failure>(&_case);
        return failure == nullptr ? nullptr : &failure->error;
    }

private:
    std::variant<Success, Failure> _case;
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
                         Completion completion = nullptr);
    /// Sends feedback on a recommended post. The id goes into the path as given.
    void addPostFeedback(const std::string& postId, RecommendationBoost boost,
                         Completion completion = nullptr);

protected:
    explicit RecommendationsEndpoint(Key key); ///< For derived classes, through `make`.

private:
    void sendFeedback(std::string path, RecommendationBoost boost, Completion completion);
};

} // namespace KeloAPI

#pragma pop_macro("Success")
