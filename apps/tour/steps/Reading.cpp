#include "Calls.hpp"
#include "Control.hpp"
#include "Steps.hpp"
#include "TourHost.hpp"

#include <KeloAPI/model/KLWatchPost.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>

#include <algorithm>
#include <map>

namespace KeloTour {

using namespace KeloAPI;

namespace {

void signedInUser() {
    Inbox<MeResult> inbox;
    sendMe(inbox);
    const MeResult result = inbox.next();
    check(nameIn(result) == "mara", "another user came: " + nameIn(result));
    const auto& loops = result.success()->user->loopData;
    check(loops != nullptr, "the user has no loop counter");
    came("the user mara with " + loops->count.stringValue() + " loops, growing by " +
         loops->velocity.stringValue() + " a second");
}

void expectReceived(const std::string& name, const std::string& wanted, const std::string& found) {
    check(found == wanted, name + " arrived as '" + found + "'");
    came("the service received " + name + ": " + found);
}

void identifyingHeaders() {
    const std::int64_t before = Control::lastRequest();
    TourHost::instance().polling = true;
    Inbox<MeResult> inbox;
    sendMe(inbox);
    TourHost::instance().polling = false;
    nameIn(inbox.next());
    const auto requests = Control::requestsSince(before);
    const auto found = std::find_if(requests.begin(), requests.end(),
                                    [](const auto& one) { return one.path == "/users/me"; });
    check(found != requests.end(), "the service did not receive it");
    auto received = found->headers;
    const std::map<std::string, std::string> wanted = {
        {"Accept-Language", "en-US"},
        {"User-Agent", "kelo-tour/1.0"},
        {"X-Kelo-Client", "tour/1.0"},
        {"X-Kelo-Polling", "true"},
        {"kelo-session-id", *TourHost::instance().sessionKey}};
    for (const auto& [name, value] : wanted) {
        expectReceived(name, value, received[name]);
    }
}

void firstPage() {
    const auto page = read(TimelineEndpoint::create("home"));
    check(page.posts.size() == 5, "a page holds 5 posts unless asked otherwise");
    check(page.nextPage != nullptr, "there should be a next page");
    check(page.previousPage == nullptr, "there should be no page before the first");
    for (const auto& post : page.posts) {
        check(post->postId && post->user && post->created && post->videoUrl,
              "a post is incomplete");
    }
    note("each with its author, date, default rendition and thumbnail");
}

void emptyFeed() {
    const auto page = read(TimelineEndpoint::create("empty"));
    check(page.posts.empty(), "there are posts");
    check(page.nextPage == nullptr && page.previousPage == nullptr, "there are pages beside it");
}

void oneConnection() {
    const std::int64_t before = Control::acceptedConnections();
    const Silence silence;
    sent("GET https://" + TourHost::instance().host + "/users/me, twenty times");
    for (int i = 0; i < 20; ++i) {
        Inbox<MeResult> inbox;
        sendMe(inbox);
        nameIn(inbox.next());
    }
    const std::int64_t made = Control::acceptedConnections() - before;
    came("20 answers over the connection that was there; new connections: " + std::to_string(made));
    check(made == 0, "connections should be used again");
}

} // namespace

void tourReading(Tour& tour) {
    tour.step("The signed-in user", signedInUser);
    tour.step("What identifies each request", identifyingHeaders);
    tour.step("The first page of a timeline", firstPage);
    tour.step("An empty timeline", emptyFeed);
    tour.step("Twenty requests, one connection", oneConnection);
}

} // namespace KeloTour
