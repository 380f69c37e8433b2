// A host whose framework has a "run this on the main thread" function: the library's tasks go
// through it, and the main queue is never run.
#include "ExampleHost.hpp"

#include <condition_variable>
#include <deque>
#include <functional>
#include <iostream>
#include <mutex>

using namespace KeloAPI;

namespace {

/// Stands for the framework: any thread may post, the main thread runs.
class Framework {
public:
    void runOnMainThread(std::function<void()> work) {
        {
            const std::lock_guard lock(_mutex);
            _work.push_back(std::move(work));
        }
        _changed.notify_one();
    }

    /// The main thread's loop.
    void run() {
        while (!_quit) {
            next()();
        }
    }

    void quit() { _quit = true; }

private:
    std::function<void()> next() {
        std::unique_lock lock(_mutex);
        _changed.wait(lock, [this] { return !_work.empty(); });
        auto work = std::move(_work.front());
        _work.pop_front();
        return work;
    }

    std::mutex _mutex;
    std::condition_variable _changed;
    std::deque<std::function<void()>> _work;
    bool _quit = false;
};

} // namespace

int main() {
    Framework framework;
    MainQueue::main().setExecutor(
        [&framework](MainQueue::Task task) { framework.runOnMainThread(std::move(task)); });
    ExampleHost::use();
    bool ok = false;
    MeEndpoint::create()->get([&](const MeResult& result) {
        ok = result.success() != nullptr;
        std::cout << (ok ? "Signed in as " + result.success()->user->username.value_or("?")
                         : result.error()->localizedDescription())
                  << '\n';
        framework.quit();
    });
    framework.run();
    MainQueue::main().setExecutor({}); // the framework ends before the library does
    return ok ? 0 : 1;
}
