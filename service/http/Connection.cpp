#include "service/http/Connection.hpp"

#include <algorithm>

namespace KeloService {
namespace {

using Clock = std::chrono::steady_clock;
using Kind = FaultAction::Kind;

constexpr std::string_view interimAnswer = "HTTP/1.1 100";
constexpr std::uint64_t pieceBytes = std::uint64_t{128} << 10;
/// A paced answer leaves in so many slices per second.
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

Request Connection::request() const {
    Request request = parseHead(recorder_.head());
    request.ranges = ranges_;
    request.connection = number_;
    return request;
}

void Connection::startRequest() {
    recorder_ = {};
    ranges_.clear();
    answer_ = AnsweredBy::Nobody;
    fault_.reset();
    heldHead_.clear();
    heldRest_.clear();
    rest_.reset();
}

bool Connection::takeBody(std::size_t count, const ByteRate& rate) {
    if (fault_ && fault_->action.afterBodyBytes &&
        recorder_.bodyBytes() > *fault_->action.afterBodyBytes) {
        fire();
        return false;
    }
    // What the client has sent before it left can be read at once.
    pace(count, rate);
    return isOpen();
}

bool Connection::pace(std::size_t count, const ByteRate& rate) {
    // Pieces are small: many pass before a wait is worth it, and a changed rate is seen soon.
    constexpr auto notWorthIt = std::chrono::milliseconds(20);
    constexpr auto longest = std::chrono::milliseconds(50);
    due_ = std::max(due_, Clock::now() - notWorthIt);
    for (;;) {
        const std::int64_t perSecond = rate;
        if (perSecond == 0) {
            return true;
        }
        const std::chrono::duration<double> time(static_cast<double>(count) /
                                                 static_cast<double>(perSecond));
        const auto due = due_ + std::chrono::duration_cast<Clock::duration>(time);
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now());
        if (left <= notWorthIt) {
            due_ = due;
            return true;
        }
        if (!socket_.waitWhileConnected(std::min(left, longest))) {
            return false;
        }
    }
}

bool Connection::sendPaced(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::int64_t rate = *rate_;
        const auto slice = bytes.substr(
            0, rate == 0
                   ? bytes.size()
                   : static_cast<std::size_t>(std::max<std::int64_t>(rate / slicesPerSecond, 1)));
        if (!pace(slice.size(), *rate_) || !socket_.write(slice)) {
            return false;
        }
        bytes.remove_prefix(slice.size());
    }
    return isOpen();
}

void Connection::sendAfterHead(AnswerStream body, const ByteRate& rate) {
    rest_ = std::move(body);
    rate_ = &rate;
}

bool Connection::sendRest() {
    if (!rest_) {
        return true;
    }
    for (std::uint64_t sent = 0; sent < rest_->bytes;) {
        const std::string piece =
            rest_->read(sent, std::min<std::uint64_t>(rest_->bytes - sent, pieceBytes));
        if (piece.empty() || !(fault_ ? hold(heldRest_, piece) : sendPaced(piece))) {
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
    if (answer_ == AnsweredBy::Nobody && !answer.starts_with(interimAnswer)) {
        answer_ = AnsweredBy::Engine;
        beforeUnroutedAnswer_(*this);
    }
    const bool written = fault_ ? hold(heldHead_, answer) : socket_.write(answer);
    return written ? static_cast<ssize_t>(size) : -1;
}

bool Connection::hold(std::string& part, std::string_view bytes) {
    // The bytes before the fault wait here, so that the fault is counted before a client can see
    // them, however short the answer turns out to be.
    part += bytes;
    if (fault_->action.kind != Kind::Garbage &&
        heldHead_.size() + heldRest_.size() > fault_->action.afterBytes) {
        fire();
    }
    return isOpen();
}

void Connection::fire() {
    const std::shared_ptr<Fault> fault = std::exchange(fault_, nullptr);
    ++fault->fired;
    const FaultAction& action = fault->action;
    if (action.kind == Kind::Garbage) {
        socket_.write(action.bytes);
        socket_.closeOrderly();
        return;
    }
    const auto head = std::string_view(heldHead_).substr(0, action.afterBytes);
    socket_.write(head);
    sendPaced(std::string_view(heldRest_).substr(0, action.afterBytes - head.size()));
    switch (action.kind) {
    case Kind::Stall:
        socket_.waitWhileConnected(std::nullopt);
        socket_.closeAbruptly();
        break;
    case Kind::Reset:
        socket_.reset();
        break;
    case Kind::AbruptClose:
        socket_.closeAbruptly();
        break;
    default:
        socket_.closeOrderly();
    }
}

void Connection::get_remote_ip_and_port(std::string& ip, int& port) const {
    ip = "loopback";
    port = 0;
}

void Connection::get_local_ip_and_port(std::string& ip, int& port) const {
    get_remote_ip_and_port(ip, port);
}

} // namespace KeloService
