#pragma once

#include "Explorer.hpp"

#include <array>
#include <compare>
#include <utility>

/// The places where the library's threads meet, step by step as the sources named beside each model
/// take them, and small enough to be explored in every order. Each has one fault that can be
/// planted.
namespace KeloAPI::testing {

/// MainQueue.cpp: two threads post two tasks each, and a host polls the descriptor and drains.
struct MainQueueModel {
    static constexpr const char* name = "MainQueue";
    static constexpr int threads = 3;
    static constexpr int posts = 2;

    bool faulty = false; ///< the descriptor is cleared when the lock has been given back
    std::array<int, 2> posted{};
    int waiting = 0, left = 0, ran = 0;
    bool signalled = false, draining = false, mustClear = false;

    std::strong_ordering operator<=>(const MainQueueModel&) const = default;

    Turn step(int thread) { return thread < 2 ? post(posted[thread]) : host(); }

    Turn post(int& done) {
        if (done == posts) {
            return Turn::Ended;
        }
        ++done;
        ++waiting;
        signalled = signalled || waiting == 1;
        return Turn::Taken;
    }

    Turn host() {
        if (mustClear) {
            mustClear = false;
            signalled = false;
        } else if (!draining) {
            if (!signalled) {
                return Turn::Blocked; // in poll
            }
            draining = true;
            left = waiting;
        } else if (left > 0 && waiting > 0) {
            --left;
            --waiting;
            ++ran;
            if (waiting == 0) {
                (faulty ? mustClear : signalled) = faulty;
            }
        } else {
            draining = false;
        }
        return Turn::Taken;
    }

    std::string broken(bool atEnd) const {
        if (!draining && waiting > 0 && !signalled && !mustClear) {
            return "a task waits and the descriptor is not readable";
        }
        return atEnd && ran != 2 * posts ? "a task has not run" : "";
    }
};

/// SerialQueue.cpp: two threads enter two tasks each, then the queue goes; its thread takes
/// batches.
struct SerialQueueModel {
    static constexpr const char* name = "SerialQueue";
    static constexpr int threads = 3;
    static constexpr int posts = 2;

    bool faulty = false; ///< the thread looks, and begins to wait in a second step
    std::array<int, 2> posted{};
    std::array<bool, 2> mustNotify{};
    int waiting = 0, batch = 0, ran = 0;
    enum class At : std::uint8_t { Looking, AboutToWait, Waiting, Running, Ended } at{};
    bool closed = false;

    std::strong_ordering operator<=>(const SerialQueueModel&) const = default;

    Turn step(int thread) { return thread < 2 ? enter(thread) : run(); }

    Turn enter(int thread) {
        if (mustNotify[thread]) {
            mustNotify[thread] = false;
            at = at == At::Waiting ? At::Looking : at;
        } else if (posted[thread] < posts) {
            ++posted[thread];
            ++waiting;
            mustNotify[thread] = true;
        } else if (thread == 0 && !closed && posted[1] == posts && !mustNotify[1]) {
            closed = true; // the last reference is thread 0's
            mustNotify[0] = true;
        } else {
            return thread == 0 && !closed ? Turn::Blocked : Turn::Ended;
        }
        return Turn::Taken;
    }

    Turn run() {
        switch (at) {
        case At::Looking:
            if (waiting > 0) {
                batch = std::exchange(waiting, 0);
                at = At::Running;
            } else if (closed) {
                at = At::Ended;
            } else {
                at = faulty ? At::AboutToWait : At::Waiting;
            }
            return Turn::Taken;
        case At::AboutToWait:
            at = At::Waiting;
            return Turn::Taken;
        case At::Running:
            ++ran;
            at = --batch == 0 ? At::Looking : At::Running;
            return Turn::Taken;
        case At::Waiting:
            return Turn::Blocked;
        case At::Ended:
            break;
        }
        return Turn::Ended;
    }

    std::string broken(bool atEnd) const {
        if (at == At::Ended && (waiting > 0 || ran != 2 * posts)) {
            return "the thread has ended before a task";
        }
        return atEnd && at != At::Ended ? "the thread sleeps for ever" : "";
    }
};

/// NetworkThread.cpp: a host starts three transfers on two threads and cancels one of them; the
/// network thread takes commands, works, and rests in poll.
struct NetworkThreadModel {
    static constexpr const char* name = "NetworkThread";
    static constexpr int threads = 3;

    bool faulty = false; ///< the thread rests without a second look at its commands
    std::array<int, 2> at{};
    int starts = 0, cancels = 0, taken = 0, ended = 0;
    bool resting = false, woken = false;
    enum class Loop : std::uint8_t { Taking, Working, Resting, Polling } loop{};

    std::strong_ordering operator<=>(const NetworkThreadModel&) const = default;

    Turn step(int thread) { return thread < 2 ? host(thread) : network(); }

    Turn host(int thread) {
        constexpr int last = 2; // thread 0 starts two transfers, thread 1 one and cancels it
        if (at[thread] == last) {
            return Turn::Ended;
        }
        if (thread == 1 && at[1] == 1) {
            ++cancels;
            woken = true;
        } else {
            ++starts;
            woken = woken || resting;
            resting = false;
        }
        ++at[thread];
        return Turn::Taken;
    }

    Turn network() {
        switch (loop) {
        case Loop::Taking:
            resting = false;
            taken += std::exchange(starts, 0);
            cancels = 0;
            loop = Loop::Working;
            break;
        case Loop::Working:
            ended = taken;
            loop = Loop::Resting;
            break;
        case Loop::Resting:
            resting = faulty || starts == 0;
            loop = resting ? Loop::Polling : Loop::Taking;
            break;
        case Loop::Polling:
            if (!woken) {
                return Turn::Blocked;
            }
            woken = false;
            loop = Loop::Taking;
            break;
        }
        return Turn::Taken;
    }

