#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace KeloServiceTest {

/// The kelo-service program, run with arguments. Ended, if it still runs, with the object.
class Process {
public:
    /// `program` is the kelo-service of this build unless named.
    explicit Process(const std::vector<std::string>& arguments, const std::string& program = "");
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// Standard output up to and including the next line feed; what came so far at its end, or
    /// after ten seconds.
    std::string readLine();
    void signal(int number) const;
    pid_t id() const { return id_; }

    struct Outcome {
        int code = -1;
        std::string output;
        std::string errors;
    };
    /// Waits for its end: the exit code (or 1000 plus a signal's number) and what it printed.
    Outcome wait();

private:
    pid_t id_ = -1;
    int output_ = -1;
    int errors_ = -1;
};

} // namespace KeloServiceTest
