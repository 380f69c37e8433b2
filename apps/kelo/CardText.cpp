#include "CardText.hpp"

#include "TextWidth.hpp"

#include <KeloAPI/model/KLPagedData.hpp>
#include <KeloAPI/model/KLPostsMosaic.hpp>
#include <KeloAPI/model/KLSolicitation.hpp>
#include <KeloAPI/model/KLUrlAction.hpp>
#include <KeloAPI/model/KLUserMosaic.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>

namespace KeloHost {

using namespace KeloAPI;

namespace {

constexpr std::size_t referenceWidth = 18;
constexpr std::size_t kindWidth = 8;

struct Description {
    std::string kind;
    std::string text;
};

std::string namesIn(const KLPagedData& users) {
    std::string names;
    for (const auto& element : users) {
        const auto& name = dynamic_cast<const KLWatchUser&>(*element).username;
        names += (names.empty() ? "" : ", ") + name.value_or("?");
    }
    return names;
}

Description described(const KLFeedInsert& insert) {
    if (const auto* action = dynamic_cast<const KLUrlAction*>(&insert)) {
        return {"action", action->title() + " – " + action->actionTitle() + ": " +
                              action->actionUrl().absoluteString()};
    }
    if (const auto* mosaic = dynamic_cast<const KLPostsMosaic*>(&insert)) {
        return {"posts", mosaic->title() + " – " + mosaic->subtitle() + ": " +
                             std::to_string(mosaic->posts()->count()) + " posts"};
    }
    if (const auto* mosaic = dynamic_cast<const KLUserMosaic*>(&insert)) {
        return {"people",
                mosaic->title() + " – " + mosaic->subtitle() + ": " + namesIn(*mosaic->users())};
    }
    return {dynamic_cast<const KLSolicitation*>(&insert) != nullptr ? "prompt" : "unknown", ""};
}

} // namespace

std::string cardText(const KLFeedInsert& insert) {
    const auto [kind, text] = described(insert);
    std::string line = padded(printable(insert.reference()), referenceWidth) + " " +
                       padded(kind, kindWidth) + " " + (insert.closeable() ? "×" : " ") + " " +
                       printable(text);
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

} // namespace KeloHost
