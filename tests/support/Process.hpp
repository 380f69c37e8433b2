#pragma once

#include "TimeLimit.hpp"

#include <sys/types.h>

#include <string>
#include <vector>

namespace KeloAPI::testing {

/// A program that runs beside the test. Asked to terminate, and waited for, with the object.
class Process {
public:
    /// What `wait` says of a program that still runs.
    static constexpr int stillRunning = -1;

    /// The program's path, and its arguments.
    explicit Process(std::vector<std::string> command);
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process();

    /// The next line of its output, without the line feed; what there is where it ends before that.
    std::string readLine() const;
    void signal(int number) const;
    /// True once it has ended, though nobody has waited for it.
    bool hasEnded() const;
    /// Waits for its end: the exit code, or 1000 and the number of the signal that ended it.
    int wait(std::chrono::milliseconds limit = timeLimit);

private:
    pid_t _id = -1;
    int _output = -1;
};

} // namespace KeloAPI::testing
