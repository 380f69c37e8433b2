#pragma once

#include "service/http/FaultAction.hpp"
#include "service/http/RequestRecorder.hpp"
#include "service/http/SendRate.hpp"
#include "service/http/TlsSocket.hpp"

#include <httplib.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace KeloService {

/// The stream that the HTTP engine reads requests from and writes answers to. It records what
/// arrives, and lets a wire fault act at any byte of an answer.
class Connection : public httplib::Stream {
public:
    /// `beforeUnroutedAnswer` is called when the engine answers by itself, because it could not
    /// understand the request.
    Connection(int descriptor, SSL_CTX* context, std::uint64_t number,
               std::function<void(Connection&)> beforeUnroutedAnswer);

    /// The connection that serves the given request of the HTTP engine.
    static Connection& of(const httplib::Request& request);

    std::uint64_t number() const { return number_; }
    TlsSocket& socketWithTls() { return socket_; }
    const RequestRecorder& recorder() const { return recorder_; }
    bool isOpen() const { return socket_.isOpen(); }

    /// Adds one to the counter, the first time it is called.
    void countUse(std::uint64_t& counter);

    void startRequest();
    /// The request is understood and its answer comes from us.
    void startAnswer() { answer_ = AnsweredBy::route; }
    /// Whether the engine answered by itself; where the next request begins is unknown then.
    bool wasUnrouted() const { return answer_ == AnsweredBy::engine; }
    /// Lets the fault act on the answer that comes next; `onFire` is called when it does.
    void arm(WireFault fault, std::function<void()> onFire);
    /// Sends the body of the answer that comes next no faster than this. `rate` must outlive the
    /// answer.
    void limit(const SendRate& rate) { rate_ = &rate; }
    /// So many bytes of the request's body were read: lets a fault that waits for them act, and
    /// waits as long as the rate wants. False when the connection has ended.
    bool takeBody(std::size_t count, const SendRate& rate);
    /// The answer that comes next is a head, behind which this is to be sent.
    void sendAfterHead(AnswerStream body) { rest_ = std::move(body); }
    /// The engine has written its part: sends the rest, if there is one. False when it cannot be
    /// sent.
    bool sendRest();
    /// The whole answer is written.
    void finishAnswer();

    bool is_readable() const override { return isOpen(); }
    bool is_writable() const override { return isOpen(); }
    ssize_t read(char* buffer, size_t size) override;
    ssize_t write(const char* bytes, size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return socket_.descriptor(); }

private:
    enum class AnsweredBy { nobody, route, engine };

    void hold(std::string_view bytes);
    void fire();
    void waitForTurn(std::size_t count, const SendRate& rate);
    /// Writes at the limit, if there is one.
    bool send(std::string_view bytes);
    bool sendSlowly(std::string_view bytes);
    bool waitUntilDue() const;

    TlsSocket socket_;
    std::uint64_t number_;
    std::function<void(Connection&)> beforeUnroutedAnswer_;
    RequestRecorder recorder_;
    AnsweredBy answer_ = AnsweredBy::nobody;
    bool used_ = false;
    std::optional<WireFault> fault_;
    std::function<void()> onFire_;
    std::string held_;
    std::optional<AnswerStream> rest_;
    const SendRate* rate_ = nullptr;
    bool inBody_ = false;
    /// When the next bytes may leave. Kept between answers: short ones come no faster.
    std::chrono::steady_clock::time_point due_;
    /// When the body's next bytes may be read.
    std::chrono::steady_clock::time_point bodyDue_;
};

} // namespace KeloService
