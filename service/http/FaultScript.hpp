#pragma once

#include "service/http/Answer.hpp"
#include "service/http/Request.hpp"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace KeloService {

/// A fault script that cannot be understood; the text says where and why.
class FaultScriptError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What a fault does.
struct FaultAction {
    enum class Kind {
        /// Waits, then answers as if nothing were wrong.
        Delay,
        /// Answers `answer` instead of asking the route.
        Answer,
        // The others act on the bytes of the answer, its status line and headers included.
        /// Sends no more, and keeps the connection until the client leaves.
        Stall,
        /// Ends the connection with a TCP reset.
        Reset,
        /// Ends the connection with TLS's goodbye.
        Close,
        /// Ends the connection with TCP's goodbye alone.
        AbruptClose,
        /// Sends `bytes` instead of the answer, then closes.
        Garbage,
    };
    Kind kind = Kind::Stall;
    std::chrono::milliseconds delay{0};
    Answer answer;
    /// The action happens after so many bytes, or at the answer's end when that comes first.
    std::uint64_t afterBytes = 0;
    /// The action happens once so many bytes of the request's body have arrived, in place of an
    /// answer.
    std::optional<std::uint64_t> afterBodyBytes;
    std::string bytes;
};

/// Reads an "action" object of a fault script. Throws FaultScriptError.
FaultAction parseFaultAction(const Json& action);

struct Fault {
    int id = 0;
    Json source;
    std::string method;
    std::string path;
    /// How many requests it applies to; 0 means all.
    int times = 1;
    int skip = 0;
    FaultAction action;
    int skipped = 0;
    int taken = 0;
    /// How often the action really happened.
    std::atomic<int> fired = 0;

    bool matches(const Request& request) const;
};

/// The faults that wait for requests, in order. Safe to use from any thread.
class FaultScript {
public:
    /// Adds one fault, or each of a list; all of them or, when one is wrong, none. Returns the ids.
    /// Throws FaultScriptError.
    std::vector<int> add(const Json& faultOrList);
    /// Adds the faults of a JSON file. Throws FaultScriptError naming the file.
    void addFile(const std::string& file);
    /// The first fault that applies to this request, if any does. Control requests have none.
    std::shared_ptr<Fault> take(const Request& request);
    Json list() const;
    void clear();

private:
    mutable std::mutex mutex_;
    std::vector<std::shared_ptr<Fault>> faults_;
    int lastId_ = 0;
};

} // namespace KeloService
