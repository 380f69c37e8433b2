#include "Calls.hpp"
#include "Control.hpp"
#include "Steps.hpp"

#include <KeloAPI/api/Api.hpp>
#include <KeloAPI/endpoints/LongformViewsEndpoint.hpp>
#include <KeloAPI/endpoints/LoopsEndpoint.hpp>
#include <KeloAPI/endpoints/SoundboardEndpoint.hpp>
#include <KeloAPI/model/KLLongformViews.hpp>
#include <KeloAPI/model/KLWatchUser.hpp>
#include <KeloAPI/model/LoopData.hpp>
#include <KeloAPI/model/SoundboardSound.hpp>
#include <KeloAPI/queues/Diagnostics.hpp>

#include <algorithm>

namespace KeloTour {

using namespace KeloAPI;

namespace {

constexpr const char* longformId = "lf-clay-orchestra";

std::uint64_t loopsOfAuthor(const KLWatchPost& post) {
    check(post.user && post.user->loopData, "the author has no loop counter");
    return post.user->loopData->count.uint64Value();
}

/// Reports loops; the library's diagnostic line is the only news of the outcome.
void submitLoops(LoopsEndpoint& endpoint, std::int64_t count, const KLWatchPost& post) {
    Inbox<std::string> lines;
    const Silence silence;
    Diagnostics::setSink([slot = lines.slot()](std::string_view line) {
        slot(std::string(line)); // on the main queue, where the call ends
    });
    endpoint.submit(count, post);
    const std::string line = lines.next();
    came(line);
    check(line == "Submitted loops with error: nil", "the loops were not reported");
}

void countedLoops() {
    const auto post = untouchedPost();
    const std::uint64_t before = loopsOfAuthor(*post);
    const auto endpoint = LoopsEndpoint::create();
    for (const std::int64_t count : {5, 7}) {
        const auto request = Control::received([&] { submitLoops(*endpoint, count, *post); });
        check(request.method == "POST" && request.path == "/loops", "that is another request");
        const auto kept = Control::kept("loops").back();
        check(kept.at("postId") == *post->postId && kept.at("count") == std::to_string(count),
              "other loops are kept");
    }
    const std::uint64_t added = loopsOfAuthor(*readAgain(*post)) - before;
    note("read again, the author has " + std::to_string(added) + " loops more");
    check(added == 12, "there should be 12 more");
}

std::int64_t fetchViews(LongformViewsEndpoint& endpoint) {
    using Answer = std::pair<std::shared_ptr<KLLongformViews>, std::optional<Error>>;
    Inbox<Answer> inbox;
    endpoint.fetchViews(
        [slot = inbox.slot()](std::shared_ptr<KLLongformViews> views, std::optional<Error> error) {
            slot({std::move(views), std::move(error)});
        });
    const Answer answer = inbox.next();
    checkSuccess(answer.second ? &*answer.second : nullptr);
    check(answer.first != nullptr, "there are no views");
    came(std::to_string(answer.first->count()) + " views of " + answer.first->longformId());
    return answer.first->count();
}

void submitView(LongformViewsEndpoint& endpoint) {
    Inbox<std::optional<Error>> inbox;
    endpoint.submitView(
        [slot = inbox.slot()](std::optional<Error> error) { slot(std::move(error)); });
    const auto error = inbox.next();
    checkSuccess(error ? &*error : nullptr);
}

void countedViews() {
    const auto endpoint = LongformViewsEndpoint::create(longformId);
    const std::int64_t before = fetchViews(*endpoint);
    const auto request = Control::received([&] { submitView(*endpoint); });
    check(request.method == "POST" &&
              request.path == std::string("/longforms/") + longformId + "/views",
          "that is another request");
    const auto timestamp = Control::kept("views").back().at("timestamp");
    check(request.body == R"({"timestamp":")" + timestamp + "\"}", "another instant is kept");
    check(timestamp.find('.') != std::string::npos, "the instant has no fraction");
    check(fetchViews(*endpoint) == before + 1, "there should be one more");
}

void soundboard() {
    using Sounds = std::vector<std::shared_ptr<SoundboardSound>>;
    Inbox<std::pair<Sounds, std::optional<Error>>> inbox;
    SoundboardEndpoint::create(Api::session(SessionType::Authenticated))
        ->fetchSounds([slot = inbox.slot()](Sounds sounds, std::optional<Error> error) {
            slot({std::move(sounds), std::move(error)});
        });
    const auto [sounds, error] = inbox.next();
    checkSuccess(error ? &*error : nullptr);
    check(!sounds.empty(), "there are no sounds");
    const auto featured = std::count_if(sounds.begin(), sounds.end(),
                                        [](const auto& sound) { return sound->featured(); });
    came(std::to_string(sounds.size()) + " sounds, " + std::to_string(featured) +
         " of them featured, the first: " + sounds.front()->name() + " at " +
         sounds.front()->soundUrl().absoluteString());
    for (const auto& sound : sounds) {
        check(!sound->name().empty() && !sound->soundUrl().absoluteString().empty(),
              "a sound is incomplete");
    }
}

} // namespace

void tourMedia(Tour& tour) {
    tour.step("Loops are reported, and counted by the service", countedLoops);
    tour.step("The views of a long-form video, and one of one's own", countedViews);
    tour.step("The soundboard", soundboard);
}

} // namespace KeloTour
