#pragma once

#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPI/parsing/JsonParser.hpp>

namespace KeloAPI {

/// Makes a `KLPagedData` of a page: an object with the paging keys and, under "records", the
/// records, each parsed by a parser of type `P`. Records that fail to parse are left out.
template <class P>
class KLPagedDataParser final : public JsonParser<KLPagedData> {
public:
    /// A null parser stops the process.
    explicit KLPagedDataParser(std::shared_ptr<P> itemParser)
        : _itemParser(std::move(itemParser)) {
        require(_itemParser != nullptr, "a parser of paged data needs an item parser");
    }

    std::shared_ptr<KLPagedData> parse(const JsonObject& json) const override {
        auto metadata = std::make_shared<KLPagingMetadata>(json);
        const auto records = json["records"].objects().value_or(JsonObjectList());
        auto items = _itemParser->parseArray(records, /*ignoreError=*/true);
        KLPagedData::Elements elements(std::make_move_iterator(items.begin()),
                                       std::make_move_iterator(items.end()));
        return std::make_shared<KLPagedData>(std::move(elements), std::move(metadata));
    }

private:
    std::shared_ptr<P> _itemParser;
};

} // namespace KeloAPI
