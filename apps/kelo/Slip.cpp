#include "Slip.hpp"

#include <algorithm>

namespace KeloHost {

namespace {

/// How many letters are wrong, missing, too many or in each other's place.
std::size_t slipsBetween(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> slips(a.size() + 1,
                                                std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                slips[i][j] = i + j;
                continue;
            }
            const std::size_t wrong = a[i - 1] == b[j - 1] ? 0 : 1;
            slips[i][j] =
                std::min({slips[i - 1][j] + 1, slips[i][j - 1] + 1, slips[i - 1][j - 1] + wrong});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                slips[i][j] = std::min(slips[i][j], slips[i - 2][j - 2] + 1);
            }
        }
    }
    return slips[a.size()][b.size()];
}

} // namespace

std::string didYouMean(const std::string& word, const std::vector<std::string>& known) {
    // Nothing is near to one or two letters; of longer words, every third letter may be wrong.
    std::size_t least = word.size() / 3 + 1;
    std::string nearest;
    for (const std::string& one : known) {
        // The beginning of a word is as good as one slip.
        const bool isBegun = word.size() > 2 && one.starts_with(word);
        const std::size_t slips = isBegun ? 1 : slipsBetween(word, one);
        if (slips < least) {
            least = slips;
            nearest = one;
        }
    }
    return nearest.empty() ? "" : "; did you mean " + nearest + "?";
}

Failure unusable(const CommandPath& path, const std::string& problem) {
    const std::string command = nameOf(path).substr(path.front()->name.size());
    return {ExitCode::Usage, problem,
            "Usage: " + usageOf(path) + "; " + path.front()->name + " help" + command +
                " says more"};
}

Failure unknownCommand(const CommandPath& path, const std::string& word) {
    std::vector<std::string> known;
    for (const Command& command : path.back()->commands) {
        if (!command.group.empty()) {
            known.push_back(command.name);
        }
    }
    return unusable(path, "there is no command " + word + didYouMean(word, known));
}

Failure unexpected(const CommandPath& path, const std::string& word) {
    if (!word.starts_with("-")) {
        return path.back()->commands.empty() ? unusable(path, "'" + word + "' is not expected")
                                             : unknownCommand(path, word);
    }
    const std::string option = word.substr(0, word.find('='));
    std::vector<std::string> known;
    for (const Command* command : path) {
        for (const Parameter& parameter : command->parameters) {
            if (parameter.isOption()) {
                known.push_back(parameter.name);
            }
        }
    }
    return unusable(path, "there is no option " + option + didYouMean(option, known));
}

} // namespace KeloHost
