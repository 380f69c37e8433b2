#pragma once

#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// What a response without data is parsed into.
class KELO_API KLEmpty final : public Object {};

/// Makes a `KLEmpty` of whatever it is given. Never throws.
class KELO_API KLEmptyParser final : public JsonParser<KLEmpty> {
public:
    using Reading = detail::OnArrival;
    std::shared_ptr<KLEmpty> parse(const JsonObject&) const override {
        return std::make_shared<KLEmpty>();
    }
};

} // namespace KeloAPI
