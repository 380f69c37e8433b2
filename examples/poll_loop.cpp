// A host with a poll(2) loop of its own: the main queue's descriptor is watched beside the host's
// other ones (here a timer), and drained when it becomes readable.
#include "ExampleHost.hpp"

#include <poll.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <iostream>

using namespace KeloAPI;

namespace {

int startTimer() {
    const int timer = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    const itimerspec tenTimesASecond = {{0, 100'000'000}, {0, 100'000'000}};
    timerfd_settime(timer, 0, &tenTimesASecond, nullptr);
    return timer;
}

void clear(int timer) {
    std::uint64_t ticks = 0;
    [[maybe_unused]] const auto got = read(timer, &ticks, sizeof ticks);
}

} // namespace

int main() {
    ExampleHost::use();
    bool done = false;
    bool ok = false;
    MeEndpoint::create()->get([&](const MeResult& result) {
        done = true;
        ok = result.success() != nullptr;
        std::cout << (ok ? "Signed in as " + result.success()->user->username.value_or("?")
                         : result.error()->localizedDescription())
                  << '\n';
    });

    pollfd watched[] = {{MainQueue::main().fileDescriptor(), POLLIN, 0}, {startTimer(), POLLIN, 0}};
    while (!done) {
        if (poll(watched, std::size(watched), -1) < 0) {
            return 1;
        }
        if ((watched[0].revents & POLLIN) != 0) {
            MainQueue::main().drain();
        }
        if ((watched[1].revents & POLLIN) != 0) {
            clear(watched[1].fd); // here the host would draw its next frame
        }
    }
    close(watched[1].fd);
    return ok ? 0 : 1;
}
