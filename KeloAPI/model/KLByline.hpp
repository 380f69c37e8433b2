#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

class KLEntity;

/// A short line of text shown with a post. One thread at a time.
class KELO_API KLByline final : public Object {
public:
    /// Without icon and entities.
    explicit KLByline(std::string body)
        : text(std::move(body)) {}

    /// "body".
    const std::string text;

    /// "iconUrl".
    std::optional<URL> iconUrl;
    /// "entities": the stretches of the text that link somewhere. Never null.
    std::vector<std::shared_ptr<KLEntity>> entities;
};

/// Needs "body", a text that is not empty, and "iconUrl", a URL (`InsufficientData`). Entities that
/// fail to parse are left out.
class KELO_API KLBylineParser final : public JsonParser<KLByline> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLByline> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
