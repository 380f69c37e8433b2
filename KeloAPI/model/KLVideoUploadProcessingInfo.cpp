#include <KeloAPI/model/KLVideoUploadProcessingInfo.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

#include <array>

namespace KeloAPI {

namespace {

/// In the order of the cases.
constexpr std::array<std::string_view, 4> rawValues = {"in_progress", "pending", "succeeded",
                                                       "failed"};

} // namespace

std::string_view rawValue(KLVideoUploadProcessingState state) {
    return rawValues.at(static_cast<std::size_t>(state));
}

std::optional<KLVideoUploadProcessingState>
videoUploadProcessingStateOf(std::string_view rawValue) {
    return caseNamed<KLVideoUploadProcessingState>(rawValues, rawValue);
}

} // namespace KeloAPI
