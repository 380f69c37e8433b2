#include <KeloAPI/model/internal/PagingKeys.hpp>
#include <KeloAPI/parsing/internal/JsonTexts.hpp>

namespace KeloAPI {

PagingKeys::PagingKeys(const JsonObject& json) {
    const auto values = json.values("count", "nextPage", "previousPage", "size", "nextAfter",
                                    "title", "anchor", "backAnchor", "channel", "displayCount");
    count = values[0].integer();
    nextPage = values[1].integer();
    previousPage = values[2].integer();
    size = values[3].integer();
    nextAfter = values[4].integer();
    title = textOf(values[5]);
    anchor = textOf(values[6]);
    if (!anchor) {
        anchor = values[6].numberText();
    }
    backAnchor = textOf(values[7]);
    channel = values[8];
    displayCount = values[9].integer();
}

} // namespace KeloAPI
