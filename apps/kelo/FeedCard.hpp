#pragma once

#include <KeloAPI/model/KLFeedInsert.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

#include <memory>

namespace KeloHost {

/// Reads the cards of a feed: URL actions and solicitations by the library's parsers, mosaics by
/// its constructors. A card of an unknown type is a bare `KLFeedInsert`, so that it does not spoil
/// its list; one of a known type that cannot be read fails as the library's parsers do.
class FeedCardParser final : public KeloAPI::JsonParser<KeloAPI::KLFeedInsert> {
public:
    std::shared_ptr<KeloAPI::KLFeedInsert> parse(const KeloAPI::JsonObject& json) const override;
};

} // namespace KeloHost
