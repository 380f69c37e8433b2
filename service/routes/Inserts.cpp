#include "service/records/PostRecord.hpp"
#include "service/records/UserRecord.hpp"
#include "service/routes/Guard.hpp"
#include "service/routes/Pages.hpp"
#include "service/routes/Routes.hpp"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace KeloService {
namespace {

constexpr std::int64_t mosaicSize = 6;

Json listOf(const Json& records) {
    return {{"count", records.size()}, {"records", records}};
}

Json longformCard(const Context& context, const PostView& /*view*/) {
    return {{"title", "Now up to two minutes 🎞️"},
            {"actionTitle", "Upload one"},
            {"actionLink", "kelo://upload-longform"},
            {"description", "Long-form videos are here for everyone."},
            {"backgroundImage", context.baseUrl + "/media/icons/byline-pick.png"},
            {"actionIcon", context.baseUrl + "/media/icons/byline-fire.png"}};
}

Json ratingCard(const Context& /*context*/, const PostView& /*view*/) {
    return Json::object();
}

Json picksCard(const Context& context, const PostView& view) {
    std::vector<std::int64_t> postIds;
    for (const Position& row : context.store.feeds.fromOffset(picksFeed(), 0, mosaicSize).rows) {
        postIds.push_back(row.postId);
    }
    Json records = Json::array();
    for (const Post& post : context.store.posts.find(postIds, view)) {
        records.push_back(postRecord(post, context.baseUrl));
    }
    return {{"title", "Editors’ picks"},
            {"description", "What made us watch twice"},
            {"link", "kelo://timelines/editors-picks"},
            {"mosaicType", "smallThumbnails"},
            {"pinnable", true},
            {"posts", listOf(records)}};
}

Json peopleCard(const Context& context, const PostView& /*view*/) {
    Json records = Json::array();
    for (const User& user : context.store.users.mostFollowed(mosaicSize)) {
        records.push_back(userRecord(user, context.baseUrl));
    }
    return {{"title", "People to follow"},
            {"description", "They loop well"},
            {"link", "kelo://explore/people"},
            {"users", listOf(records)}};
}

struct Card {
    std::string_view feed;
    /// How many posts stand before it.
    std::int64_t position;
    std::string_view type;
    std::string_view reference;
    bool closeable;
    /// The keys of this type.
    Json (*content)(const Context&, const PostView&);
};

constexpr Card cards[] = {
    {"home", 2, "userMosaic", "people-to-follow", true, peopleCard},
    {"home", 5, "urlAction", "longform-launch", true, longformCard},
    {"popular", 3, "postsMosaic", "editors-picks", false, picksCard},
    {"popular", 8, "solicitation", "rate-the-app", true, ratingCard},
};

/// Cards that can be closed name where.
Json cardRecord(const Card& card, const Context& context, const PostView& view) {
    Json record = card.content(context, view);
    record["type"] = card.type;
    record["reference"] = card.reference;
    record["position"] = card.position;
    record["closeable"] = card.closeable;
    if (card.closeable) {
        record["closeUrlPath"] = "inserts/" + std::string(card.reference) + "/close";
    }
    return record;
}

Answer inserts(const Call& call, const Context& context) {
    const auto session = presentedSession(call, context);
    const PostView view = readView(call.request, session);
    Json records = Json::array();
    for (const Card& card : cards) {
        const bool closed = session && context.store.closedInserts.contains(
                                           session->userId, std::string(card.reference));
        if (card.feed == call.argument("feed") && !closed) {
            records.push_back(cardRecord(card, context, view));
        }
    }
    return dataAnswer(listOf(records));
}

Answer close(const Call& call, const Context& context) {
    const Session session = requireSession(call, context);
    const std::string& reference = call.argument("reference");
    const bool known = std::any_of(std::begin(cards), std::end(cards), [&](const Card& card) {
        return card.closeable && card.reference == reference;
    });
    if (!known) {
        throw ServiceError(404, ErrorCode::notFound, "There is no such insert to close");
    }
    context.store.closedInserts.add(session.userId, reference);
    return dataAnswer(Json::object());
}

} // namespace

void addInsertRoutes(Router& router, const Context& context) {
    router.add("GET", "/inserts/:feed",
               [&context](const Call& call) { return inserts(call, context); });
    router.add("POST", "/inserts/:reference/close",
               [&context](const Call& call) { return close(call, context); });
}

} // namespace KeloService
