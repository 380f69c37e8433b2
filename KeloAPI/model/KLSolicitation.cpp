#include <KeloAPI/model/KLSolicitation.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

std::shared_ptr<KLSolicitation> KLSolicitationParser::parse(const JsonObject& json) const {
    const auto [type, reference, closeable, closeUrlPath] =
        json.values("type", "reference", "closeable", "closeUrlPath");
    if (type.text() != "solicitation") {
        throw JsonParseError(JsonParseError::IncorrectType, "type");
    }
    return std::make_shared<KLSolicitation>(required(textOf(reference), "reference"),
                                            closeable.boolean(), textOf(closeUrlPath));
}

} // namespace KeloAPI
