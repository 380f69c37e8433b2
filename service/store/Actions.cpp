#include "service/store/Actions.hpp"

#include "service/seed/Seed.hpp"

namespace KeloService {
namespace {

PostMark readMark(const Query& query) {
    return {query.integer(0), query.integer(1), query.integer(2)};
}

std::string sinceTheSeed() {
    return " WHERE created > " + std::to_string(seededMoment);
}

} // namespace

template <typename Entry, typename Read>
std::vector<Entry> Actions::readAll(const std::string& sql, Read read) {
    const auto lock = database_.lock();
    std::vector<Entry> entries;
    Query query = database_.query(sql);
    while (query.next()) {
        entries.push_back(read(query));
    }
    return entries;
}

std::vector<PostMark> Actions::likes() {
    return readAll<PostMark>(
        "SELECT likeId, postId, userId FROM likes" + sinceTheSeed() + " ORDER BY likeId", readMark);
}

std::vector<PostMark> Actions::reposts() {
    return readAll<PostMark>("SELECT repostId, postId, userId FROM reposts" + sinceTheSeed() +
                                 " ORDER BY repostId",
                             readMark);
}

std::vector<Follow> Actions::follows() {
    return readAll<Follow>(
        "SELECT userId, followeeId FROM outsideFollows ORDER BY created, userId, followeeId",
        [](const Query& query) {
            return Follow{query.integer(0), query.integer(1)};
        });
}

std::vector<FeedbackEntry> Actions::feedback() {
    return readAll<FeedbackEntry>(
        "SELECT userId, kind, targetId, boost FROM feedback ORDER BY feedbackId",
        [](const Query& query) {
            return FeedbackEntry{query.integer(0), query.text(1), query.integer(2), query.text(3)};
        });
}

std::vector<LoopsEntry> Actions::loops() {
    return readAll<
        LoopsEntry>("SELECT userId, postId, count, ts FROM loops ORDER BY loopsId", [](const Query&
                                                                                           query) {
        return LoopsEntry{query.integer(0), {query.integer(1), query.integer(2), query.real(3)}};
    });
}

std::vector<ViewEntry> Actions::views() {
    return readAll<ViewEntry>("SELECT userId, longformId, timestamp FROM views ORDER BY viewId",
                              [](const Query& query) {
                                  return ViewEntry{query.integer(0), query.text(1), query.text(2)};
                              });
}

} // namespace KeloService
