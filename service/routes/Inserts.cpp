#include "service/routes/Guard.hpp"
#include "service/routes/Records.hpp"
#include "service/routes/Routes.hpp"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace KeloService {
namespace {

/// The keys of the card's type.
Json cardContent(const std::string& type, const Context& context, const PostView& view) {
    if (type == "urlAction") {
        return {{"title", "Now up to two minutes 🎞️"},
                {"actionTitle", "Upload one"},
                {"actionLink", "kelo://upload-longform"},
                {"description", "Long-form videos are here for everyone."},
                {"backgroundImage", context.baseUrl + "/media/icons/byline-pick.png"},
                {"actionIcon", context.baseUrl + "/media/icons/byline-fire.png"}};
    }
    if (type == "postsMosaic") {
        std::vector<std::int64_t> postIds;
        Query picks = context.database.query("SELECT postId FROM posts WHERE pickRank IS NOT NULL "
                                             "ORDER BY pickRank DESC LIMIT 6");
        while (picks.next()) {
            postIds.push_back(picks.integer(0));
        }
        return {{"title", "Editors’ picks"},
                {"description", "What made us watch twice"},
                {"link", "kelo://timelines/editors-picks"},
                {"mosaicType", "smallThumbnails"},
                {"pinnable", true},
                {"posts", wholeList(postRecords(context, postIds, view))}};
    }
    if (type == "userMosaic") {
        const std::string sql =
            std::string(userSelection) + "ORDER BY followerCount DESC, userId LIMIT 6";
        return {{"title", "People to follow"},
                {"description", "They loop well"},
                {"link", "kelo://explore/people"},
                {"users", wholeList(records(context, sql))}};
    }
    return Json::object();
}

struct Card {
    std::string_view feed;
    /// How many posts stand before it.
    std::int64_t position;
    std::string_view type;
    std::string_view reference;
    bool closeable;
};

constexpr Card cards[] = {
    {"home", 2, "userMosaic", "people-to-follow", true},
    {"home", 5, "urlAction", "longform-launch", true},
    {"popular", 3, "postsMosaic", "editors-picks", false},
    {"popular", 8, "solicitation", "rate-the-app", true},
};

/// Cards that can be closed name where.
Json cardRecord(const Card& card, const Context& context, const PostView& view) {
    Json record = cardContent(std::string(card.type), context, view);
    record["type"] = card.type;
    record["reference"] = card.reference;
    record["position"] = card.position;
    record["closeable"] = card.closeable;
    if (card.closeable) {
        record["closeUrlPath"] = "inserts/" + std::string(card.reference) + "/close";
    }
    return record;
}

Answer showInserts(const Call& call, const Context& context) {
    const auto userId = sessionUser(call, context);
    const PostView view = readView(call, userId);
    Json shown = Json::array();
    for (const Card& card : cards) {
        if (card.feed == call.argument("feed") &&
            !context.database.number(
                "SELECT 1 FROM closedInserts WHERE userId = ?1 AND reference = ?2", userId,
                card.reference)) {
            shown.push_back(cardRecord(card, context, view));
        }
    }
    return dataAnswer(wholeList(shown));
}

Answer closeInsert(const Call& call, const Context& context) {
    const std::int64_t userId = requireUser(call, context);
    const std::string& reference = call.argument("reference");
    const bool known = std::any_of(std::begin(cards), std::end(cards), [&](const Card& card) {
        return card.closeable && card.reference == reference;
    });
    if (!known) {
        throw ServiceError(404, "There is no such insert to close");
    }
    context.database.run("INSERT OR IGNORE INTO closedInserts VALUES (?1, ?2)", userId, reference);
    return dataAnswer();
}

} // namespace

void addInsertRoutes(Routes& routes) {
    routes.add("GET", "/inserts/:feed", showInserts);
    routes.add("POST", "/inserts/:reference/close", closeInsert);
}

} // namespace KeloService
