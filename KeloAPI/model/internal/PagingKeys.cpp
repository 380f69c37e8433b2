#include <KeloAPI/model/internal/PagingKeys.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

PagingKeys::PagingKeys(const JsonObject& json) {
    const auto [countValue, nextPageValue, previousPageValue, sizeValue, nextAfterValue, titleValue,
                anchorValue, backAnchorValue, channelValue, displayCountValue] =
        json.values("count", "nextPage", "previousPage", "size", "nextAfter", "title", "anchor",
                    "backAnchor", "channel", "displayCount");
    count = countValue.integer();
    nextPage = nextPageValue.integer();
    previousPage = previousPageValue.integer();
    size = sizeValue.integer();
    nextAfter = nextAfterValue.integer();
    title = textOf(titleValue);
    anchor = textOf(anchorValue);
    if (!anchor) {
        anchor = anchorValue.numberText();
    }
    backAnchor = textOf(backAnchorValue);
    channel = channelValue;
    displayCount = displayCountValue.integer();
}

} // namespace KeloAPI
