// What the viewer reads of a record beyond the library's own post: each of the record's other
// fields with the library's parser of that field, off the main thread.
#pragma once

#include "RowModel.hpp"

/// A post: its texts, with their links set off, the URLs of its pictures and its counters.
class PostRowParser final : public KeloAPI::JsonParser<Row> {
public:
    std::shared_ptr<Row> parse(const KeloAPI::JsonObject& json) const override;
};

/// A card between the posts of a feed. Its "position" says how many posts stand before it, and its
/// "closePath" where its closing is told; that is empty where it stays.
class CardRowParser final : public KeloAPI::JsonParser<Row> {
public:
    std::shared_ptr<Row> parse(const KeloAPI::JsonObject& json) const override;
};
