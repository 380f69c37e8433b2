#pragma once

#include <KeloAPI/base/Contract.hpp>
#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/base/Export.hpp>
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

/// What came of an exchange, as a serializer sees it.
struct ResponseContent {
    const URLRequest& request;
    /// Absent when no head came.
    const std::optional<HTTPResponse>& response;
    /// Empty for a download, and where there is an error. Has at least 64 bytes of spare capacity.
    const std::string& body;
    /// Absent when the exchange went well, whatever its status.
    const std::optional<Error>& error;
};

/// One request under way. Made and started by a `Manager`.
///
/// Lifecycle: the exchange runs on the transport's thread. When it is over, each response handler
/// has its serializer run on the manager's response queue (of a download on the transport's thread,
/// which waits for the disk anyway) and then its completion on the main queue, exactly once each
/// and in the order they were attached. A handler that is attached after the end is served all the
/// same. Progress is reported on the main queue, before the completions. A request stays alive
/// until then even where nobody holds it.
class KELO_API Request : public std::enable_shared_from_this<Request> {
public:
    /// Bytes moved since the last report, bytes moved so far, and bytes expected in all (-1 while
    /// that is unknown): sent for an upload, received for others. Reports are made only when bytes
    /// moved, those that the main queue is too slow for are merged, and none is of less than the
    /// one before: an upload that a redirect starts again goes on where it gets beyond that.
    using Progress =
        std::function<void(std::int64_t bytes, std::int64_t total, std::int64_t expected)>;
    using Completion = std::function<void()>;
    /// Runs behind the exchange; what it returns, if anything, runs on the main queue.
    using Serializer = std::function<Completion(const ResponseContent& content, Timeline timeline)>;

    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;
    virtual ~Request();

    /// What was sent, before any redirect.
    const URLRequest& request() const { return _request; }

    /// Ends the request with `HTTPErrorCode::Cancelled`; after the end it does nothing. From any
    /// thread.
    void cancel();

    /// Replaces the progress observer. It is let go when the request has completed; one that comes
    /// later is not kept.
    void progress(Progress observer);

    /// Attaches a response handler. An empty one stops the process, here and below.
    void response(Serializer serializer);

    /// Attaches a response handler as two steps: a serializer that makes a value of the answer, and
    /// a completion for that value.
    template <class T>
    void response(std::function<Result<T>(const ResponseContent&)> serializer,
                  std::function<void(Result<T>, Timeline)> completion);

protected:
    Request(KeloAPI::URLRequest request, std::shared_ptr<SerialQueue> responseQueue);

    /// The steps in which kinds of request differ. Called on the transport's thread; `bodySent` is
    /// told of the request's own body, the others of the answer; `requestSent` may not be called,
    /// or again for a redirect. A false from `receiveData` gives the exchange up.
    virtual void requestSent() {}
    virtual void receiveResponse(const HTTPResponse& response) = 0;
    virtual bool receiveData(std::string_view bytes) = 0;
    virtual void bodySent(std::int64_t sent, std::int64_t total) = 0;
    /// The last step, before the serializers and where they run: the error that the request ends
    /// with, if any. Where it finds no memory it is called again, with that error.
    virtual std::optional<Error> finish(std::optional<Error> error) = 0;
    /// Whether these steps may wait for a disk. They are then taken one after another on a thread
    /// that the answers of others do not need.
    virtual bool mayWaitForDisk() const { return false; }

    const std::optional<HTTPResponse>& head() const { return _head; }
    std::string& body() { return _body; }
    void reportProgress(std::int64_t total, std::int64_t expected);

private:
    friend class Manager;
    class Observer;

    void start(Transport& transport);
    std::optional<Error> obstacle() const;
    void complete(std::optional<Error> error);
    void end(std::optional<Error> error);
    std::vector<Serializer> takeHandlers();
    Completion serve(const Serializer& serializer) const;
    void postReport();
    void deliverProgress();
    bool endsUnheard();
    void endProgress();

    const KeloAPI::URLRequest _request;
    const std::shared_ptr<SerialQueue> _responseQueue;

    // Written on the transport's thread, read behind the exchange.
    std::optional<HTTPResponse> _head;
    std::string _body;
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
