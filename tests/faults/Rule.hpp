#pragma once

#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/http/HTTPError.hpp>

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace KeloAPI::testing {

/// How a call ends, as a host sees it: "ok", or an error's code and its name.
using Outcome = std::string;

inline const Outcome ok = "ok";
/// The response breaks the service's contract, which ends the process: the cell is left out.
inline const Outcome ruledOut = "ruled out";
// The three ways in which a response can be JSON and yet none of the service's.
inline const Outcome noObject = "service -1, no object";
inline const Outcome noData = "service -1, no data";
inline const Outcome noRecord = "service -1, bad record";

Outcome outcomeOf(const std::optional<Error>& error);
Outcome outcomeOf(HTTPErrorCode code);
/// An error that the service reports.
Outcome outcomeOf(std::int64_t serviceCode);

enum class CallKind : std::uint8_t { Read, Act, Undo, Upload, Text, Loops, File };
/// The kinds as the columns of the table are headed.
inline constexpr std::array<const char*, 7> callKinds = {
    "reading (GET)", "acting (POST)", "undoing (DELETE)", "uploading (PUT)",
    "as text (GET)", "loops (POST)",  "files (GET)"};

/// How each call has to end under a fault.
class Rule {
public:
    /// All alike.
    Rule(Outcome outcome) { _ofKind.fill(std::move(outcome)); }
    /// All alike.
    Rule(HTTPErrorCode code)
        : Rule(outcomeOf(code)) {}

    /// But for these.
    Rule but(const std::vector<CallKind>& kinds, const Outcome& outcome) const;
    Rule but(const std::vector<std::string>& calls, const Outcome& outcome) const;

    Outcome of(const std::string& call, CallKind kind) const;

private:
    std::array<Outcome, callKinds.size()> _ofKind;
    std::map<std::string, Outcome> _ofCall;
};

/// Where the body is at fault: texts are handed on and files kept, whatever they hold.
Rule ofParsedCalls(const Outcome& outcome);
inline Rule ofParsedCalls(HTTPErrorCode code) {
    return ofParsedCalls(outcomeOf(code));
}

} // namespace KeloAPI::testing
