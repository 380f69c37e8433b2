#pragma once

#include <KeloAPI/model/KLFeedInsert.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// A prompt that the user may close. Does not change once made.
class KELO_API KLSolicitation final : public KLFeedInsert {
public:
    /// An absent `closeable` is false.
    KLSolicitation(std::string name, std::optional<bool> mayClose,
                   std::optional<std::string> closePath)
        : KLFeedInsert(std::move(name), mayClose.value_or(false))
        , closeUrlPath(std::move(closePath)) {}

    /// "closeUrlPath": the path to call when the user dismisses the prompt.
    const std::optional<std::string> closeUrlPath;
};

/// Reads objects of the "type" "solicitation" and no others (`IncorrectType`). Needs "reference" as
/// text (`InsufficientData`).
class KELO_API KLSolicitationParser final : public JsonParser<KLSolicitation> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLSolicitation> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
