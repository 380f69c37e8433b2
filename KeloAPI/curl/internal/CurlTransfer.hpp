#pragma once

#include <KeloAPI/curl/internal/CurlExchange.hpp>
#include <KeloAPI/curl/internal/CurlOrigin.hpp>
#include <KeloAPI/curl/internal/CurlSockets.hpp>
#include <KeloAPI/curl/internal/GzipDecoder.hpp>
#include <KeloAPI/curl/internal/ResponseHead.hpp>
#include <KeloAPI/curl/internal/TrustStore.hpp>
#include <KeloAPI/http/HTTPError.hpp>

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace KeloAPI {

class CurlOptions;

/// One leg of an exchange: a request to one place and its answer, as one easy handle from
/// the moment it stops waiting. Lives on its lane's thread.
class CurlTransfer {
public:
    using Clock = std::chrono::steady_clock;

    /// `origin` and `sockets` must outlive the transfer's time in flight.
    CurlTransfer(std::shared_ptr<CurlExchange> exchange, CurlOrigin& origin, CurlSockets& sockets);
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;
    ~CurlTransfer();

    /// Makes the easy handle. `trust` and `cookies` must outlive the transfer. False where it
    /// cannot be set up in full; `outcome` then says why.
    bool open(const TrustStore& trust, CURLSH* cookies);
    /// Null while the transfer waits.
    CURL* easy() const { return _easy; }
    /// The transfer that an easy handle is of.
    static CurlTransfer& of(CURL* easy);
    const std::shared_ptr<CurlExchange>& exchange() const { return _exchange; }
    CurlOrigin& origin() const { return _origin; }
    /// Its place among the transfers that wait.
    std::uint64_t order() const { return _exchange->order(); }

    /// When the transfer times out if no further byte moves: none of its own, or, as long as it is
    /// not sent, none on any connection to its origin.
    Clock::time_point deadline() const {
        return (_sent ? _lastActivity : std::max(_lastActivity, _origin.lastMoved)) +
               _timeoutInterval;
    }
    /// Under which time the lane has this transfer in its list of deadlines.
    Clock::time_point listedDeadline;

    /// Tells the observer that the request has been sent, if so and if nothing came back yet. False
    /// where the transfer must end over it; `outcome` then says why.
    bool tellWhenSent();
    bool isSent() const { return _sent; }

    /// Keeps the connection from being used again: no byte came through it for too long.
    void distrustConnection();

    /// True once when the transfer stopped short of sending, because the connection that it was to
    /// use has data waiting on it. libcurl closes that one; the transfer can be started again.
    bool takeRefusal() { return std::exchange(_refusedConnection, false); }

    /// What the leg came to, told to the exchange by `conclude` once libcurl is done with it.
    struct Outcome {
        std::optional<Error> error;
        bool redirects = false;
        /// The server went away, and the request does no harm where it had been looked at before.
        bool sendAgain = false;
        int statusCode = 0;
        HeaderFields fields;
    };
    Outcome outcome(CURLcode code) const;
    static void conclude(CurlExchange& exchange, Outcome outcome);

private:
    void setUp(const TrustStore& trust, CURLSH* cookies);
    void setUpTransfer(CurlOptions& options);
    void setUpCookies(CurlOptions& options, CURLSH* cookies);
    void setUpRequest(CurlOptions& options);
    void setUpHeaders(CurlOptions& options);
    void appendHeader(CurlOptions& options, const std::string& line);
    bool takeHeaderLine(std::string_view line);
    bool takeBody(std::string_view bytes);
    bool unpack(std::string_view bytes);
    bool deliver(std::string_view bytes);
    std::size_t giveBody(char* buffer, std::size_t room);
    void moved() { _lastActivity = _origin.lastMoved = Clock::now(); }
    bool acceptConnection(const std::string& ends);
    template <class Step>
    bool withMemory(Step step);
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

    std::shared_ptr<CurlExchange> _exchange;
    CurlOrigin& _origin;
    CurlSockets& _sockets;
    std::chrono::milliseconds _timeoutInterval;
    CURL* _easy = nullptr;
    curl_slist* _headers = nullptr;
    std::array<char, CURL_ERROR_SIZE> _detail{};
    ResponseHead _head;
    bool _sent = false;
    bool _refusedConnection = false;
    bool _redirects = false;
    ResponseHead::ContentCoding _coding = ResponseHead::ContentCoding::None;
    std::unique_ptr<GzipDecoder> _gzip;
    bool _lacksDescriptors = false;
    std::size_t _discarded = 0;
    std::string_view _body;
    std::size_t _bodySent = 0;
    curl_off_t _moved = 0;
    std::optional<Error> _failure;
    Clock::time_point _lastActivity = Clock::now();
};

} // namespace KeloAPI
