#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// How far the service is with a post's video.
enum class KLPostProcessStatusState : std::uint8_t {
    Started = 0,   ///< "started": still at work.
    Completed = 1, ///< "completed": the video is ready.
    Failed = 2     ///< "failed": there will be no video.
};

/// The state with this raw value; none for any other number.
constexpr std::optional<KLPostProcessStatusState> postProcessStatusStateOf(std::int64_t rawValue) {
    if (rawValue < 0 || rawValue > 2) {
        return std::nullopt;
    }
    return static_cast<KLPostProcessStatusState>(rawValue);
}

/// What the service says of its work on a post. Does not change once made.
class KELO_API KLPostProcessStatus final : public Object {
public:
    /// Stores the state.
    explicit KLPostProcessStatus(KLPostProcessStatusState reached)
        : state(reached) {}

    /// "state", as "started", "completed" or "failed".
    const KLPostProcessStatusState state;
};

/// Needs "state" as text (`InsufficientData`), and as one of the three (`InvalidData`).
class KELO_API KLPostProcessStatusParser final : public JsonParser<KLPostProcessStatus> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLPostProcessStatus> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
