#pragma once

#include <KeloAPI/api/EndpointErrorHandler.hpp>
#include <KeloAPI/api/SessionDelegate.hpp>
#include <KeloAPI/base/Error.hpp>
#include <KeloAPI/base/Object.hpp>
#include <KeloAPI/base/URL.hpp>
#include <KeloAPI/http/Manager.hpp>
#include <KeloAPI/http/Request.hpp>
#include <KeloAPI/http/URLRequest.hpp>

#include <cstddef>
#include <mutex>

namespace KeloAPI {

/// Whether a session's requests act for a signed-in user.
enum class SessionType : std::uint8_t {
    Authenticated,  ///< For the signed-in user, with the delegate's session key.
    UnAuthenticated ///< For nobody: calls that need no user, such as signing in.
};

/// Where the completion of a download is called.
enum class DownloadDelivery {
    /// On the main queue, as every completion.
    MainQueue,
    /// At once, on the thread on which the download ends, whichever that is: for background work
    /// that should not wait for the main thread. Never inside the call that sent.
    AtOnce,
};

/// One API session: where the service is, what identifies its requests, the connections to it, and
/// the calls that wait for the host to sign in again or to solve a captcha. What it tells comes
/// from its delegate, anew at each call, or is the default given below.
///
/// Requests may be sent from any thread; the queue of retries belongs to the main queue's thread.
/// In a forked child, what is sent over a session of the parent ends with
/// `HTTPErrorCode::Inherited`; a session that is made there works.
class KELO_API Session : public Object,
                         public EndpointErrorHandler,
                         public std::enable_shared_from_this<Session> {
public:
    /// Takes the end of a download: the file's URL, and the error if it is not there.
    using DownloadCompletion = std::function<void(const URL& url, std::optional<Error> error)>;
    /// Takes the bytes received since the last report, those received so far, and those expected in
    /// all (-1 while that is unknown).
    using DownloadProgress = Request::Progress;

    /// The server of the host that the session has when it first sends is pinned. Always true.
    static constexpr bool certificatePinningEnabled = true;

    explicit Session(SessionType sessionType); ///< Without a delegate; connects to nothing yet.

    /// Held weakly: null when there is none or it has gone.
    virtual std::shared_ptr<SessionDelegate> delegate() const;
    /// The host keeps it as long as it is to be asked.
    virtual void setDelegate(const std::shared_ptr<SessionDelegate>& delegate);
    /// The service's host; by default the built-in one.
    virtual std::string host();
    /// The scheme with "://"; by default "https://".
    virtual std::string schema();
    /// Session key of the signed-in user; by default absent.
    virtual std::optional<std::string> sessionId();
    /// Sent as "Accept-Language"; by default absent.
    virtual std::optional<std::string> acceptLanguage();
    /// Sent as "User-Agent"; by default absent.
    virtual std::optional<std::string> userAgent();
    /// The client's identification, sent as "X-Kelo-Client"; by default absent.
    virtual std::optional<std::string> keloClient();
    /// Whether requests are background polls; by default false.
    virtual bool polling();
    /// Connects to the service. Made at its first use, with the built-in certificates pinned for
    /// the host that the session has then; a host that the delegate names later is not pinned.
    /// Where scheme and host then name no place to send to, it refuses every request for good.
    virtual std::shared_ptr<Manager> sessionManager();
    /// Puts another manager in its place, for requests from then on. Null stops the process.
    virtual void setSessionManager(std::shared_ptr<Manager> manager);

    /// Sends a request.
    virtual std::shared_ptr<Request> request(const URLRequestConvertible& convertible);
    /// Sends a request with `data` as its body.
    virtual std::shared_ptr<Request> upload(const URLRequestConvertible& convertible, Data data);
    /// Sends a request whose response becomes the file `destinationUrl`. A download keeps a
    /// response with a status of 200 to 299, but not 204, 205, nor a 206 without a Range field in
    /// the request; any other status is the error `HTTPStatus`. The progress is told on the main
    /// queue, and the completion, which must not be empty, called where `delivery` says.
    virtual void download(const URLRequestConvertible& convertible, const URL& destinationUrl,
                          DownloadCompletion completionHandler,
                          DownloadProgress progressHandler = nullptr,
                          DownloadDelivery delivery = DownloadDelivery::MainQueue);

    /// Ends the wait of the queued retries: true sends each again, oldest first; false drops them.
    /// The queue is empty afterwards, retries that were queued meanwhile included.
    virtual void handleQueuedRetries(bool shouldRetry);

    /// Queues the retry, if any, and tells the delegate. Without a delegate the retry waits all the
    /// same.
    void endpointRequiresAuth(const std::shared_ptr<Endpoint>& endpoint,
                              EndpointRetry retry) override;
    /// Asks the delegate and queues the retry, if any, when it says true. Without a delegate
    /// the retry is dropped.
    void endpointRequiresCaptcha(const std::shared_ptr<Endpoint>& endpoint, const URL& captchaUrl,
                                 EndpointRetry retry) override;

    /// As the session was made; does not change.
    SessionType sessionType() const { return _sessionType; }

    /// How many retries wait.
    std::size_t queuedRetryCount() const { return _queuedRetries.size(); }

private:
    std::vector<EndpointRetry> _queuedRetries;
    const SessionType _sessionType;
    mutable std::mutex _delegateMutex;
    std::weak_ptr<SessionDelegate> _delegate;
    std::mutex _managerMutex;
    std::shared_ptr<Manager> _sessionManager;
};

} // namespace KeloAPI

/// The hash of a session type is its position among the cases.
template <>
struct std::hash<KeloAPI::SessionType> {
    std::size_t operator()(KeloAPI::SessionType type) const noexcept {
        return static_cast<std::size_t>(type);
    }
};
