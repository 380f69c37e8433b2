#pragma once

#include "Calls.hpp"
#include "Fault.hpp"

#include <string>
#include <vector>

namespace KeloAPI::testing {

/// What came of the calls as a table of Markdown: a line for each row of faults with the number of
/// its cells, a column for each kind of call. `outcomes` are those of each fault, of each call.
std::string tableOf(const std::vector<Fault>& faults, const std::vector<Call>& calls,
                    const std::vector<std::vector<Outcome>>& outcomes);

/// The same with a line for each fault: for each row of faults a sentence, which is the rule, and a
/// table of its variants, what had to come of them and what was seen, over all calls.
std::string casesOf(const std::vector<Fault>& faults, const std::vector<Call>& calls,
                    const std::vector<std::vector<Outcome>>& outcomes);

} // namespace KeloAPI::testing
