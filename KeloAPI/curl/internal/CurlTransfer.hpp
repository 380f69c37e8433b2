#pragma once

#include <KeloAPI/curl/internal/CurlOrigin.hpp>
#include <KeloAPI/curl/internal/CurlSockets.hpp>
#include <KeloAPI/curl/internal/EasyHandles.hpp>
#include <KeloAPI/curl/internal/GzipDecoder.hpp>
#include <KeloAPI/curl/internal/ResponseHead.hpp>
#include <KeloAPI/curl/internal/TLSFarewell.hpp>
#include <KeloAPI/http/HTTPError.hpp>
#include <KeloAPI/http/Transport.hpp>
#include <KeloAPI/http/TransportSettings.hpp>

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace KeloAPI {

class CurlOptions;
class NetworkThread;

/// One exchange from its start to its end: an easy handle is armed for each redirect hop.
/// Lives on its network thread, but for `cancel`.
class CurlTransfer final : public Exchange, public std::enable_shared_from_this<CurlTransfer> {
public:
    using Clock = std::chrono::steady_clock;

    /// What the transfers of one network thread share.
    struct Shared {
        CURLSH* cookies = nullptr;
        CurlSockets sockets;
        EasyHandles easyHandles;
    };

    CurlTransfer(const URLRequest& request, std::shared_ptr<ExchangeObserver> observer,
                 std::shared_ptr<NetworkThread> thread);

    void cancel() override;

    /// What is sent in this hop.
    const URLRequest& request() const { return _request; }
    /// Its place among those that wait, from hop to hop the same: earlier ones have lower numbers.
    std::uint64_t order() const { return _order; }
    bool isCancelled() const { return _cancelled.load(std::memory_order_relaxed); }
    /// The transfer that an easy handle is of.
    static CurlTransfer& of(CURL* easy);
    CURL* easy() const { return _easy; }
    CurlOrigin& origin() const { return *_origin; }

    /// Begins a hop, which waits until there is room for it. `origin` must outlive the hop.
    void wait(CurlOrigin& origin);
    /// Makes the easy handle ready to be sent. `shared` must outlive the hop. False where it
    /// cannot be set up in full; `outcome` then says why.
    bool arm(Shared& shared);

    /// What the thread does with the transfer; it alone changes that.
    enum class Stage : std::uint8_t { Waiting, InFlight, Pausing };
    Stage stage = Stage::Waiting;

    /// When the transfer times out if no further byte moves: none of its own, or, as long as it is
    /// not sent, none on any connection to its origin.
    Clock::time_point deadline() const;
    /// Under which time the thread has this transfer in its list of deadlines, or of pauses.
    Clock::time_point listedDeadline;

    /// Keeps the connection from being used again: no byte came through it for too long.
    void distrustConnection();

    /// True once when the transfer stopped short of sending, because the connection that it was to
    /// use has data waiting on it. libcurl closes that one; the transfer can be started again.
    bool takeRefusal() { return std::exchange(_hop->refusedConnection, false); }

    /// What a hop came to.
    struct Outcome {
        std::optional<Error> error;
        /// Before a retry that was decided on at the head.
        std::optional<std::chrono::milliseconds> pause;
        bool redirects = false;
        /// The server went away, and the request does no harm where it had been looked at before.
        bool sendAgain = false;
        /// What happened may pass.
        bool isPassing = false;
    };
    Outcome outcome(CURLcode code) const;
    /// The same where no byte has moved for too long.
    Outcome overdue() const;

    /// Once libcurl is done with the hop: what follows. With `Nothing` the transfer is complete;
    /// `Pause` ends at `listedDeadline` with another request.
    enum class Next : std::uint8_t { Nothing, Request, Pause };
    Next goOn(Outcome outcome);
    /// Ends the transfer; a cancellation that came before goes before `error`.
    void complete(std::optional<Error> error);

private:
    /// What is true of one hop only.
    struct Hop {
        explicit Hop(std::size_t maxHeadBytes)
            : head(maxHeadBytes) {}

        std::array<char, CURL_ERROR_SIZE> detail{};
        ResponseHead head;
        /// The response is not for the observer: it leads elsewhere, or another is asked for.
        bool isPassedOver = false;
        ResponseHead::ContentCoding coding = ResponseHead::ContentCoding::None;
        std::unique_ptr<GzipDecoder> gzip;
        /// Where the body ends with its connection, over TLS.
        std::unique_ptr<TLSFarewell> farewell;
        bool sent = false;
        bool refusedConnection = false;
        bool redirects = false;
        std::optional<std::chrono::milliseconds> pause;
        bool isToldOf = false;
        bool lacksDescriptors = false;
        std::size_t discarded = 0;
        std::size_t bodySent = 0;
        curl_off_t moved = 0;
        std::optional<Error> failure;
        Clock::time_point lastActivity = Clock::now();
        // Only where somebody observes the manager:
        Clock::time_point armed{};
        Clock::duration waited{};
        std::optional<Clock::time_point> firstByte;
    };

    void disarm();
    Next follow();
    /// What the hop that is over took.
    HopReport report(const Outcome& outcome) const;
    bool mayRetry() const;
    bool mayPass(const Error& error) const;
    /// Of the next retry; absent where there is none.
    std::optional<std::chrono::milliseconds> nextPause() const;
    void setUpTransfer(CurlOptions& options);
    void setUpCookies(CurlOptions& options);
    void setUpRequest(CurlOptions& options);
    void setUpHeaders(CurlOptions& options);
    void appendHeader(CurlOptions& options, const std::string& line);
    bool takeHeaderLine(std::string_view line);
    bool takeBody(std::string_view bytes);
    bool unpack(std::string_view bytes);
    bool deliver(std::string_view bytes);
    std::size_t giveBody(char* buffer, std::size_t room);
    void moved() { _hop->lastActivity = _origin->lastMoved = Clock::now(); }
    SSL* tlsSession() const;
    void listenForFarewell();
    bool acceptConnection(const std::string& ends);
    template <class Result, class Step>
    Result inCallback(Result otherwise, Step step);
    bool giveUp(HTTPErrorCode code, const char* message);

    static std::size_t onHeader(char* bytes, std::size_t size, std::size_t count,
                                void* self) noexcept;
    static std::size_t onBody(char* bytes, std::size_t size, std::size_t count,
                              void* self) noexcept;
    static std::size_t onRead(char* buffer, std::size_t size, std::size_t count,
                              void* self) noexcept;
    static curl_socket_t onOpenSocket(void* self, curlsocktype purpose,
                                      curl_sockaddr* address) noexcept;
    static int onSeek(void* self, curl_off_t offset, int origin) noexcept;
    static int onProgress(void* self, curl_off_t downTotal, curl_off_t down, curl_off_t upTotal,
                          curl_off_t up) noexcept;
    static int onConnected(void* self, char* address, char* localAddress, int port,
                           int localPort) noexcept;

    const std::uint64_t _order;
    URLRequest _request;
    std::shared_ptr<ExchangeObserver> _observer;
    const std::shared_ptr<NetworkThread> _thread;
    const TransportSettings& _settings;
    const std::chrono::milliseconds _timeoutInterval;
    std::atomic<bool> _cancelled = false;
    int _redirects = 0;
    int _resends = 0;
    int _retries = 0;
    Clock::time_point _end = Clock::time_point::max();

    CURL* _easy = nullptr;
    bool _namesHost = false;
    curl_slist* _headers = nullptr;
    CurlOrigin* _origin = nullptr;
    Shared* _shared = nullptr;
    /// The request's, as libcurl takes it.
    std::string_view _body;
    std::optional<Hop> _hop;
};

} // namespace KeloAPI
