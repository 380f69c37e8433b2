#pragma once

#include "service/http/FaultScript.hpp"
#include "service/http/Request.hpp"
#include "service/http/Tls.hpp"

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace KeloService {

/// Bytes per second that an answer is sent or a segment is read with at most; 0 for as fast as
/// possible. A change holds for what is under way, too.
using ByteRate = std::atomic<std::int64_t>;
inline constexpr std::int64_t highestByteRate = 1000000000;

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

    TlsSocket& tls() { return socket_; }
    const RequestRecorder& recorder() const { return recorder_; }
    /// What has arrived of the request, without its body.
    Request request() const;
    bool isOpen() const { return socket_.isOpen(); }
    /// The ranges that the engine has read from the request's head.
    void setRanges(const httplib::Ranges& ranges) { ranges_ = ranges; }
    /// Notes that the connection carried a request of the service. True the first time.
    bool use() { return !std::exchange(used_, true); }

    void startRequest();
    /// The request is understood and its answer comes from us.
    void startAnswer() { answer_ = AnsweredBy::Route; }
    /// Whether the engine answered by itself; where the next request begins is unknown then.
    bool wasUnrouted() const { return answer_ == AnsweredBy::Engine; }
    /// Lets the fault act on the bytes of the answer that comes next.
    void arm(std::shared_ptr<Fault> fault) { fault_ = std::move(fault); }
    /// So many bytes of the request's body were read: lets a fault that waits for them act, and
    /// waits as long as the rate wants. False when the connection has ended.
    bool takeBody(std::size_t count, const ByteRate& rate);
    /// The answer that comes next is a head, behind which this is to be sent, no faster than the
    /// rate. The rate must outlive the answer.
    void sendAfterHead(AnswerStream body, const ByteRate& rate);
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
    enum class AnsweredBy { Nobody, Route, Engine };

    bool hold(std::string& part, std::string_view bytes);
    void fire();
    bool sendPaced(std::string_view bytes);
    /// Waits as long as so many bytes take at the rate. False when the client has left.
    bool pace(std::size_t count, const ByteRate& rate);

    TlsSocket socket_;
    std::uint64_t number_;
    std::function<void(Connection&)> beforeUnroutedAnswer_;
    RequestRecorder recorder_;
    httplib::Ranges ranges_;
    AnsweredBy answer_ = AnsweredBy::Nobody;
    bool used_ = false;
    std::shared_ptr<Fault> fault_;
    /// What of the answer waits for the fault: what the engine wrote, and the rest behind it.
    std::string heldHead_;
    std::string heldRest_;
    std::optional<AnswerStream> rest_;
    const ByteRate* rate_ = nullptr;
    /// When the bytes paced so far are due. Kept between answers: short ones come no faster.
    std::chrono::steady_clock::time_point due_;
};

} // namespace KeloService
