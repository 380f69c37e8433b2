#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace KeloAPI::testing {

/// What a thread of a model did with its turn.
enum class Turn : std::uint8_t {
    /// It took a step: what real threads do under one lock, or as one atomic operation.
    Taken,
    /// It waits for another thread; the state is unchanged.
    Blocked,
    /// It has ended; the state is unchanged.
    Ended
};

/// What was found by exploring a model.
struct Explored {
    std::size_t states = 0;
    /// Orders in which the threads' steps can follow one another to the end; saturates.
    std::uint64_t schedules = 0;
    /// The numbers of the threads in their order, up to where an invariant broke.
    std::optional<std::vector<int>> counterexample;
    std::string broken;
};

/// Runs a model in every order of its threads' steps. `Model` is a value that can be compared with
/// `<`, small, with a bounded number of steps, and has
///
///     static constexpr int threads;
///     Turn step(int thread);
///     std::string broken(bool atEnd) const;   what does not hold, or an empty text
///
/// `broken` is asked after each step, and with `atEnd` where no thread can take another.
template <class Model>
class Explorer {
public:
    static Explored explore(const Model& initial) {
        Explorer explorer;
        explorer._found.schedules = explorer.schedulesFrom(initial);
        explorer._found.states = explorer._known.size();
        return explorer._found;
    }

private:
    std::uint64_t schedulesFrom(const Model& state) {
        if (const auto known = _known.find(state); known != _known.end()) {
            return known->second;
        }
        std::uint64_t schedules = 0;
        bool atEnd = true;
        check(state, false);
        for (int thread = 0; thread < Model::threads && !_found.counterexample; ++thread) {
            Model next = state;
            if (next.step(thread) != Turn::Taken) {
                continue;
            }
            atEnd = false;
            _path.push_back(thread);
            schedules = added(schedules, schedulesFrom(next));
            _path.pop_back();
        }
        if (atEnd) {
            check(state, true);
            schedules = 1;
        }
        return _known[state] = schedules;
    }

    void check(const Model& state, bool atEnd) {
        if (auto broken = state.broken(atEnd); !broken.empty() && !_found.counterexample) {
            _found.counterexample = _path;
            _found.broken = std::move(broken);
        }
    }

    static std::uint64_t added(std::uint64_t a, std::uint64_t b) {
        return a > UINT64_MAX - b ? UINT64_MAX : a + b;
    }

    std::map<Model, std::uint64_t> _known;
    std::vector<int> _path;
    Explored _found;
};

} // namespace KeloAPI::testing
