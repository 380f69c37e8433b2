// Reads who is signed in and some pages of a feed, one call after another in one function; and the
// sounds on a thread that may wait for them.
//
//     example-coroutines PAGES
#include "ExampleHost.hpp"

#include <KeloAPI/async.hpp>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <thread>

using namespace KeloAPI;

namespace {

/// False where a call failed.
async::Task<bool> showFeed(long pages) {
    const MeResult me = co_await async::fetch(MeEndpoint::create());
    if (const Error* error = me.error()) {
        std::cerr << error->localizedDescription() << '\n';
        co_return false;
    }
    std::cout << "Signed in as " << me.success()->user->username.value_or("?") << '\n';

    async::TimelinePages feed(TimelineEndpoint::create("popular"));
    while (pages-- > 0) {
        const std::optional<TimelineResult> page = co_await feed.next();
        if (!page) {
            break;
        }
        if (const Error* error = page->error()) {
            std::cerr << error->localizedDescription() << '\n';
            co_return false;
        }
        for (const auto& post : page->success()->posts) {
            std::cout << post->caption.value_or("") << '\n';
        }
    }
    co_return true;
}

void countSounds() {
    auto endpoint = SoundboardEndpoint::create(Api::session(SessionType::UnAuthenticated));
    std::thread worker([endpoint] {
        const auto sounds = async::futureOf(async::fetchSounds(endpoint)).get();
        std::cout << (sounds ? sounds.value().size() : 0) << " sounds\n";
        MainQueue::main().stop();
    });
    MainQueue::main().run(); // on this thread: the worker would wait for itself
    worker.join();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "example-coroutines PAGES\n";
        return 2;
    }
    ExampleHost::use();
    auto task = showFeed(std::strtol(argv[1], nullptr, 10));
    MainQueue::main().runUntil([&task] { return task.isDone(); }, std::chrono::minutes(5));
    if (!task.isDone() || !task.result()) {
        return 1;
    }
    countSounds();
    return 0;
}
