#include "service/routes/Guard.hpp"
#include "service/routes/Pages.hpp"
#include "service/routes/Records.hpp"
#include "service/routes/Routes.hpp"

namespace KeloService {
namespace {

/// Whose posts a timeline has: the argument of its feed, and the end of its title.
struct Subject {
    std::optional<std::int64_t> id;
    std::string name;
};
using SubjectOf = Subject (*)(const Call&, const Context&);

Subject everybody(const Call& /*call*/, const Context& /*context*/) {
    return {};
}

Subject viewer(const Call& call, const Context& context) {
    return {requireUser(call, context), ""};
}

Subject user(const Call& call, const Context& context) {
    const std::int64_t id = requireExisting(call, context, "user");
    return {id, context.database.text("SELECT username FROM users WHERE userId = ?1", id).value()};
}

Subject channel(const Call& call, const Context& context) {
    const std::int64_t id = requireExisting(call, context, "channel");
    return {id,
            context.database.text("SELECT name FROM channels WHERE channelId = ?1", id).value()};
}

/// Written with or without its "#", in any case; the feed of an unknown one is empty.
Subject tag(const Call& call, const Context& context) {
    const std::string& text = call.argument("tag");
    const std::string name = text.starts_with('#') ? text.substr(1) : text;
    const auto id = context.database.number("SELECT tagId FROM tags WHERE name = lower(?1)", name);
    return {id.value_or(0), name};
}

struct Timeline {
    const char* path;
    const char* title;
    SubjectOf subject;
    Paging paging;
    const char* source;
    const char* key;
};

constexpr const char* everything = "FROM posts p WHERE 1";

constexpr Timeline channelTimeline = {"/timelines/channels/:id",
                                      "",
                                      channel,
                                      Paging::TextAnchor,
                                      "FROM posts p WHERE p.channelId = ?1",
                                      "p.popularity"};

constexpr Timeline timelines[] = {
    {"/timelines/all", "All posts", everybody, Paging::Numbers, everything, "p.created"},
    {"/timelines/home", "Home", viewer, Paging::Numbers,
     "FROM follows f JOIN posts p ON p.userId = f.followeeId WHERE f.userId = ?1", "p.created"},
    {"/timelines/popular", "Popular now", everybody, Paging::TextAnchor, everything,
     "p.popularity"},
    {"/timelines/latest", "Latest", everybody, Paging::NumberAnchor, everything, "p.postId"},
    {"/timelines/editors-picks", "Editors' picks", everybody, Paging::Numbers,
     "FROM posts p WHERE p.pickRank IS NOT NULL", "p.pickRank"},
    {"/timelines/empty", "Nothing here yet", everybody, Paging::Numbers, "FROM posts p WHERE 0",
     "p.postId"},
    {"/timelines/users/:id", "", user, Paging::Numbers, "FROM posts p WHERE p.userId = ?1",
     "p.created"},
    {"/timelines/users/:id/likes", "Liked by ", user, Paging::Numbers,
     "FROM likes l JOIN posts p USING (postId) WHERE l.userId = ?1", "l.created"},
    channelTimeline,
    {"/timelines/tags/:tag", "#", tag, Paging::Numbers,
     "FROM postTags t JOIN posts p USING (postId) WHERE t.tagId = ?1", "p.created"},
};

constexpr const char* channelSelection = R"sql(
SELECT channelId, name AS channel, description, fontColor, backgroundColor, created AS "created@",
    '/media/channels/' || channelId || '.png' AS "iconFullUrl/",
    '/media/channels/' || channelId || '@2x.png' AS "retinaIconFullUrl/",
    '/media/channels/' || channelId || '-explore@2x.png' AS "exploreRetinaIconFullUrl/",
    0 AS "following?", 1 AS "showRecent?", vanityUrl
FROM channels )sql";

Json channelRecord(const Context& context, const std::optional<std::int64_t>& channelId) {
    const std::string sql = std::string(channelSelection) + "WHERE channelId = ?1";
    return records(context, sql, channelId).at(0);
}

/// `name` is the path of the timeline, which its anchors are good for.
Json timelinePage(const Timeline& timeline, const Call& call, const Context& context,
                  const std::string& name) {
    const auto sessionUserId = sessionUser(call, context);
    const Subject subject = timeline.subject(call, context);
    const Feed feed{timeline.title + subject.name, timeline.paging, timeline.source, timeline.key,
                    subject.id};
    Json page = readPage(call, context, feed, name, sessionUserId);
    if (timeline.subject == channel) {
        page["channel"] = channelRecord(context, subject.id);
    }
    return page;
}

Answer listChannels(const Call& call, const Context& context) {
    sessionUser(call, context);
    const std::string sql = std::string(channelSelection) + "ORDER BY channelId";
    return dataAnswer(wholeList(records(context, sql)));
}

Answer showChannel(const Call& call, const Context& context) {
    sessionUser(call, context);
    const std::int64_t channelId = requireExisting(call, context, "channel");
    Json record = channelRecord(context, channelId);
    record["timeline"] = timelinePage(channelTimeline, call, context,
                                      "/timelines/channels/" + std::to_string(channelId));
    return dataAnswer(record);
}

} // namespace

void addTimelineRoutes(Routes& routes) {
    for (const Timeline& timeline : timelines) {
        routes.add("GET", timeline.path, [&timeline](const Call& call, const Context& context) {
            return dataAnswer(
                timelinePage(timeline, call, context, std::string(call.request.path())));
        });
    }
    routes.add("GET", "/channels", listChannels);
    routes.add("GET", "/channels/:id", showChannel);
}

} // namespace KeloService
