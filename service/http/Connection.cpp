#include "service/http/Connection.hpp"

#include <algorithm>
#include <utility>

namespace KeloService {
namespace {

constexpr std::string_view interimAnswer = "HTTP/1.1 100";
constexpr std::string_view endOfHead = "\r\n\r\n";
constexpr std::uint64_t pieceBytes = std::uint64_t{128} << 10;
/// A limited answer leaves in so many slices per second.
constexpr std::int64_t slicesPerSecond = 20;

} // namespace

Connection::Connection(int descriptor, SSL_CTX* context, std::uint64_t number,
                       std::function<void(Connection&)> beforeUnroutedAnswer)
    : socket_(descriptor, context)
    , number_(number)
    , beforeUnroutedAnswer_(std::move(beforeUnroutedAnswer)) {
    if (socket_.ssl() != nullptr) {
        SSL_set_app_data(socket_.ssl(), this);
    }
}

Connection& Connection::of(const httplib::Request& request) {
    return *static_cast<Connection*>(SSL_get_app_data(request.ssl));
}

void Connection::countUse(std::uint64_t& counter) {
    counter += used_ ? 0 : 1;
    used_ = true;
}

void Connection::startRequest() {
    recorder_.startRequest();
    answer_ = AnsweredBy::nobody;
    fault_.reset();
    held_.clear();
    rest_.reset();
    rate_ = nullptr;
    inBody_ = false;
}

void Connection::arm(WireFault fault, std::function<void()> onFire) {
    fault_ = std::move(fault);
    onFire_ = std::move(onFire);
}

bool Connection::takeBody(std::size_t count, const SendRate& rate) {
    if (fault_ && fault_->afterBodyBytes && recorder_.bodyBytes() > *fault_->afterBodyBytes) {
        fire();
        return false;
    }
    waitForTurn(count, rate);
    return isOpen();
}

void Connection::waitForTurn(std::size_t count, const SendRate& rate) {
    // Pieces are small: many pass before a wait is worth it, and a changed rate is seen soon.
    constexpr auto notWorthIt = std::chrono::milliseconds(20);
    constexpr auto longest = std::chrono::milliseconds(50);
    using Clock = std::chrono::steady_clock;
    bodyDue_ = std::max(bodyDue_, Clock::now() - notWorthIt);
    for (;;) {
        const std::int64_t perSecond = rate.bytesPerSecond();
        if (perSecond == 0) {
            return;
        }
        const std::chrono::duration<double> time(static_cast<double>(count) /
                                                 static_cast<double>(perSecond));
        const auto due = bodyDue_ + std::chrono::duration_cast<Clock::duration>(time);
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now());
        if (left <= notWorthIt) {
            bodyDue_ = due;
            return;
        }
        if (!socket_.waitWhileConnected(std::min(left, longest))) {
            return; // what the client has sent before it left can be read at once
        }
    }
}

bool Connection::sendRest() {
    if (!rest_) {
        return true;
    }
    for (std::uint64_t sent = 0; sent < rest_->bytes;) {
        const std::string piece = rest_->read(
            sent,
            static_cast<std::size_t>(std::min<std::uint64_t>(rest_->bytes - sent, pieceBytes)));
        if (piece.empty() || write(piece.data(), piece.size()) < 0) {
            return false;
        }
        sent += piece.size();
    }
    return true;
}

void Connection::finishAnswer() {
    if (fault_ && isOpen()) {
        fire();
    }
}

ssize_t Connection::read(char* buffer, size_t size) {
    const size_t wanted = recorder_.mayRead(size);
    if (wanted == 0) {
        return 0;
    }
    const ssize_t count = socket_.read(buffer, wanted);
    if (count > 0) {
        recorder_.record({buffer, static_cast<size_t>(count)});
    }
    return count;
}

ssize_t Connection::write(const char* bytes, size_t size) {
    const std::string_view answer(bytes, size);
    if (answer_ == AnsweredBy::nobody && !answer.starts_with(interimAnswer)) {
        answer_ = AnsweredBy::engine;
        beforeUnroutedAnswer_(*this);
    }
    if (!isOpen()) {
        return -1;
    }
    if (fault_) {
        hold(answer);
        return isOpen() ? static_cast<ssize_t>(size) : -1;
    }
    return send(answer) ? static_cast<ssize_t>(size) : -1;
}

void Connection::hold(std::string_view bytes) {
    // The bytes before the fault wait here, so that the fault is counted before a client can see
    // them, however short the answer turns out to be.
    held_ += bytes;
    if (fault_->kind != WireFault::Kind::Garbage && held_.size() > fault_->afterBytes) {
        fire();
    }
}

void Connection::fire() {
    const WireFault fault = *std::exchange(fault_, std::nullopt);
    onFire_();
    if (fault.kind == WireFault::Kind::Garbage) {
        socket_.write(fault.bytes);
        socket_.closeOrderly();
        return;
    }
    send(std::string_view(held_).substr(0, fault.afterBytes));
    switch (fault.kind) {
    case WireFault::Kind::Stall:
        socket_.waitWhileConnected(std::nullopt);
        socket_.closeAbruptly();
        break;
    case WireFault::Kind::Reset:
        socket_.reset();
        break;
    case WireFault::Kind::AbruptClose:
        socket_.closeAbruptly();
        break;
    default:
        socket_.closeOrderly();
    }
}

bool Connection::send(std::string_view bytes) {
    if (rate_ == nullptr) {
        return socket_.write(bytes);
    }
    // The head leaves at once, so that a client knows what it waits for.
    const std::size_t headEnd = inBody_ ? 0 : bytes.find(endOfHead);
    if (headEnd == std::string_view::npos) {
        return socket_.write(bytes);
    }
    const std::size_t headBytes = inBody_ ? 0 : headEnd + endOfHead.size();
    inBody_ = true;
    return socket_.write(bytes.substr(0, headBytes)) && sendSlowly(bytes.substr(headBytes));
}

bool Connection::sendSlowly(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::int64_t rate = rate_->bytesPerSecond();
        if (rate == 0) {
            return socket_.write(bytes);
        }
        if (!waitUntilDue()) {
            return false;
        }
        const auto slice = bytes.substr(
            0, static_cast<std::size_t>(std::max<std::int64_t>(rate / slicesPerSecond, 1)));
        if (!socket_.write(slice)) {
            return false;
        }
        const std::chrono::duration<double> time(static_cast<double>(slice.size()) /
                                                 static_cast<double>(rate));
        due_ = std::chrono::steady_clock::now() +
               std::chrono::duration_cast<std::chrono::steady_clock::duration>(time);
        bytes.remove_prefix(slice.size());
    }
    return isOpen();
}

bool Connection::waitUntilDue() const {
    const auto left = due_ - std::chrono::steady_clock::now();
    const auto time = std::chrono::ceil<std::chrono::milliseconds>(left);
    return time.count() <= 0 || socket_.waitWhileConnected(time);
}

void Connection::get_remote_ip_and_port(std::string& ip, int& port) const {
    ip = "loopback";
    port = 0;
}

void Connection::get_local_ip_and_port(std::string& ip, int& port) const {
    ip = "loopback";
    port = 0;
}

} // namespace KeloService
