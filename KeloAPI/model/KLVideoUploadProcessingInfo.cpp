#include <KeloAPI/model/KLVideoUploadProcessingInfo.hpp>

#include <algorithm>
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
    const auto found = std::find(rawValues.begin(), rawValues.end(), rawValue);
    if (found == rawValues.end()) {
        return std::nullopt;
    }
    return static_cast<KLVideoUploadProcessingState>(found - rawValues.begin());
}

KLVideoUploadProcessingInfo::KLVideoUploadProcessingInfo(KLVideoUploadProcessingState state)
    : _state(state) {}

KLVideoUploadProcessingInfo::~KLVideoUploadProcessingInfo() = default;

} // namespace KeloAPI
