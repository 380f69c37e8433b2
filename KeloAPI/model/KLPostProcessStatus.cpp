#include <KeloAPI/model/KLPostProcessStatus.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

#include <string_view>

namespace KeloAPI {

namespace {

KLPostProcessStatusState stateNamed(std::string_view name) {
    if (name == "started") {
        return KLPostProcessStatusState::Started;
    }
    if (name == "completed") {
        return KLPostProcessStatusState::Completed;
    }
    if (name == "failed") {
        return KLPostProcessStatusState::Failed;
    }
    throw JsonParseError(JsonParseError::InvalidData, "state");
}

} // namespace

KLPostProcessStatus::KLPostProcessStatus(KLPostProcessStatusState state)
    : _state(state) {}

KLPostProcessStatus::~KLPostProcessStatus() = default;

std::shared_ptr<KLPostProcessStatus>
KLPostProcessStatusParser::parse(const JsonObject& json) const {
    const auto state = required(json["state"].text(), "state");
    return std::make_shared<KLPostProcessStatus>(stateNamed(state));
}

} // namespace KeloAPI
