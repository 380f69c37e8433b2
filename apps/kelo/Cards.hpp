#pragma once

#include "Output.hpp"

#include <KeloAPI/model/KLFeedInsert.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloHost {

/// Reads the cards of a feed: URL actions and solicitations by the library's parsers, mosaics by
/// its constructors. A card of an unknown type is a bare `KLFeedInsert`, so that it does not spoil
/// its list; one of a known type that cannot be read fails as the library's parsers do.
class FeedCardParser final : public KeloAPI::JsonParser<KeloAPI::KLFeedInsert> {
public:
    std::shared_ptr<KeloAPI::KLFeedInsert> parse(const KeloAPI::JsonObject& json) const override;
};

/// A line for each card: its reference, what it is and what it says.
Lines linesOfCards(const std::vector<std::shared_ptr<KeloAPI::KLFeedInsert>>& cards);

} // namespace KeloHost
