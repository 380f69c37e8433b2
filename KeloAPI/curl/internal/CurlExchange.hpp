#pragma once

#include <KeloAPI/http/Transport.hpp>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

namespace KeloAPI {

class CurlLanes;
class CurlLoop;

/// One exchange from its start through its redirects to its end. Each leg is carried by the lane
/// of its own host; between legs the exchange belongs to nobody, so that its observer hears from
/// one thread at a time.
class CurlExchange final : public Exchange, public std::enable_shared_from_this<CurlExchange> {
public:
    CurlExchange(const URLRequest& request, std::shared_ptr<ExchangeObserver> observer,
                 std::shared_ptr<CurlLanes> lanes);
    ~CurlExchange() override;

    /// Hands the leg of `request()` to its lane.
    void begin();
    void cancel() override;

    // For the lane that carries the leg, on its thread:

    const URLRequest& request() const { return _request; }
    /// Its place among those that wait, from leg to leg the same: earlier ones have lower numbers.
    std::uint64_t order() const { return _order; }
    ExchangeObserver& observer() const { return *_observer; }
    bool isCancelled() const { return _cancelled.load(std::memory_order_relaxed); }
    /// Goes on with the next leg, which is where a redirect leads.
    void follow(int statusCode, const HeaderFields& fields);
    /// Goes on with the same leg once more, because the server went away; ends the exchange with
    /// `error` where that has happened too often.
    void sendAgain(Error error);
    /// Ends the exchange; a cancellation that came before goes before `error`.
    void complete(std::optional<Error> error);

private:
    static std::uint64_t nextOrder();

    const std::uint64_t _order = nextOrder();
    URLRequest _request;
    int _redirects = 0;
    int _resends = 0;
    std::shared_ptr<ExchangeObserver> _observer;
    std::atomic<bool> _cancelled = false;

    std::mutex _mutex; // guards what follows, and the setting of `_cancelled`
    std::shared_ptr<CurlLanes> _lanes;
    std::shared_ptr<CurlLoop> _lane;
};

} // namespace KeloAPI
