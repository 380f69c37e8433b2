#pragma once

#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/base/Result.hpp>
#include <KeloAPI/http/Timeline.hpp>
#include <KeloAPI/http/Transport.hpp>
#include <KeloAPI/http/URLRequest.hpp>
#include <KeloAPI/queues/SerialQueue.hpp>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace KeloAPI {

class BodySink;
class TrafficObserver;
struct ObservedExchange;

/// The outcome of an exchange, as a serializer sees it.
struct ResponseContent {
    const URLRequest& request; ///< What was sent, before any redirect.
    /// Absent when no head came.
    const std::optional<HTTPResponse>& response;
    /// Empty for a download, and where there is an error. Otherwise it has at least 64 bytes of
    /// spare capacity.
    const std::string& body;
    /// Absent when the exchange went well, whatever its status.
    const std::optional<Error>& error;
};

/// Where a response is read.
enum class ReadingPlace : std::uint8_t {
    /// On the response queue, behind other readers that may be slow.
    ResponseQueue,
    /// Wherever the response arrives, if it is short: for readers that are quick and call no
    /// code of the host's but the diagnostic sink.
    WhereItArrives
};

/// Where a manager's responses are read, each queue one after another: by the library's own
/// readers, and by those that may be slow, which are the hosts'.
struct ResponseQueues {
    /// By the library's own readers.
    std::shared_ptr<SerialQueue> library;
    /// By those that may be slow, which are the hosts'.
    std::shared_ptr<SerialQueue> hosts;
};

/// One request under way. Made and started by a `Manager`.
///
/// Lifecycle: the exchange runs on the transport's thread. When it is over, each response handler
/// has its serializer run on the manager's response queue (of a download on the network thread,
/// which waits for the disk anyway) and then its completion on the main queue, exactly once each
/// and in the order they were attached. A handler that is attached after the end is served all the
/// same. Progress is reported on the main queue, before completions that run there. A request stays
/// alive until then even where nobody holds it.
class KELO_API Request final : public std::enable_shared_from_this<Request>,
                               private ExchangeObserver {
public:
    /// Bytes moved since the last report, bytes moved so far, and bytes expected in all (-1 while
    /// that is unknown): sent for an upload, received for others. Reports are made only when bytes
    /// moved, those that the main queue is too slow for are merged, and none is of less than the
    /// one before: an upload that starts again, for a redirect, a retry or a lost connection, goes
    /// on where it gets beyond that.
    using Progress =
        std::function<void(std::int64_t bytes, std::int64_t total, std::int64_t expected)>;
    using Completion = std::function<void()>; ///< What is left to do on the main queue.
    /// Runs behind the exchange; what it returns, if anything, runs on the main queue.
    using Serializer = std::function<Completion(const ResponseContent& content, Timeline timeline)>;

    ~Request() override;

    /// What was sent, before any redirect.
    const URLRequest& request() const { return _request; }

    /// Ends the request with `HTTPErrorCode::Cancelled`; after the end it does nothing. From any
    /// thread.
    void cancel();

    /// Replaces the progress observer. It is let go when the request has completed; one that comes
    /// later is not kept.
    void progress(Progress observer);

    /// Keeps `companion` until the request has completed.
    void keep(std::shared_ptr<const void> companion);

    /// Attaches a response handler. An empty one stops the process, here and below. Where `place`
    /// allows it, a short response to a call is serialised on the network thread.
    void response(Serializer serializer, ReadingPlace place = ReadingPlace::ResponseQueue);

    /// Attaches a response handler as two steps: a serializer that makes a value of the response,
    /// and a completion for that value.
    template <class T>
    void response(std::function<Result<T>(const ResponseContent&)> serializer,
                  std::function<void(Result<T>, Timeline)> completion);

private:
    friend class Manager;

    /// What the request's progress counts.
    enum class Counts : std::uint8_t {
        BytesReceived, ///< The bytes of the response.
        BytesSent      ///< The bytes of the request's body.
    };

    Request(KeloAPI::URLRequest request, TransferKind kind, Counts counts,
            std::unique_ptr<BodySink> sink, ResponseQueues queues,
            std::shared_ptr<TrafficObserver> observer);

    void start(Transport& transport);
    std::optional<Error> obstacle() const;
    ObservedExchange observed() const;
    void didReceiveResponse(HTTPResponse response) override;
    bool didReceiveData(std::string_view bytes) override;
    void didSendBody(std::int64_t sent, std::int64_t total) override;
    void didFinishHop(const HopReport& hop) override;
    void didComplete(std::optional<Error> error) override;
    bool isReadWhereItArrived() const;
    void readOnQueue(std::function<void(bool mayBeSlow)> task);
    bool hasSlowHandler() const;
    void end(std::optional<Error> error, bool mayBeSlow);
    std::vector<Serializer> takeHandlers(bool mayBeSlow);
    void serveLate(Serializer serializer);
    Completion serve(const Serializer& serializer) const;
    void reportProgress(std::int64_t total, std::int64_t expected);
    bool claimReport();
    void postReport();
    void deliverProgress();
    void deliver(Completion last);

    const KeloAPI::URLRequest _request;
    const TransferKind _kind;
    const Counts _counts;
    const ResponseQueues _queues;
    /// Null where nobody observes the manager.
    const std::shared_ptr<TrafficObserver> _observer;
    const std::uint64_t _id;

    // Written on the network thread, read behind the exchange.
    const std::unique_ptr<BodySink> _sink;
    std::optional<HTTPResponse> _head;
    std::int64_t _received = 0;
    std::optional<Error> _error;
    Timeline _timeline;

    struct Guarded;
    std::unique_ptr<Guarded> _guarded;
};

template <class T>
void Request::response(std::function<Result<T>(const ResponseContent&)> serializer,
                       std::function<void(Result<T>, Timeline)> completion) {
    require(serializer && completion, "a response handler must not be empty");
    response([serializer = std::move(serializer), completion = std::move(completion)](
                 const ResponseContent& content, Timeline timeline) -> Completion {
        // Shared because a completion is copied about and a value may not be.
        auto result = std::make_shared<Result<T>>(serializer(content));
        timeline.serializationCompletedTime = Date::now();
        return [result, timeline, completion] { completion(std::move(*result), timeline); };
    });
}

} // namespace KeloAPI
