// How a host tests what happens over time, in no time: a clock and a main queue that the test
// drives by hand.
#include <KeloAPI/KeloAPI.hpp>

#include <iostream>

using namespace KeloAPI;
using namespace KeloAPI::fakes;
using namespace std::chrono_literals;

namespace {

/// The host's own timer.
using After = std::function<void(std::chrono::milliseconds time, std::function<void()> task)>;

/// The host's code under test: a screen that says so when a feed takes its time.
class FeedScreen {
public:
    FeedScreen(std::shared_ptr<Session> session, After after)
        : _session(std::move(session))
        , _after(std::move(after)) {}

    void load() {
        text = "Loading";
        _after(2s, [this] { text = text == "Loading" ? "Still loading" : text; });
        const auto feed = TimelineEndpoint::create(_session);
        feed->setPath("timelines/home");
        feed->fetch([this](const TimelineResult& page) {
            text = page.success() != nullptr
                       ? std::to_string(page.success()->posts.size()) + " posts"
                       : "Try again later";
        });
    }

    std::string text;

private:
    const std::shared_ptr<Session> _session;
    const After _after;
};

bool expect(const char* what, bool holds) {
    std::cout << (holds ? "ok      " : "failed  ") << what << '\n';
    return holds;
}

bool testOverTime(std::chrono::milliseconds delay, const std::string& outcome) {
    ManualMainQueue queue;
    const auto clock = std::make_shared<ManualClock>();
    const auto transport = std::make_shared<ScriptedTransport>(clock);
    const auto session = std::make_shared<Session>(SessionType::UnAuthenticated);
    session->setSessionManager(std::make_shared<Manager>(transport));
    ScriptedAnswer answer = ScriptedAnswer::json(R"({"data": {"records": []}})");
    answer.delay = delay;
    transport->answer(answer);

    FeedScreen screen(session, [&](auto time, auto task) { clock->after(time, task); });
    screen.load();
    clock->advance(1999ms);
    bool ok = expect("says at first that it loads", screen.text == "Loading");
    clock->advance(1ms);
    ok &= expect("says after two seconds that it still does", screen.text == "Still loading");
    clock->advance(delay);
    queue.runUntil([&] { return screen.text != "Still loading"; });
    ok &= expect("says what came of it", screen.text == outcome);
    queue.requireEmpty();
    return ok;
}

} // namespace

int main() {
    Diagnostics::setSink([](std::string_view) {});
    const bool isLate = testOverTime(5s, "0 posts");
    // Requests time out after a minute.
    const bool isTooLate = testOverTime(61s, "Try again later");
    return isLate && isTooLate ? 0 : 1;
}
