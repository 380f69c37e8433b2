#pragma once

#include <functional>
#include <stdexcept>
#include <string>

namespace KeloTour {

/// A step whose outcome is not what it should be; the text says what was found.
class StepFailed : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Fails the step unless `holds`.
void check(bool holds, const std::string& what);

/// Tells what a step sent and what came of it.
void sent(const std::string& what);
void came(const std::string& what);
void note(const std::string& what);

/// Tells each request that the library sends and parses, from now on; unless a step silences it.
void traceRequests();
/// Silences the trace as long as it lives.
class Silence {
public:
    Silence();
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence();
};

/// Numbers the steps, runs them and counts.
class Tour {
public:
    void step(const std::string& title, const std::function<void()>& run);

    /// Prints the last line; true when no step failed.
    bool finish() const;

private:
    int _steps = 0;
    int _failed = 0;
};

} // namespace KeloTour
