#pragma once

#include "Tour.hpp"

#include <KeloAPI/api/Endpoint.hpp>
#include <KeloAPI/endpoints/MeEndpoint.hpp>
#include <KeloAPI/endpoints/PostActionEndpoint.hpp>
#include <KeloAPI/endpoints/TimelineEndpoint.hpp>
#include <KeloAPI/queues/MainQueue.hpp>

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The library's calls, one after another: each starts, runs the main queue and returns what its
/// completion was called with.
namespace KeloTour {

constexpr std::chrono::seconds patience(20);

/// The calls of one completion, oldest first: a retry calls it again.
template <class T>
class Inbox {
public:
    /// What to give the library as the completion's work.
    auto slot() const {
        return [calls = _calls](T value) { calls->push_back(std::move(value)); };
    }

    /// The next call; fails the step when none comes in time.
    T next() {
        KeloAPI::MainQueue::main().runUntil([this] { return !_calls->empty(); }, patience);
        check(!_calls->empty(), "no completion came within 20 seconds");
        T value = std::move(_calls->front());
        _calls->pop_front();
        return value;
    }

    /// True when no further call comes within a moment.
    bool staysEmpty() {
        return !KeloAPI::MainQueue::main().runUntil([this] { return !_calls->empty(); },
                                                    std::chrono::milliseconds(200));
    }

private:
    std::shared_ptr<std::deque<T>> _calls = std::make_shared<std::deque<T>>();
};

/// What a parsed call brings.
template <class Item>
struct Parsed {
    std::vector<std::shared_ptr<Item>> items;
    std::optional<KeloAPI::Metadata> metadata;
    std::optional<KeloAPI::Error> error;
};

/// Sends a call with a parser; the answer goes to `inbox`.
template <class P>
std::shared_ptr<KeloAPI::EndpointRequest> send(const std::shared_ptr<KeloAPI::Endpoint>& endpoint,
                                               Inbox<Parsed<typename P::T>>& inbox,
                                               std::shared_ptr<P> parser = std::make_shared<P>()) {
    return endpoint->request(
        std::move(parser),
        [slot = inbox.slot()](std::vector<std::shared_ptr<typename P::T>> items,
                              std::optional<KeloAPI::Metadata> metadata, const KeloAPI::Timeline&,
                              std::optional<KeloAPI::Error> error) {
            slot({std::move(items), std::move(metadata), std::move(error)});
        });
}

/// Fails the step when there is an error.
void checkSuccess(const KeloAPI::Error* error);

/// What a parser makes of an answer; fails the step when there is an error.
template <class P>
std::vector<std::shared_ptr<typename P::T>>
readAll(const std::shared_ptr<KeloAPI::Endpoint>& endpoint, std::shared_ptr<P> parser) {
    Inbox<Parsed<typename P::T>> inbox;
    send<P>(endpoint, inbox, std::move(parser));
    auto answer = inbox.next();
    checkSuccess(answer.error ? &*answer.error : nullptr);
    return std::move(answer.items);
}

/// The same for an answer of one item.
template <class P>
std::shared_ptr<typename P::T> readOne(const std::shared_ptr<KeloAPI::Endpoint>& endpoint,
                                       std::shared_ptr<P> parser) {
    const auto items = readAll(endpoint, std::move(parser));
    check(items.size() == 1, "one item should have come");
    return items.front();
}

/// The call that reads the signed-in user; each call of its completion goes to `inbox`.
void sendMe(Inbox<KeloAPI::MeResult>& inbox);

/// The user's name; fails the step when there is an error.
std::string nameIn(const KeloAPI::MeResult& result);

/// The error; fails the step when there is none.
KeloAPI::Error errorIn(const KeloAPI::MeResult& result);

/// Reads one page; fails the step when there is an error. Tells what came.
KeloAPI::TimelineSuccess read(const std::shared_ptr<KeloAPI::TimelineEndpoint>& page);

/// The newest posts, so many of them.
std::vector<std::shared_ptr<KeloAPI::KLWatchPost>> newestPosts(int size);

/// One of the newest posts that the user has neither liked nor reposted.
std::shared_ptr<KeloAPI::KLWatchPost> untouchedPost();

/// The same post, with what the timeline says of it now.
std::shared_ptr<KeloAPI::KLWatchPost> readAgain(const KeloAPI::KLWatchPost& post);

/// Does something to a post or takes it back; fails the step when there is an error. Null when the
/// answer held no item.
template <class P>
std::shared_ptr<typename P::T> toggle(KeloAPI::PostActionEndpoint<P>& endpoint, bool on) {
    using Result = KeloAPI::PostActionResult<typename P::T>;
    Inbox<Result> inbox;
    endpoint.toggle(on, [slot = inbox.slot()](const Result& result) { slot(result); });
    const Result result = inbox.next();
    checkSuccess(result.error());
    return result.success()->item;
}

/// An endpoint of the signed-in session for a path.
std::shared_ptr<KeloAPI::Endpoint> endpointAt(const std::string& path,
                                              KeloAPI::Parameters parameters = {});

/// The answer's text; fails the step when there is an error.
std::string readText(const std::shared_ptr<KeloAPI::Endpoint>& endpoint);

/// The identifiers of posts, in order.
std::vector<std::string> idsOf(const std::vector<std::shared_ptr<KeloAPI::KLWatchPost>>& posts);

} // namespace KeloTour
