#pragma once

#include "service/http/Router.hpp"
#include "service/routes/Context.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace KeloService {

/// A row as a record of the wire: its columns by their names, those left out that are null. A name
/// with full stops lies as deep: "loops.count". The end of a name says how its value is written:
/// "verified?" as true or false, "created@" as a date, "avatarUrl/" as an address of the service's
/// own.
Json record(const Query& row, const Context& context);

/// The records of all rows.
template <typename... Values>
Json records(const Context& context, const std::string& sql, const Values&... values) {
    Json list = Json::array();
    Query query = context.database.query(sql, values...);
    while (query.next()) {
        list.push_back(record(query, context));
    }
    return list;
}

/// {"count": ..., "records": [...]}
Json wholeList(Json records);

/// SELECT and FROM of users as "users/me" answers them.
inline constexpr const char* userSelection = R"sql(
SELECT userId, username, avatarPath AS "avatarUrl/", description, location, created AS "created@",
    '/u/' || userId AS "shareUrl/", verified AS "verified?", private AS "private?", loopCount,
    loopVelocity, followerCount, followingCount, likeCount,
    (SELECT count(*) FROM posts WHERE posts.userId = users.userId) AS postCount
FROM users )sql";

/// SELECT and FROM of the likes, reposts or comments (as m) of the post ?1. The fields of the user
/// who gave one lie at its top level. `noun` is the name of one of them.
std::string markSelection(const std::string& noun);

/// How posts are looked at: by whom, and how much of what hangs on them is wanted.
struct PostView {
    std::optional<std::int64_t> viewer;
    std::int64_t mostLikes = 0;
    std::int64_t mostComments = 0;
};

/// How the session's user sees posts: with as many comments and likes as the request's "c_max" and
/// "l_max" want.
PostView readView(const Call& call, const std::optional<std::int64_t>& user);

/// These posts, which exist, as the records of a timeline page.
Json postRecords(const Context& context, const std::vector<std::int64_t>& postIds,
                 const PostView& view);

} // namespace KeloService