    std::string broken(bool atEnd) const {
        if (loop == Loop::Polling && !woken && (starts > 0 || cancels > 0)) {
            return "a command waits and nothing wakes the network thread";
        }
        return atEnd && ended != 3 ? "a transfer has not ended" : "";
    }
};

/// Request.cpp and CurlTransfer.cpp: a response ends, the host cancels, and another handler is
/// attached meanwhile. Both handlers complete once, in the order in which they were attached.
struct CompletionModel {
    static constexpr const char* name = "Completion";
    static constexpr int threads = 4; // network, the host's cancel, its second handler, main

    enum class Phase : std::uint8_t { Running, Over, Served };

    bool faulty = false; ///< what was attached is taken and the phase set in two steps
    Phase phase{};
    bool exchange = true, canceller = false;
    int network = 0, cancel = 0, attach = 0;
    int handlers = 1, late = 0, posted = 0, completed = 0, cancels = 0;

    std::strong_ordering operator<=>(const CompletionModel&) const = default;

    Turn step(int thread) {
        switch (thread) {
        case 0:
            return networkStep();
        case 1:
            return cancelStep();
        case 2:
            return attachStep();
        default:
            return mainStep();
        }
    }

    Turn networkStep() {
        switch (network++) {
        case 0: // the transfer is over: nothing can cancel it any more
            phase = Phase::Over;
            exchange = false;
            return Turn::Taken;
        case 1: // end(): takes and serves what is attached, until nothing is
            if (handlers > 0) {
                posted += std::exchange(handlers, 0);
                --network;
            }
            return Turn::Taken;
        case 2: // the phase and what came meanwhile, under one lock
            if (!faulty) {
                phase = Phase::Served;
            }
            late = std::exchange(handlers, 0);
            return Turn::Taken;
        case 3:
            phase = Phase::Served;
            posted += std::exchange(late, 0);
            return Turn::Taken;
        default:
            --network;
            return Turn::Ended;
        }
    }

    Turn cancelStep() {
        switch (cancel++) {
        case 0:
            canceller = exchange;
            return Turn::Taken;
        case 1: // the network thread ignores what has ended
            cancels += canceller && phase == Phase::Running ? 1 : 0;
            return Turn::Taken;
        default:
            --cancel;
            return Turn::Ended;
        }
    }

    Turn attachStep() {
        if (attach > 0) {
            return Turn::Ended;
        }
        attach = 1;
        if (phase != Phase::Served) {
            ++handlers;
        } else {
            ++posted; // goes by itself, through the response queue
        }
        return Turn::Taken;
    }

    Turn mainStep() {
        if (posted == 0) {
            return network < 4 || attach == 0 ? Turn::Blocked : Turn::Ended;
        }
        --posted;
        ++completed;
        return Turn::Taken;
    }

    std::string broken(bool atEnd) const {
        if (completed > 2 || cancels > 1) {
            return "a handler has completed twice";
        }
        return atEnd && completed != 2 ? "a handler has not completed" : "";
    }
};

/// ExitGuard.cpp: a thread of the library begins its work while the process exits. What it uses is
/// torn down behind the guard.
struct ExitModel {
    static constexpr const char* name = "Exit";
    static constexpr int threads = 3; // two of the library's, and the one that exits

    enum class At : std::uint8_t { New, Member, Entering, Inside, Sleeping, Parked };

    bool faulty = false; ///< a thread asks whether the process exits before it is a member
    std::array<At, 2> at{};
    std::array<int, 2> rounds{};
    std::array<bool, 2> member{}, woken{};
    bool exiting = false, tornDown = false, touchedRuins = false;

    std::strong_ordering operator<=>(const ExitModel&) const = default;

    Turn step(int thread) { return thread < 2 ? work(thread) : exit(); }

    Turn work(int thread) {
        At& now = at[thread];
        switch (now) {
        case At::New:
            if (faulty && exiting) {
                now = At::Parked;
            } else {
                now = At::Member;
                member[thread] = !faulty;
            }
            return Turn::Taken;
        case At::Member: // parkIfExiting()
            if (faulty) {
                member[thread] = true;
                now = At::Inside;
            } else {
                now = exiting ? At::Parked : At::Inside;
            }
            return Turn::Taken;
        case At::Inside:
            touchedRuins = touchedRuins || tornDown;
            now = ++rounds[thread] == 2 ? At::Sleeping : At::Entering;
            return Turn::Taken;
        case At::Entering:
            now = exiting ? At::Parked : At::Inside;
            return Turn::Taken;
        case At::Sleeping:
            if (!woken[thread]) {
                return Turn::Blocked;
            }
            now = At::Parked;
            return Turn::Taken;
        case At::Parked:
            break;
        }
        return Turn::Ended;
    }

    Turn exit() {
        if (tornDown) {
            return Turn::Ended;
        }
        if (!exiting) {
            exiting = true;
            woken = member;
            return Turn::Taken;
        }
        for (int thread = 0; thread < 2; ++thread) {
            if (member[thread] && at[thread] != At::Parked) {
                return Turn::Blocked;
            }
        }
        tornDown = true;
        return Turn::Taken;
    }

    std::string broken(bool atEnd) const {
        if (touchedRuins) {
            return "a thread has used what was torn down";
        }
        return atEnd && !tornDown ? "the exit waits for ever" : "";
    }
};

} // namespace KeloAPI::testing
