#pragma once

#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/http/HeaderFields.hpp>
#include <KeloAPI/http/URLRequest.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace KeloAPI {

/// The head of a response.
struct HTTPResponse {
    /// Where the response came from, after redirects.
    URL url;
    /// The status that the server sent, of the last hop where there were redirects.
    int statusCode = 0;
    /// The same hop's header fields.
    HeaderFields headerFields;
    /// The body's length in bytes; -1 when it is not known before the end.
    std::int64_t expectedContentLength = -1;
};

struct HopReport;

/// Hears of one exchange. Calls come one at a time, on a thread of the transport's choice.
class KELO_API ExchangeObserver {
public:
    ExchangeObserver() = default;
    ExchangeObserver(const ExchangeObserver&) = delete;
    ExchangeObserver& operator=(const ExchangeObserver&) = delete;
    virtual ~ExchangeObserver() = default;

    /// The head of the final response; heads of redirects are not reported. At most once.
    virtual void didReceiveResponse(HTTPResponse response) = 0;
    /// A run of the final response's body, content encodings undone. False gives the exchange up,
    /// which then completes with an error.
    virtual bool didReceiveData(std::string_view bytes) = 0;
    /// More of the request's body was sent: `sent` bytes of `total`. Goes back to a smaller
    /// number where the body is sent again.
    virtual void didSendBody(std::int64_t sent, std::int64_t total) = 0;
    /// One request of the exchange is over, and what it took; not for transports that measure
    /// nothing. The library's own tells where the settings name an observer.
    virtual void didFinishHop(const HopReport& /*hop*/) {}
    /// The exchange is over. Exactly once, and the last call.
    virtual void didComplete(std::optional<Error> error) = 0;
};

/// What an exchange is for.
enum class TransferKind : std::uint8_t {
    /// The observer does not wait in its calls.
    Call,
    /// The observer may wait for a disk in its calls: they come on a thread that no call needs.
    Download
};

/// An exchange under way.
class KELO_API Exchange {
public:
    Exchange() = default;
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;
    virtual ~Exchange() = default;

    /// Ends the exchange with `Cancelled`, soon and asynchronously; after the end it does nothing.
    /// From any thread.
    virtual void cancel() = 0;
};

/// What carries requests. The library's own speaks HTTP; a host's tests may put another in its
/// place.
class KELO_API Transport {
public:
    Transport() = default;
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;
    virtual ~Transport() = default;

    /// Starts an exchange for a request that has no `problem()`; null where there is nothing to
    /// cancel. The transport keeps the observer until it has completed. From any thread; the
    /// observer is not called inside the call.
    virtual std::shared_ptr<Exchange> start(const URLRequest& request,
                                            std::shared_ptr<ExchangeObserver> observer,
                                            TransferKind kind = TransferKind::Call) = 0;
};

} // namespace KeloAPI
