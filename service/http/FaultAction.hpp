#pragma once

#include "service/http/Answer.hpp"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace KeloService {

/// A fault script that cannot be understood; the text says where and why.
class FaultScriptError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Waits, then answers as if nothing were wrong.
struct DelayFault {
    std::chrono::milliseconds time{0};
};

/// Answers this instead of asking the route.
struct AnswerFault {
    Answer answer;
};

/// Acts on the bytes of the answer, its status line and headers included.
struct WireFault {
    enum class Kind {
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
    /// The action happens after so many bytes, or at the answer's end when that comes first.
    std::uint64_t afterBytes = 0;
    /// The action happens once so many bytes of the request's body have arrived, in place of an
    /// answer.
    std::optional<std::uint64_t> afterBodyBytes;
    std::string bytes;
};

using FaultAction = std::variant<DelayFault, AnswerFault, WireFault>;

/// Reads an "action" object of a fault script. Throws FaultScriptError.
FaultAction parseFaultAction(const Json& action);

} // namespace KeloService
