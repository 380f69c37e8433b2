#include <KeloAPI/model/KLPostProcessStatus.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

std::shared_ptr<KLPostProcessStatus>
KLPostProcessStatusParser::parse(const JsonObject& json) const {
    constexpr std::array<std::string_view, 3> names = {"started", "completed", "failed"};
    const auto name = required(json["state"].text(), "state");
    const auto state = caseNamed<KLPostProcessStatusState>(names, name);
    if (!state) {
        throw JsonParseError(JsonParseError::InvalidData, "state");
    }
    return std::make_shared<KLPostProcessStatus>(*state);
}

} // namespace KeloAPI
