#include "Table.hpp"

#include <algorithm>

namespace KeloAPI::testing {

namespace {

void addOnce(std::vector<Outcome>& met, const Outcome& outcome) {
    if (std::find(met.begin(), met.end(), outcome) == met.end()) {
        met.push_back(outcome);
    }
}

std::string listOf(const std::vector<Outcome>& met) {
    std::string list;
    for (const Outcome& outcome : met) {
        list += (list.empty() ? "" : "; ") + outcome;
    }
    return list;
}

/// One line: every outcome of a kind of call, in the order in which they were met.
struct Line {
    explicit Line(std::string name)
        : row(std::move(name)) {}

    std::string row;
    int cells = 0;
    std::array<std::vector<Outcome>, callKinds.size()> outcomes;

    void add(CallKind kind, const Outcome& outcome) {
        cells += outcome == ruledOut ? 0 : 1;
        addOnce(outcomes.at(static_cast<std::size_t>(kind)), outcome);
    }

    std::string text() const {
        std::string text = "| " + row + " | " + std::to_string(cells) + " |";
        for (const auto& met : outcomes) {
            text += ' ' + listOf(met) + " |";
        }
        return text + '\n';
    }
};

std::string heading() {
    std::string names = "| Fault | Cells |";
    std::string rule = "| --- | --- |";
    for (const char* kind : callKinds) {
        names += ' ' + std::string(kind) + " |";
        rule += " --- |";
    }
    return names + '\n' + rule + '\n';
}

} // namespace

std::string tableOf(const std::vector<Fault>& faults, const std::vector<Call>& calls,
                    const std::vector<std::vector<Outcome>>& outcomes) {
    std::vector<Line> lines;
    for (std::size_t i = 0; i < faults.size(); ++i) {
        auto line = std::find_if(lines.begin(), lines.end(),
                                 [&](const Line& each) { return each.row == faults[i].row; });
        if (line == lines.end()) {
            line = lines.insert(line, Line(faults[i].row));
        }
        for (std::size_t j = 0; j < calls.size(); ++j) {
            line->add(calls[j].kind, outcomes[i][j]);
        }
    }
    int cells = 0;
    std::string table = heading();
    for (const Line& line : lines) {
        cells += line.cells;
        table += line.text();
    }
    return std::to_string(cells) + " cells\n\n" + table;
}

std::string casesOf(const std::vector<Fault>& faults, const std::vector<Call>& calls,
                    const std::vector<std::vector<Outcome>>& outcomes) {
    std::string text = std::to_string(faults.size()) + " cases of " + std::to_string(calls.size()) +
                       " calls each\n";
    const std::string* rule = nullptr;
    for (std::size_t i = 0; i < faults.size(); ++i) {
        if (rule == nullptr || *rule != faults[i].row) {
            rule = &faults[i].row;
            text += '\n' + *rule + "\n\n| Case | Expected | Seen |\n| --- | --- | --- |\n";
        }
        std::vector<Outcome> expected;
        std::vector<Outcome> seen;
        for (std::size_t j = 0; j < calls.size(); ++j) {
            addOnce(expected, faults[i].rule.of(calls[j].name, calls[j].kind));
            addOnce(seen, outcomes[i][j]);
        }
        text += "| " + faults[i].variant + " | " + listOf(expected) + " | " + listOf(seen) + " |\n";
    }
    return text;
}

} // namespace KeloAPI::testing
