#include "CommandLine.hpp"
#include "Failure.hpp"
#include "Host.hpp"
#include "Terminal.hpp"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

namespace {

using namespace KeloHost;

int run(int argc, char** argv) {
    const Invocation invocation = parseCommandLine(argc, argv);
    if (invocation.information) {
        std::printf("%s", invocation.information->c_str());
    } else {
        const auto host = Host::create(invocation.options);
        host->run([&] { invocation.work(host); });
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        throw Failure(ExitCode::Failed, "the output cannot be written");
    }
    return EXIT_SUCCESS;
}

int complain(const Failure& failure) {
    static_cast<void>(std::fflush(stdout));
    const std::string line = failure.what();
    if (!line.empty()) {
        Terminal::complain(line);
    }
    if (!failure.hint().empty()) {
        Terminal::say(failure.hint());
    }
    return static_cast<int>(failure.code());
}

} // namespace

int main(int argc, char** argv) {
    Terminal::endOnSignals();
    try {
        return run(argc, argv);
    } catch (const Failure& failure) {
        return complain(failure);
    } catch (const std::exception& error) {
        return complain(Failure(ExitCode::Failed, error.what()));
    }
}
