#pragma once

#include <KeloAPI/model/KLFeedInsert.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// A prompt that the user may close. Does not change once made.
class KELO_API KLSolicitation final : public KLFeedInsert {
public:
    /// An absent `closeable` is false.
    KLSolicitation(std::string reference, std::optional<bool> closeable,
                   std::optional<std::string> closeUrlPath)
        : KLFeedInsert(std::move(reference), closeable.value_or(false))
        , _closeUrlPath(std::move(closeUrlPath)) {}

    /// "closeUrlPath": the path to call when the user dismisses the prompt.
    const std::optional<std::string>& closeUrlPath() const { return _closeUrlPath; }

private:
    std::optional<std::string> _closeUrlPath;
};

/// Reads objects of the "type" "solicitation" and no others (`IncorrectType`). Needs "reference" as
/// text (`InsufficientData`).
class KELO_API KLSolicitationParser final : public JsonParser<KLSolicitation> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLSolicitation> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
