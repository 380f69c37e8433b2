#pragma once

#include <KeloAPI/base/Object.hpp>

#include <cstdint>
#include <optional>
#include <string_view>

namespace KeloAPI {

/// How far the service is with an uploaded video. `Succeeded` and `Failed` are final.
enum class KLVideoUploadProcessingState : std::uint8_t {
    InProgress, ///< "in_progress": the service is working on the video.
    Pending,    ///< "pending": the work has not begun.
    Succeeded,  ///< "succeeded": the video is ready.
    Failed      ///< "failed": there will be no video.
};

/// The state's text on the wire: "in_progress", "pending", "succeeded", "failed".
KELO_API std::string_view rawValue(KLVideoUploadProcessingState state);

/// The state with exactly this text; none for any other.
KELO_API std::optional<KLVideoUploadProcessingState>
videoUploadProcessingStateOf(std::string_view rawValue);

/// What the service says of its work on an uploaded video. One thread at a time.
class KELO_API KLVideoUploadProcessingInfo final : public Object {
public:
    /// All else is absent.
    explicit KLVideoUploadProcessingInfo(KLVideoUploadProcessingState reached)
        : state(reached) {}

    /// "state".
    const KLVideoUploadProcessingState state;

    /// "checkAfterSecs": how many seconds to wait before asking again; absent when the service does
    /// not say.
    std::optional<double> checkAfterSeconds;
    /// "progressPercent": 0 to 100, as the service sends it; absent when it does not.
    std::optional<double> progressPercent;
};

} // namespace KeloAPI
