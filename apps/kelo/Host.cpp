#include "Host.hpp"

#include "Pins.hpp"
#include "Terminal.hpp"

#include <iostream>
#include <string_view>
#include <utility>

namespace KeloHost {

using namespace KeloAPI;

namespace {

std::optional<std::string> unlessEmpty(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional(text);
}

} // namespace

std::shared_ptr<Host> Host::create(const Options& options) {
    std::shared_ptr<Host> host(new Host(options));
    // The default is standard output.
    Diagnostics::setSink([verbose = options.verbose](std::string_view line) {
        if (verbose) {
            std::cerr << std::string(line) + '\n';
        }
    });
    Api::setSessionDelegate(host);
    TransportSettings settings;
    if (!options.trace.empty()) {
        settings.observer = host->_trace = std::make_shared<Trace>(options.trace);
    }
    host->_expectedPins = usePins(options, settings);
    return host;
}

void Host::run(const std::function<void()>& work) {
    const auto guarded = [&] { hear(nullptr, work); };
    if (_options.session.empty() && !_options.user.empty()) {
        signIn(guarded);
    } else {
        guarded();
    }
    _loop.run();
    if (_failure) {
        throw Failure(*_failure);
    }
    if (_trace) {
        _trace->check();
    }
}

void Host::end() {
    if (_tasks.empty()) {
        _loop.stop();
        return;
    }
    MainQueue::main().async([this, task = std::move(_tasks.front())] {
        _taskName = task.name;
        sessionWorks();
        hear(nullptr, task.work);
    });
    _tasks.pop_front();
}

void Host::doAll(std::deque<Task> tasks) {
    _tasks = std::move(tasks);
    end();
}

void Host::fail(const Error& error) {
    if (hearsAgain(error)) {
        return;
    }
    if (_options.verbose) {
        Diagnostics::write(error.description());
    }
    end(explained(error, _options.host, _expectedPins), error.domain() == HTTPErrorDomain);
}

void Host::hear(const Error* error, const std::function<void()>& use) {
    if (error != nullptr) {
        fail(*error);
        return;
    }
    try {
        use();
    } catch (const Failure& failure) {
        end(failure);
    }
}

void Host::show(const Parameters& fields, const Lines& lines) {
    _output.write(fields, lines);
    end();
}

void Host::showDone(const std::string& deed, const std::string& id,
                    const std::optional<std::string>& deedId) {
    show({{"done", deed}, {"id", id}, {"deedId", valueOf(deedId)}},
         {deed + " " + id + (deedId ? " (" + *deedId + ")" : "")});
}

void Host::end(const Failure& failure, bool othersFailAlike) {
    if (!_taskName.empty()) {
        const bool isLast = othersFailAlike || failure.code() == ExitCode::SignIn;
        const std::string left = std::to_string(_tasks.size()) + " more not tried";
        Terminal::say("kelo: " + _taskName + ": " + failure.what() +
                      (isLast && !_tasks.empty() ? " (" + left + ")" : ""));
        if (isLast) {
            _tasks.clear();
        }
        _failure = Failure(failure.code(), "");
    } else if (!_failure) {
        _failure = failure;
    }
    end();
}

std::optional<std::string> Host::sessionKeyForSession(Session& session) {
    return session.sessionType() == SessionType::Authenticated ? unlessEmpty(_options.session)
                                                               : std::nullopt;
}

std::optional<std::string> Host::acceptLanguageForSession(Session&) {
    return unlessEmpty(_options.language);
}

} // namespace KeloHost
