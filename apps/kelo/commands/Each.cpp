#include "commands/Commands.hpp"
#include "Terminal.hpp"

namespace KeloHost {

std::vector<std::string> linesOfInput(std::string (*check)(const std::string& text)) {
    constexpr const char* blanks = " \t\r";
    std::vector<std::string> texts;
    std::size_t number = 0;
    for (const std::string& line : Terminal::inputLines()) {
        ++number;
        const auto begin = line.find_first_not_of(blanks);
        if (begin == std::string::npos) {
            continue;
        }
        texts.push_back(line.substr(begin, line.find_last_not_of(blanks) + 1 - begin));
        if (const std::string problem = check(texts.back()); !problem.empty()) {
            throw Failure(ExitCode::Usage,
                          "line " + std::to_string(number) + " of standard input: " + problem);
        }
    }
    return texts;
}

std::function<Work> forEach(const std::string& name, const std::function<Work>& work) {
    return [=](const HostPointer& host, const Arguments& arguments) {
        if (arguments.text(name) != "-") {
            work(host, arguments);
            return;
        }
        std::deque<Host::Task> tasks;
        for (const std::string& id : linesOfInput(checkIdentifier)) {
            tasks.push_back({id, [=] { work(host, arguments.with(name, id)); }});
        }
        host->doAll(std::move(tasks));
    };
}

} // namespace KeloHost
