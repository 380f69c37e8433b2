#include "Trace.hpp"

#include "Failure.hpp"
#include "Output.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <set>
#include <utility>

namespace KeloHost {

using namespace KeloAPI;

namespace {

/// Behind the last event, and in the place of the next one's beginning.
constexpr std::string_view arrayEnd = "\n]\n";

/// What is shorter is not waiting, only the time that the network thread takes for a turn.
constexpr std::chrono::milliseconds leastWait(1);

std::string addressOf(const URL& url) {
    const std::string host = url.host();
    const bool isVersion6 = host.find(':') != std::string::npos;
    return url.scheme() + "://" + (isVersion6 ? "[" + host + "]" : host) + ":" +
           std::to_string(url.port().value_or(0)) + url.path();
}

std::string nameOf(Method method, const std::optional<URL>& url) {
    return std::string(name(method)) + " " + (url ? url->path() : "");
}

/// Its message may hold a URL.
ParameterValue numberOf(const std::optional<Error>& error) {
    return error ? ParameterValue(error->domain() + " " + std::to_string(error->code()))
                 : ParameterValue(nullptr);
}

} // namespace

Trace::Trace(std::string path)
    : _path(std::move(path))
    , _file(::open(_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)) {
    _problem = _file < 0 ? errno : 0;
    write({{"name", "process_name"}, {"ph", "M"}, {"args", Parameters{{"name", "kelo"}}}});
    check();
}

Trace::~Trace() {
    ::close(_file);
}

void Trace::check() const {
    const std::lock_guard lock(_mutex);
    if (_problem != 0) {
        throw Failure(ExitCode::Failed,
                      "cannot write the trace " + _path + ": " + std::strerror(_problem));
    }
}

std::int64_t Trace::freeRow() const {
    std::set<std::int64_t> taken;
    for (const auto& [id, row] : _rows) {
        taken.insert(row);
    }
    std::int64_t row = 1;
    while (taken.contains(row)) {
        ++row;
    }
    return row;
}

void Trace::didStart(const ObservedExchange& exchange) {
    const std::lock_guard lock(_mutex);
    const std::int64_t row = freeRow();
    _rows[exchange.id] = row;
    write({{"name", nameOf(exchange.method, exchange.url)},
           {"cat", exchange.kind == TransferKind::Download ? "download" : "call"},
           {"ph", "B"},
           {"ts", timeOf(exchange.start)},
           {"tid", row}});
}

void Trace::didFinishHop(const ObservedExchange& exchange, const HopReport& hop) {
    const std::lock_guard lock(_mutex);
    const std::int64_t row = _rows[exchange.id];
    write({{"name", nameOf(hop.method, hop.url)},
           {"cat", "hop"},
           {"ph", "X"},
           {"ts", timeOf(hop.begin)},
           {"dur", hop.total.count()},
           {"tid", row},
           {"args", Parameters{{"url", addressOf(hop.url)},
                               {"protocol", hop.protocol},
                               {"reusedConnection", hop.reusedConnection},
                               {"bytesSent", hop.bytesSent},
                               {"bytesReceived", hop.bytesReceived},
                               {"status", hop.statusCode},
                               {"error", numberOf(hop.error)}}}});
    writeSteps(hop, row);
}

void Trace::writeSteps(const HopReport& hop, std::int64_t row) {
    const auto writeStep = [&](const char* step, Date begin, Microseconds time) {
        write({{"name", step},
               {"cat", "step"},
               {"ph", "X"},
               {"ts", timeOf(begin)},
               {"dur", time.count()},
               {"tid", row}});
    };
    if (hop.waited >= leastWait) {
        writeStep("wait for a connection", hop.begin - hop.waited, hop.waited);
    }
    const std::pair<const char*, std::optional<Microseconds>> steps[] = {
        {"name lookup", hop.nameFound},
        {"connect", hop.connected},
        {"TLS", hop.secured},
        {"send and wait", hop.firstByte},
        {"receive", hop.firstByte ? std::optional(hop.total) : std::nullopt}};
    Microseconds before{0};
    for (const auto& [step, over] : steps) {
        if (over && *over > before) {
            writeStep(step, hop.begin + before, *over - before);
            before = *over;
        }
    }
}

void Trace::didEnd(const ObservedExchange& exchange, const std::optional<Error>& error, Date end) {
    const std::lock_guard lock(_mutex);
    write({{"name", nameOf(exchange.method, exchange.url)},
           {"ph", "E"},
           {"ts", timeOf(end)},
           {"tid", _rows[exchange.id]},
           {"args", Parameters{{"error", numberOf(error)}}}});
    _rows.erase(exchange.id);
}

/// The event takes the place of the array's end, and brings a new one.
void Trace::write(Parameters event) {
    if (_problem != 0) {
        return;
    }
    event.insert_or_assign("pid", ::getpid());
    std::string text = (_size == 0 ? "[\n" : ",\n") + Output::jsonLine(event);
    text.pop_back(); // its line's end
    const std::size_t size = text.size();
    text += arrayEnd;
    const ssize_t written = ::pwrite(_file, text.data(), text.size(), _size);
    if (written == static_cast<ssize_t>(text.size())) {
        _size += static_cast<off_t>(size);
    } else {
        _problem = written < 0 ? errno : ENOSPC;
    }
}

} // namespace KeloHost
