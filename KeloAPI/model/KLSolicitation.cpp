#include <KeloAPI/model/KLSolicitation.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

#include <utility>

namespace KeloAPI {

KLSolicitation::KLSolicitation(std::string reference, std::optional<bool> closeable,
                               std::optional<std::string> closeUrlPath)
    : KLFeedInsert(std::move(reference), closeable.value_or(false))
    , _closeUrlPath(std::move(closeUrlPath)) {}

KLSolicitation::~KLSolicitation() = default;

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
