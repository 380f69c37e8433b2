// How a host tests its own code without a network: a scripted transport takes the place of HTTP,
// answers what the test says and remembers what was sent.
#include <KeloAPI/KeloAPI.hpp>

#include <iostream>

using namespace KeloAPI;
using KeloAPI::fakes::ScriptedAnswer;
using KeloAPI::fakes::ScriptedTransport;

namespace {

/// The host's code under test: how many posts of a feed's first page the user likes; -1 when that
/// cannot be told.
void countLikes(const std::shared_ptr<Session>& session, std::function<void(int)> completion) {
    const auto feed = TimelineEndpoint::create(session);
    feed->setPath("timelines/home");
    feed->fetch([completion = std::move(completion)](const TimelineResult& result) {
        if (result.success() == nullptr) {
            completion(-1);
            return;
        }
        int likes = 0;
        for (const auto& post : result.success()->posts) {
            likes += post->liked.value_or(false) ? 1 : 0;
        }
        completion(likes);
    });
}

/// What `countLikes` makes of this answer; absent when it never calls back.
std::optional<int> likesIn(const std::string& answer) {
    const auto transport = std::make_shared<ScriptedTransport>();
    const auto session = std::make_shared<Session>(SessionType::UnAuthenticated);
    session->setSessionManager(std::make_shared<Manager>(transport));
    transport->answer(ScriptedAnswer::json(answer));
    std::optional<int> likes;
    countLikes(session, [&likes](int count) { likes = count; });
    MainQueue::main().runUntil([&likes] { return likes.has_value(); }, std::chrono::seconds(5));
    if (transport->requests().size() != 1) {
        return std::nullopt;
    }
    return likes;
}

bool expect(const char* what, std::optional<int> found, int wanted) {
    const bool ok = found == wanted;
    std::cout << (ok ? "ok      " : "failed  ") << what << '\n';
    return ok;
}

} // namespace

int main() {
    Diagnostics::setSink([](std::string_view) {});
    bool ok = expect("counts the posts that are liked",
                     likesIn(R"({"data": {"records": [{"postId": 1, "liked": true},
                                                      {"postId": 2, "liked": false},
                                                      {"postId": 3, "liked": true}]}})"),
                     2);
    ok &= expect("finds none in an empty feed", likesIn(R"({"data": {"records": []}})"), 0);
    ok &= expect("reports the service's refusal", likesIn(R"({"error": "No.", "code": 7})"), -1);
    return ok ? 0 : 1;
}
