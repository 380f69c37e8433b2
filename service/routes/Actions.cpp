#include "service/routes/Routes.hpp"

namespace KeloService {
namespace {

Json marks(const std::vector<PostMark>& marks, const char* idKey) {
    Json list = Json::array();
    for (const PostMark& mark : marks) {
        list.push_back({{idKey, mark.id}, {"postId", mark.postId}, {"userId", mark.userId}});
    }
    return list;
}

Json follows(Actions& actions) {
    Json list = Json::array();
    for (const Follow& follow : actions.follows()) {
        list.push_back({{"userId", follow.userId}, {"followeeId", follow.followeeId}});
    }
    return list;
}

Json feedback(Actions& actions) {
    Json list = Json::array();
    for (const FeedbackEntry& entry : actions.feedback()) {
        list.push_back({{"userId", entry.userId},
                        {"kind", entry.kind},
                        {"targetId", entry.targetId},
                        {"boost", entry.boost}});
    }
    return list;
}

Json loops(Actions& actions) {
    Json list = Json::array();
    for (const LoopsEntry& entry : actions.loops()) {
        list.push_back({{"userId", entry.userId},
                        {"postId", entry.report.postId},
                        {"count", entry.report.count},
                        {"ts", entry.report.ts}});
    }
    return list;
}

Json views(Actions& actions) {
    Json list = Json::array();
    for (const ViewEntry& entry : actions.views()) {
        list.push_back({{"userId", entry.userId},
                        {"longformId", entry.longformId},
                        {"timestamp", entry.timestamp}});
    }
    return list;
}

} // namespace

void addActionRoutes(Router& router, const Context& context) {
    router.add("GET", "/_service/actions", [&actions = context.store.actions](const Call&) {
        return jsonAnswer({{"likes", marks(actions.likes(), "likeId")},
                           {"reposts", marks(actions.reposts(), "repostId")},
                           {"follows", follows(actions)},
                           {"feedback", feedback(actions)},
                           {"loops", loops(actions)},
                           {"views", views(actions)}});
    });
}

} // namespace KeloService
