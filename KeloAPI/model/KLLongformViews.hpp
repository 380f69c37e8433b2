#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// How often a long-form video has been viewed in all. Does not change once made.
class KELO_API KLLongformViews final : public Object {
public:
    /// Stores both as given.
    KLLongformViews(std::string identifier, std::int64_t views)
        : longformId(std::move(identifier))
        , count(views) {}

    /// "longformId".
    const std::string longformId;
    /// "count".
    const std::int64_t count;
};

/// Needs "longformId" as text and "count" as a number (`InsufficientData`).
class KELO_API KLLongformViewsParser final : public JsonParser<KLLongformViews> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLLongformViews> parse(const JsonObject& json) const override;
};

} // namespace KeloAPI
